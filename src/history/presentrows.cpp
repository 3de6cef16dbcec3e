#include "history/presentrows.h"

#include <fmt/format.h>

#include <algorithm>

#include "db/companyschema.h"
#include "db/conversions.h"
#include "platform/engine/statementtext.h"
#include "platform/error.h"

namespace kolmera {
namespace {

std::string literal(const Value& value) {
    const auto* whole = std::get_if<std::int64_t>(&value);
    return whole != nullptr ? std::to_string(*whole) : textLiteral(textOf(value));
}

/// "(1, 7, 7, 7)": the last one again until there are as many as in one of two sizes, which are two statements to a
/// server.
std::string list(std::span<const Value> values) {
    constexpr std::size_t kFew = 16;
    const std::size_t size = values.size() <= kFew ? kFew : kRowsAtOnce;
    std::string text = "(";
    for (std::size_t i = 0; i < size; ++i) {
        if (i > 0) text += ", ";
        text += literal(values[std::min(i, values.size() - 1)]);
    }
    return text += ")";
}

/// Rows of a run mostly have IDs one behind the other, and a range is read quicker than a list is parsed.
std::string condition(const TableDef& table, int column, std::span<const Value> values) {
    const std::string& name = table.fields[static_cast<std::size_t>(column)].name;
    if (table.fields[static_cast<std::size_t>(column)].counter) {
        const auto id = [](const Value& value) { return std::get<std::int64_t>(value); };
        const std::int64_t least = id(*std::ranges::min_element(values, {}, id));
        const std::int64_t most = id(*std::ranges::max_element(values, {}, id));
        if (most - least < 2 * static_cast<std::int64_t>(values.size()))
            return fmt::format("[{0}] >= {1} AND [{0}] <= {2}", name, least, most);
    }
    return fmt::format("[{}] IN {}", name, list(values));
}

std::vector<Value> valuesOf(std::span<const std::int64_t> ids) { return {ids.begin(), ids.end()}; }

bool hasIds(const TableDef& table) { return std::ranges::count(table.fields, true, &FieldDef::counter) > 0; }

std::string columnList(const TableDef& table, std::span<const int> columns) {
    std::string text = hasIds(table) ? table.fields[static_cast<std::size_t>(idColumn(table))].name : std::string();
    for (const int column : columns) {
        text += fmt::format("{}[{}]", text.empty() ? "" : ", ", table.fields[static_cast<std::size_t>(column)].name);
    }
    return text;
}

}  // namespace

int idColumn(const TableDef& table) {
    const auto found = std::ranges::find(table.fields, true, &FieldDef::counter);
    if (found == table.fields.end()) {
        throw PlatformError(errors::kUnknownField, "the table has no IDs").about(table.name);
    }
    return static_cast<int>(found - table.fields.begin());
}

std::string rowsStatement(const TableDef& table, std::span<const std::int64_t> ids) {
    return fmt::format("SELECT * FROM [{}] WHERE {}", table.name, condition(table, idColumn(table), valuesOf(ids)));
}

PresentRows readRows(Database& database, const TableDef& table, std::span<const int> columns,
                     std::span<const std::int64_t> ids) {
    return readRowsWith(database, table, columns, idColumn(table), valuesOf(ids));
}

PresentRows readRowsWith(Database& database, const TableDef& table, std::span<const int> columns, int column,
                         std::span<const Value> values) {
    PresentRows rows;
    const bool withIds = hasIds(table);
    for (; !values.empty(); values = values.subspan(std::min<std::size_t>(values.size(), kRowsAtOnce))) {
        const auto records = database.open(
            fmt::format("SELECT {} FROM [{}] WHERE {}", columnList(table, columns), table.name,
                        condition(table, column, values.first(std::min<std::size_t>(values.size(), kRowsAtOnce)))),
            RecordsetType::Snapshot, options::kReadOnly);
        for (; !records->eof(); records->moveNext()) {
            const std::int64_t counted = -static_cast<std::int64_t>(rows.size()) - 1;
            std::vector<Value>& row = rows[withIds ? std::get<std::int64_t>(records->value(0)) : counted];
            row.clear();
            for (std::size_t i = 0; i < columns.size(); ++i) {
                row.push_back(records->value(static_cast<int>(i) + (withIds ? 1 : 0)));
            }
        }
    }
    return rows;
}

LastIds readLastIds(Database& database) {
    LastIds ids;
    for (const TableDef& table : companySchema()) {
        const auto records = database.open(fmt::format("SELECT MAX(ID) FROM [{}]", table.name), RecordsetType::Snapshot,
                                           options::kReadOnly);
        ids[table.name] = static_cast<std::int64_t>(TillDbl(records->value(0), Locale()));
    }
    return ids;
}

}  // namespace kolmera
