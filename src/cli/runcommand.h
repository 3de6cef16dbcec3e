#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

struct RunArguments {
    std::string job;  ///< the job's name; the first job of that name is run
    std::string dataFolder;
    bool emptyTables = false;
    std::string summaryFile;  ///< empty: no JSON summary
};

/// `run JOB --data DIR [--empty] [--summary FILE]`: what Utför does, confirmation given. Prints a summary, lists what
/// was passed over, and writes the summary as JSON.
int runCommand(const RunArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
