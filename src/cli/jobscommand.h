#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

/// `jobs --data DIR [--json]`: the job list as a table or as a JSON array.
int jobsCommand(const std::string& dataFolder, bool json, const Surroundings& surroundings);

}  // namespace kolmera::cli
