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

/// How far an import has come.
struct AccessProgress {
    std::string_view table = {};  ///< whose rows come; empty before the first
    std::int64_t rows = 0;        ///< of all tables that have come
    std::int64_t of = 0;          ///< as the file says; 0 while that is not known
};

struct AccessResult {
    bool cancelled = false;             ///< nothing has been made
    std::vector<CopiedTable> tables;    ///< of the file, and how many rows came over
    std::vector<AccessRemark> remarks;  ///< queries, forms and captions last
};

/// Makes a company of an Access-format file, which is only read: all its tables, and empty ones where it lacks a table
/// that companies have. The company is there when it is whole, and not before; one that is to be replaced stays until
/// then. `goOn` is told how far the import has come, again and again; false ends the import. Throws
/// PlatformError: kDamaged, kNotADatabase, kNewerAccessFile, kFileNotFound for the file, kLocked when somebody has the
/// company open that is to be replaced.
AccessResult importAccessFile(const AccessImport& import,
                              const std::function<bool(const AccessProgress& progress)>& goOn);

}  // namespace kolmera
