#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

/// `new DIR`: a data folder with the suite's files, the three trade-format jobs and an empty company FTG1.mdb. The
/// folder must be empty or not there yet.
int newCommand(const std::string& folder, const std::string& companyName, const Surroundings& surroundings);

/// `demo DIR`: the same with a demo company, masks, jobs, couplings and price files.
int demoCommand(const std::string& folder, const Surroundings& surroundings);

}  // namespace kolmera::cli
