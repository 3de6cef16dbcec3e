#pragma once

#include <string>
#include <vector>

#include "cli/commandline.h"

namespace kolmera::cli {

struct LimitsArguments {
    std::string job, dataFolder;
    std::vector<std::string> set;  ///< "NAME=NUMBER"; "NAME=" removes a limit
    bool clear = false;
    bool json = false;
};

/// `limits JOB --data DIR [--set NAME=NUMBER ...] [--clear]`: prints the limits of a job after changing them.
int limitsCommand(const LimitsArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
