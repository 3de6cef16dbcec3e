#pragma once

#include <string>

#include "cli/jobsession.h"

namespace kolmera::cli {

struct RunArguments : JobArguments {
    std::string summaryFile;  ///< empty: no JSON summary
    std::string rejectsFile;  ///< where the rejected records go; empty: nowhere
};

/// `run JOB --data DIR [--empty] [--strict|--force] [--locale sv|en] [--summary FILE] [--rejects FILE]`: what Utför
/// does, confirmation given. Prints a summary, lists what was passed over, and writes the summary as JSON.
int runCommand(const RunArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
