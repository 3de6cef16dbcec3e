#pragma once

#include <filesystem>

namespace kolmera {

/// Makes a data folder with the suite's files: the settings and the company register, the job list with the three
/// trade-format jobs, and empty definition files. What is already there stays as it is. Throws PlatformError.
void createDataFolder(const std::filesystem::path& folder);

}  // namespace kolmera
