#pragma once

#include <QString>
#include <functional>

#include "history/recordreader.h"
#include "ui/filedialogs.h"
#include "ui/program.h"

namespace kolmera {

/// Asks for a file, writes the rejected records of a run or of a preview to it, and tells what was written. An empty
/// answer of `fileToWrite` is Cancel.
void saveRejects(Program& program, QWidget* parent, const RecordReader& run,
                 const std::function<QString(const FileQuestion& question)>& fileToWrite);
/// The same with the file dialog.
void saveRejects(Program& program, QWidget* parent, const RecordReader& run);

}  // namespace kolmera
