#pragma once

#include <filesystem>

namespace kolmera {

/// Tries whether the locks of files work in a folder, as they do not on every network drive: without them two sessions
/// would write into each other. True also where it cannot be tried because the folder cannot be written.
bool fileLocksWork(const std::filesystem::path& folder);

}  // namespace kolmera
