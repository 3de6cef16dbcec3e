#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

struct RunArguments {
    std::string job;  ///< the job's name; the first job of that name is run
    std::string dataFolder;
    bool emptyTables = false;
    std::string summaryFile;  ///< empty: no JSON summary
    std::string locale;       ///< "sv" or "en": how numbers are written; empty: as the user writes them
    bool strict = false;      ///< stop before anything is written when the price file is not what it seems
    bool force = false;       ///< read it all the same, also when that writes garbage
};

/// `run JOB --data DIR [--empty] [--strict|--force] [--locale sv|en] [--summary FILE]`: what Utför does, confirmation
/// given. Prints a summary, lists what was passed over, and writes the summary as JSON.
int runCommand(const RunArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
