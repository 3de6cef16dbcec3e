#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "history/recordreader.h"
#include "ui/program.h"

namespace kolmera {

/// Shows a record modally in the window of changes, with products named from their company; what cannot be read is
/// told. `told` is what else the user is to know, before all. True when the user wants the job of a preview to be run.
bool showRecord(Program& program, QWidget* parent, const RecordReader& record, std::span<const std::string> told = {});
bool showRecord(Program& program, QWidget* parent, const std::filesystem::path& file);

}  // namespace kolmera
