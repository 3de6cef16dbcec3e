#pragma once

#include <filesystem>

#include "wholeruns/formats.h"

namespace kolmera::bench {

/// Writes the job of a format with its mask or its supplier couplings into a data folder.
void writeJob(const std::filesystem::path& folder, const FormatName& format);

}  // namespace kolmera::bench
