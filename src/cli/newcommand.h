#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

struct NewArguments {
    std::string folder;
    std::string companyName;  ///< empty: a name in the user's language
};

/// `new DIR`: a data folder with the suite's files, the three trade-format jobs and an empty company FTG1.mdb. The
/// folder must be empty or not there yet.
int newCommand(const NewArguments& arguments, const Surroundings& surroundings);

/// `demo DIR`: the same with the demo company, masks, jobs, couplings and price files.
int demoCommand(const NewArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
