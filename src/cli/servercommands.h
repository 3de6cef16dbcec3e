#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

struct SchemaArguments {
    std::string dialect;      ///< "sqlserver", "postgresql" or "mariadb"
    std::string companyName;  ///< empty: a name in the user's language
};

/// `server-schema --dialect NAME [--company NAME]`: the script that makes an empty company on a database server.
int serverSchemaCommand(const SchemaArguments& arguments, const Surroundings& surroundings);

struct ServerArguments {
    std::string name;  ///< as jobs name the company; "SQL;" is put before it when it is missing
    std::string connectString;
    std::string connectFile;  ///< in place of a connect string, the file that holds it; "-" is the standard input
    std::string description;
    std::string dataFolder;
};

/// `add-server NAME --connect STRING|--connect-file FILE [--description TEXT] --data DIR`: registers a server company
/// in DVSQLSvr.ini, or changes the one of that name.
int addServerCommand(const ServerArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
