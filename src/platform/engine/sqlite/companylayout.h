#pragma once

#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "platform/engine/pages/salvage.h"
#include "platform/engine/schema.h"

namespace kolmera {

class SqliteConnection;

/// Makes the tables of a new file (without indexes, which are made when the rows are in) and keeps a copy of all
/// statements in a table of the engine's own. To be called on an empty file, so that the copy lies at its beginning.
/// SQLite itself keeps them in the first page, which is written more often than any other; when that is lost, the copy
/// tells what the file was.
void makeTables(SqliteConnection& connection, std::span<const TableDef> tables, bool password);
void makeIndexes(SqliteConnection& connection, const TableDef& table);

/// Whether what SQLite keeps of the tables and indexes is what the copy says, but for columns and tables that were
/// added later. A name with a damaged letter is a name to SQLite.
bool agreesWithCopy(SqliteConnection& connection);

/// Whether a file that SQLite does not take for one of ours was one: its beginning holds that copy, or a page of it
/// holds rows of a table with several columns that `known` describes.
bool wasCompanyFile(const std::filesystem::path& file, const std::function<std::vector<TableDef>()>& known);

/// What a damaged file was made of.
struct SalvagedLayout {
    std::vector<SalvageTable> tables;
    bool password = false;
    std::uint32_t passwordRoot = 0;
    std::vector<std::string> leftOut;  ///< tables, views and triggers of which no more than the name can be trusted
};

/// The layout of a damaged file. The copy counts most, then the `known` tables, then SQLite's own record of what was
/// added later. Nothing of it is carried out as a statement.
SalvagedLayout salvageLayout(const PageFile& file, std::span<const TableDef> known);

/// Tables of SQLite's and the engine's own whose rows are no company's.
std::vector<SalvageTable> engineTables();

}  // namespace kolmera
