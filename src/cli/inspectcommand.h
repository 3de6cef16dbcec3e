#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

struct InspectArguments {
    std::string file;
    std::string member;  ///< of a .zip; empty: detected
    std::string sheet;   ///< of a workbook; empty: detected
    bool json = false;
};

/// `inspect FILE [--member NAME] [--sheet NAME] [--json]`: what a price file seems to be, how sure that is, and its
/// first rows.
int inspectCommand(const InspectArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
