#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

struct JobsArguments {
    std::string dataFolder;
    bool json = false;
};

/// `jobs --data DIR [--json]`: the job list as a table or as a JSON array.
int jobsCommand(const JobsArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
