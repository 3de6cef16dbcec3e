#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/salvage.h"

namespace kolmera {

class SqliteConnection;

/// One table or index of a file, as the statement that makes it.
struct LayoutEntry {
    std::string type;  ///< "table" or "index"
    std::string name;
    std::string statement;
    std::uint32_t root = 0;  ///< page where its tree begins, 0 when unknown
};

/// Keeps a copy of the statements in a table of the engine's own. To be called on an empty file, so that the copy lies
/// at its beginning. SQLite itself keeps them in the first page, which is written more often than any other; when that
/// is lost, the copy tells what the file was.
void writeLayoutCopy(SqliteConnection& connection, const std::vector<LayoutEntry>& layout);

/// Whether the beginning of a file holds that copy: a company file, then, even when SQLite does not take it for a
/// database any more.
bool carriesLayout(const std::filesystem::path& file);

/// The layout of a damaged file, from SQLite's own table as far as it can be read, and from the copy.
std::vector<LayoutEntry> salvageLayout(const PageFile& file);

}  // namespace kolmera
