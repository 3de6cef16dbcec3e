#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "history/recordreader.h"
#include "platform/engine/database.h"

namespace kolmera {

/// Rows as they are now: the values of some columns by ID.
using PresentRows = std::map<std::int64_t, std::vector<Value>>;

/// The column that holds the rows' IDs.
int idColumn(const TableDef& table);

/// The rows with these IDs, kRowsAtOnce at most; others between them may be among them.
inline constexpr int kRowsAtOnce = 256;
std::string rowsStatement(const TableDef& table, std::span<const std::int64_t> ids);

/// The rows with these IDs, as far as they are there: the values of `columns` (ordinals), in that order.
PresentRows readRows(Database& database, const TableDef& table, std::span<const int> columns,
                     std::span<const std::int64_t> ids);

/// The rows that have one of these values in a column, with the values of `columns`. Those of a table without IDs are
/// counted from -1 down.
PresentRows readRowsWith(Database& database, const TableDef& table, std::span<const int> columns, int column,
                         std::span<const Value> values);

/// The highest IDs of a company's tables.
LastIds readLastIds(Database& database);

}  // namespace kolmera
