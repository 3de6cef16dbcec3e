#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

struct CopyArguments {
    std::string from;  ///< a company as jobs name it: a file of the data folder, or SQL;NAME
    std::string to;    ///< the same; a file that is missing is made
    std::string dataFolder;
};

/// `copy-company FROM TO --data DIR`: copies all rows of a company into another database, compares the two and tells
/// the rows of each table. A copy that was interrupted is finished by a second one.
int copyCompanyCommand(const CopyArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
