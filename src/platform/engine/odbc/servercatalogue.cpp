#include "platform/engine/odbc/servercatalogue.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>

#include "platform/engine/fieldvalue.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

// Columns of the catalogue's answers, from 0.
constexpr std::size_t kTableName = 2;
namespace column {
constexpr std::size_t kName = 3;
constexpr std::size_t kType = 4;
constexpr std::size_t kTypeName = 5;
constexpr std::size_t kSize = 6;
constexpr std::size_t kDefault = 12;
}  // namespace column
namespace statistics {
constexpr std::size_t kNonUnique = 3;
constexpr std::size_t kIndexName = 5;
constexpr std::size_t kColumnName = 8;
constexpr std::size_t kOrder = 9;
}  // namespace statistics

using Row = std::vector<Value>;

std::string_view text(const Row& row, std::size_t place) {
    return place < row.size() ? textOf(row[place]) : std::string_view();
}

std::int64_t number(const Row& row, std::size_t place) {
    const std::string_view digits = text(row, place);
    std::int64_t parsed = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), parsed);
    return parsed;
}

/// The kinds of types between which a value is the same value.
enum class Kind { Whole, Number, Date, Text };
Kind kindOf(FieldType type) {
    switch (type) {
        case FieldType::Boolean:
        case FieldType::Byte:
        case FieldType::Integer:
        case FieldType::Long:
            return Kind::Whole;
        case FieldType::Currency:
        case FieldType::Single:
        case FieldType::Double:
            return Kind::Number;
        case FieldType::Date:
            return Kind::Date;
        default:
            return Kind::Text;
    }
}

const TableDef* knownTable(const ServerSession& session, std::string_view name) {
    const auto& known = session.knownTables();
    const auto found =
        std::ranges::find_if(known, [&](const TableDef& table) { return equalNoCase(table.name, name); });
    return found == known.end() ? nullptr : &*found;
}

/// A field of the server with what the program knows of it.
FieldDef merged(FieldDef server, const FieldDef& known) {
    if (kindOf(server.type) != kindOf(known.type)) return server;
    const bool bounded = server.type == FieldType::Text && server.size > 0;
    server.size = bounded ? std::min(server.size, known.size > 0 ? known.size : server.size) : known.size;
    server.type = bounded ? FieldType::Text : known.type;
    server.defaultNull = known.defaultNull;
    return server;
}

/// What a column's default is: nothing, the engine's own 0 or false, or something else.
enum class Default { None, Zero, Other };
Default defaultKind(std::string_view expression) {
    if (expression.empty() || startsWithNoCase(expression, "NULL")) return Default::None;
    if (startsWithNoCase(expression, "b'0'") || equalNoCase(expression, "false")) return Default::Zero;
    const bool zero = expression.find('0') != std::string_view::npos &&
                      expression.find_first_not_of("()'0.") == std::string_view::npos;
    return zero ? Default::Zero : Default::Other;
}

struct Column {
    FieldDef field;
    Default given;
};

std::vector<Column> readColumns(ServerSession& session, const std::string& table) {
    std::vector<Column> columns;
    for (const Row& row : session.columns(table).rows) {
        if (text(row, kTableName) != table) continue;  // the name is a pattern: "_" stands for any letter
        FieldDef field = fieldOfOdbcType(text(row, column::kName), static_cast<int>(number(row, column::kType)),
                                         text(row, column::kTypeName), number(row, column::kSize));
        field.defaultNull = true;
        columns.push_back({std::move(field), defaultKind(text(row, column::kDefault))});
    }
    return columns;
}

/// The known columns in their order, then the others in the server's.
void arrange(std::vector<Column>& columns, const TableDef& known) {
    for (Column& column : columns) {
        const int ordinal = known.ordinal(column.field.name);
        if (ordinal >= 0) column.field = merged(column.field, known.fields[static_cast<std::size_t>(ordinal)]);
    }
    std::ranges::stable_sort(columns, {}, [&](const Column& column) {
        const int ordinal = known.ordinal(column.field.name);
        return ordinal >= 0 ? ordinal : static_cast<int>(known.fields.size());
    });
}

/// The key is the column ID.
void markKey(FieldDef& field) {
    if (!equalNoCase(field.name, "ID") || kindOf(field.type) != Kind::Whole) return;
    field.type = FieldType::Long;
    field.counter = true;
}

/// "Produkt.Nummer" of the table "Produkt" is "Nummer"; servers whose index names are the database's, not the table's,
/// hold them so.
std::string indexName(std::string_view name, std::string_view table) {
    const bool prefixed = name.size() > table.size() && startsWithNoCase(name, table) && name[table.size()] == '.';
    return std::string(prefixed ? name.substr(table.size() + 1) : name);
}

bool isKey(const IndexDef& index) { return index.unique && equalNoCase(index.fields, "+ID"); }

std::vector<IndexDef> readIndexes(ServerSession& session, const std::string& table) {
    std::vector<IndexDef> indexes;
    for (const Row& row : session.indexes(table).rows) {
        if (text(row, statistics::kIndexName).empty() || text(row, kTableName) != table) continue;
        const std::string name = indexName(text(row, statistics::kIndexName), table);
        const auto same = [&](const IndexDef& index) { return index.name == name; };
        auto index = std::ranges::find_if(indexes, same);
        if (index == indexes.end()) {
            indexes.push_back({.name = name, .fields = {}, .unique = text(row, statistics::kNonUnique) == "0"});
            index = indexes.end() - 1;
        }
        if (!index->fields.empty()) index->fields += ';';
        index->fields += text(row, statistics::kOrder) == "D" ? '-' : '+';
        index->fields += text(row, statistics::kColumnName);
    }
    for (IndexDef& index : indexes) {
        if (isKey(index)) index.name = "PrimaryKey";
    }
    return indexes;
}

}  // namespace

std::vector<std::string> readServerTables(ServerSession& session) {
    std::vector<std::string> names;
    for (const Row& row : session.tables().rows) names.emplace_back(text(row, kTableName));
    return names;
}

ServerTableInfo readServerTable(ServerSession& session, const std::string& name) {
    std::vector<Column> columns = readColumns(session, name);
    const TableDef* const known = knownTable(session, name);
    if (known != nullptr) arrange(columns, *known);
    ServerTableInfo info;
    info.definition.name = name;
    for (Column& column : columns) {
        markKey(column.field);
        const int ordinal = static_cast<int>(info.definition.fields.size());
        const bool wantsZero = !isNull(defaultOf(column.field));
        if (wantsZero && column.given == Default::None) info.missingDefaults.add(ordinal);
        const bool same = wantsZero ? column.given != Default::Other : column.given == Default::None;
        if (!same && !column.field.counter) info.otherDefaults.add(ordinal);
        info.definition.fields.push_back(std::move(column.field));
    }
    info.definition.indexes = readIndexes(session, name);
    if (known == nullptr) return info;
    for (const IndexDef& index : known->indexes) {
        if (info.definition.index(index.name) == nullptr) info.definition.indexes.push_back(index);
    }
    return info;
}

}  // namespace kolmera
