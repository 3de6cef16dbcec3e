#pragma once

#include <string>
#include <vector>

#include "cli/commandline.h"

namespace kolmera::cli {

struct SourceArguments {
    std::string job, dataFolder;
    std::string file;     ///< to look at; empty: the job's price file
    bool detect = false;  ///< sets the format anew, and columns where none are set
    std::vector<std::string>
        set;  ///< "MEMBER=VALUE": members as they are printed, with / between; "MEMBER=" removes one
    bool clear = false;
    bool json = false;  ///< also where there is no source: null
};

/// `source JOB --data DIR [--detect [--file FILE]] [--set MEMBER=VALUE ...] [--clear]`: prints how the price file of a
/// job is turned into what its mask reads, as JSON, after changing it.
int sourceCommand(const SourceArguments& arguments, const Surroundings& surroundings);

struct ConvertArguments {
    std::string job, dataFolder;
    std::string file;    ///< to convert; empty: the job's price file
    std::string output;  ///< "-": standard output
};

/// `convert JOB --data DIR --output FILE [--file FILE]`: writes what the job's mask would read, and tells what was not
/// taken as it stands.
int convertCommand(const ConvertArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
