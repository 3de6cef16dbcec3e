#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

struct HistoryArguments {
    std::string dataFolder;
    std::string company;  ///< only runs of this company: its file, SQL;NAME or name; empty: all
    bool json = false;
};

/// `history --data DIR [--company NAME] [--json]`: lists the runs of a data folder with their counts, the newest first.
int historyCommand(const HistoryArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
