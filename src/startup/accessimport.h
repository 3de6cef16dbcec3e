#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/database.h"
#include "startup/accessplan.h"
#include "startup/companycopy.h"

namespace kolmera {

/// An import of an Access-format file.
struct AccessImport {
    std::filesystem::path reader;  ///< the program that reads such files (platform/jet/jetreader.h)
    std::filesystem::path file;
    std::filesystem::path company;  ///< the company file to be made
    std::string companyName = {};   ///< for a file without settings
    bool replace = false;           ///< takes the place of a company that is there
    OpenOptions options = {};       ///< how the company is opened
};

struct AccessResult {
    bool cancelled = false;             ///< nothing has been made
    std::vector<CopiedTable> tables;    ///< of the file, and how many rows came over
    std::vector<AccessRemark> remarks;  ///< in the order of the file
};

/// Makes a company of an Access-format file, which is only read: all its tables, and empty ones where it lacks a table
/// that companies have. The company is there when it is whole, and not before; one that is to be replaced stays until
/// then. `goOn` is told the table and how many of its rows have come, again and again; false ends the import. Throws
/// PlatformError: kDamaged, kNotADatabase, kNewerAccessFile, kFileNotFound for the file, kLocked when somebody has the
/// company open that is to be replaced.
AccessResult importAccessFile(const AccessImport& import,
                              const std::function<bool(std::string_view table, std::int64_t rows)>& goOn);

}  // namespace kolmera
