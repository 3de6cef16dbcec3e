#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

struct ImportAccessArguments {
    std::string file;
    std::string dataFolder;
    std::string company;  ///< FTG*.mdb; empty for the file's own name
    bool replace = false;
};

/// `import-access FILE --data DIR`: makes a company of an Access-format file and tells the rows of each table. What is
/// not in the company as it was in the file is told, too; the exit code is kPassedOver then.
int importAccessCommand(const ImportAccessArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
