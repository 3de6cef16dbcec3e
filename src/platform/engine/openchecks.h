#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kolmera {

class SqliteConnection;

/// Throws kNotADatabase for a file that is no company file, kDamaged for one whose first pages are damaged.
void checkHeader(SqliteConnection& connection, const std::filesystem::path& file);

/// Throws kDamaged when the first or the last row of a table cannot be read. Says nothing of the rows between.
void checkTables(SqliteConnection& connection, const std::vector<std::string>& tables);

}  // namespace kolmera
