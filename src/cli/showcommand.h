#pragma once

#include <string>

#include "cli/changeoutput.h"
#include "cli/commandline.h"

namespace kolmera::cli {

struct ShowArguments {
    std::string run;  ///< see `chosenRun`
    std::string dataFolder;
    ChangeOutput output;
};

/// `show RUN --data DIR [--json] [--save FILE]`: what a run changed.
int showCommand(const ShowArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
