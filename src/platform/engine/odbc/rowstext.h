#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/odbc/dialect.h"
#include "platform/engine/value.h"

namespace kolmera {

/// What the server's catalogue calls a column's type, and its collation; empty for a column that has none.
struct ServerColumnType {
    std::string type, collation;
};

/// Many rows as a table of one statement, whose text does not depend on how many they are. Its columns are r1, r2 ...
/// of these types, and their order is rord, from 1. The table is called r.
std::string rowsTable(const Dialect& dialect, std::span<const std::string> types);
/// The parameters of that: of every row a value for each column.
std::vector<Value> rowsParameters(const Dialect& dialect, std::span<const std::vector<Value>> rows);

/// The type for `rowsTable` of a column that is compared with a table's, or written to it.
std::string keyType(const Dialect& dialect, FieldType type);
std::string writtenType(const Dialect& dialect, FieldType type, const ServerColumnType& stored);

/// Rows that are found by some columns of a table: for each key, in their order, its place, the place of the first key
/// that is equal to it, and the wanted columns, at least once: Null where there is no row.
struct KeyedSelect {
    std::string_view table;
    std::span<const std::string> wanted, columns;    ///< quoted
    std::span<const std::string> types, collations;  ///< of `columns`
    std::string_view order;
    std::size_t limit;
};
std::string keyedSelectText(const Dialect& dialect, const KeyedSelect& select);
/// Adds them in their order, and gives their IDs back.
std::string insertArraysText(const Dialect& dialect, std::string_view table, std::span<const std::string> columns,
                             std::span<const std::string> types, std::string_view id);
/// A column that many rows are given new values of.
struct WrittenColumn {
    std::string name;  ///< quoted
    std::string type;  ///< `writtenType`
    std::string collation;
    bool decimal = false;
};
constexpr std::size_t kMostMarked = 62;
/// r1 is the ID of a row, the others are new values of these columns. `marked`: r2 tells which of them, one bit each
/// from the lowest, the row is given; at most `kMostMarked` columns.
std::string updateRowsText(const Dialect& dialect, std::string_view table, std::string_view id,
                           std::span<const WrittenColumn> columns, bool marked);

}  // namespace kolmera
