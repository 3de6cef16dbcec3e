#pragma once

#include <filesystem>
#include <vector>

#include "definitions/maskfile.h"
#include "wholeruns/formats.h"

namespace kolmera::bench {

// The masks of the mask jobs.
Mask maskOf(const FormatName& format);
std::vector<Relation> relationsOf(Format format);

/// Writes the job of a format with its mask or its supplier couplings into a data folder.
void writeJob(const std::filesystem::path& folder, const FormatName& format);

}  // namespace kolmera::bench
