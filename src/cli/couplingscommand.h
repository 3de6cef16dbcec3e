#pragma once

#include <string>
#include <vector>

#include "cli/commandline.h"

namespace kolmera::cli {

struct CouplingsArguments {
    std::string job;
    std::string dataFolder;
    std::vector<std::string> set;     ///< CODE=SUPPLIER
    bool main = false;                ///< those that are set are main suppliers
    std::vector<std::string> remove;  ///< codes
    bool json = false;
};

/// `couplings JOB --data DIR [--set CODE=SUPPLIER ... [--main]] [--remove CODE ...] [--json]`: which suppliers of the
/// company the supplier codes of a trade format stand for.
int couplingsCommand(const CouplingsArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
