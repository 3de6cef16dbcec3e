#pragma once

#include <string>

#include "cli/changeoutput.h"
#include "cli/commandline.h"

namespace kolmera::cli {

struct CompareArguments {
    std::string run;   ///< see `chosenRun`
    std::string with;  ///< the same; empty: the run before of the same job
    std::string dataFolder;
    ChangeOutput output;
};

/// `compare RUN [--with RUN] --data DIR [--json] [--save FILE]`: which articles are new in the price file of a run, and
/// which are not in it any more.
int compareCommand(const CompareArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
