#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

struct RepairArguments {
    std::string company;  ///< file
    std::string dataFolder;
};

/// Repairs a damaged company file of a data folder. A company that is not damaged is left alone.
int repairCommand(const RepairArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
