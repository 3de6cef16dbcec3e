#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/schema.h"

namespace kolmera {

class SqliteConnection;

/// The CREATE TABLE statement of a table.
std::string createTableStatement(const TableDef& table);
/// The CREATE INDEX statement of an index; empty for the primary key on the counter, which the table itself is.
std::string createIndexStatement(const TableDef& table, const IndexDef& index);

/// The name that an index has in the file, where index names are unique over all tables: "Produkt.Nummer".
std::string indexNameInFile(const TableDef& table, const IndexDef& index);
/// "Produkt.Nummer" without the table's name.
std::string indexName(std::string_view table, std::string_view nameInFile);

/// Names of the tables, in the order of their making, without the engine's own.
std::vector<std::string> readTableNames(SqliteConnection& connection);
/// Reads the definition of a table, its exact name given.
TableDef readTable(SqliteConnection& connection, std::string_view name);

}  // namespace kolmera
