#pragma once

#include <filesystem>
#include <string_view>

#include "platform/paths.h"

namespace kolmera {

/// The price file of a job as a path of this system: an absolute path through the drive map; a relative one is tried
/// against the data folder, the program folder and the program folder's "Filer", and the first place that has it is
/// taken (the data folder when none has). An empty path stays empty.
std::filesystem::path findPriceFile(std::string_view path, const DriveMap& drives,
                                    const std::filesystem::path& dataFolder,
                                    const std::filesystem::path& programFolder);

}  // namespace kolmera
