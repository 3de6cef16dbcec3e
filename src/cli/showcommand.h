#pragma once

#include <string>

#include "cli/changeoutput.h"
#include "cli/commandline.h"

namespace kolmera::cli {

struct ShowArguments {
    std::string run;  ///< see `chosenRun`
    std::string dataFolder;
    ChangeOutput output;
    std::string rejectsFile;  ///< where the rejected records go, instead of showing anything; empty: nowhere
};

/// `show RUN --data DIR [--json] [--save FILE] [--rejects FILE]`: what a run changed, or the records that it rejected.
int showCommand(const ShowArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
