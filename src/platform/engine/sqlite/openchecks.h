#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/engine/schema.h"

namespace kolmera {

class SqliteConnection;

/// Throws kNotADatabase for a file that is no company file, kDamaged for one whose first pages are damaged.
void checkHeader(SqliteConnection& connection, const std::filesystem::path& file,
                 const std::function<std::vector<TableDef>()>& knownTables);

/// Whether the tables are what they were made as, and SQLite's own check ("quick_check": all pages; "integrity_check":
/// the indexes, too) finds nothing.
bool findsNoDamage(SqliteConnection& connection, const std::string& check);

/// Throws kDamaged when a page of a file of ordinary size is not what it should be; of a greater file, whose check
/// would be noticed, and of one that is read over the network, when the first or the last row of a table cannot be
/// read. What lies between is noticed when it is read.
void checkPages(SqliteConnection& connection, const std::filesystem::path& file, bool onNetwork,
                const std::vector<std::string>& tables);

}  // namespace kolmera
