#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

/// Repairs a damaged company file of a data folder. A company that is not damaged is left alone.
int repairCommand(const std::string& company, const std::string& dataFolder, const Surroundings& surroundings);

}  // namespace kolmera::cli
