#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/engine/schema.h"

namespace kolmera {

/// The tables of a company database, with columns and indexes in their order. The descriptions that lie in data/schema
/// are built into the program.
std::vector<TableDef> companySchema();

struct NewCompanyRow {
    std::string table;
    std::vector<std::pair<std::string, Value>> values;
};

/// The rows that a new company begins with: its settings, with the company's name and prices of two decimals.
std::vector<NewCompanyRow> newCompanyRows(std::string_view companyName);

/// The same, with what a Swedish company's prices begin with: VAT rates, home currency, rounding of larger prices,
/// factors and units of new products, and the heading of EAN numbers.
std::vector<NewCompanyRow> filledCompanyRows(std::string_view companyName);

/// Reads descriptions of tables (columns table, ordinal, column, type) and of indexes (table, index, fields, unique).
/// Types are those of `FieldType` by name, TEXT with its size, and COUNTER; NULL behind a type means no default. Throws
/// PlatformError(kInternal) for an unknown type, a gap in the ordinals and an index of an unknown table or column.
std::vector<TableDef> parseSchema(std::string_view tables, std::string_view indexes);

}  // namespace kolmera
