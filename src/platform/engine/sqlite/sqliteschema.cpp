#include "platform/engine/sqlite/sqliteschema.h"

#include <algorithm>

#include "platform/engine/declaredtype.h"
#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/engine/sqlite/sqlitestatement.h"
#include "platform/engine/sqlitenames.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

constexpr std::string_view kPrimaryKey = "PrimaryKey";

/// Everything behind the column's name.
std::string columnDefinition(const FieldDef& field) {
    std::string text = declaredType(field);
    if (field.counter) text += " PRIMARY KEY";
    if (field.type == FieldType::Text || field.type == FieldType::Memo) text += " COLLATE SVENSKA";
    if (hasZeroDefault(field.type) && !field.counter && !field.defaultNull) text += " DEFAULT 0";
    return text;
}

bool isCounter(const TableDef& table, std::string_view column) {
    const int ordinal = table.ordinal(column);
    return ordinal >= 0 && table.fields[static_cast<std::size_t>(ordinal)].counter;
}

std::vector<FieldDef> readFields(SqliteConnection& connection, std::string_view table) {
    SqliteStatement query(connection, "SELECT name, type, dflt_value, pk FROM pragma_table_info(?) ORDER BY cid");
    query.bind(1, table);
    std::vector<FieldDef> fields;
    while (query.step()) {
        const bool counter = query.integer(3) == 1 && equalNoCase(query.text(1), "INTEGER");
        FieldDef field = fieldOfDeclaredType(query.text(0), query.text(1), counter);
        field.defaultNull = query.isNull(2) && !counter && hasZeroDefault(field.type);
        fields.push_back(std::move(field));
    }
    return fields;
}

std::string readIndexFields(SqliteConnection& connection, std::string_view index) {
    SqliteStatement query(connection, "SELECT name, \"desc\" FROM pragma_index_xinfo(?) WHERE key = 1 ORDER BY seqno");
    query.bind(1, index);
    std::string fields;
    while (query.step()) {
        if (!fields.empty()) fields += ';';
        fields += query.integer(1) != 0 ? '-' : '+';
        fields += query.text(0);
    }
    return fields;
}

std::vector<IndexDef> readIndexes(SqliteConnection& connection, const TableDef& table) {
    std::vector<IndexDef> indexes;
    for (const FieldDef& field : table.fields) {
        if (field.counter) indexes.push_back({std::string(kPrimaryKey), "+" + field.name, true});
    }
    SqliteStatement query(connection,
                          "SELECT m.name, l.\"unique\" FROM sqlite_master m JOIN pragma_index_list(m.tbl_name) l "
                          "ON l.name = m.name WHERE m.type = 'index' AND m.tbl_name = ? ORDER BY m.rowid");
    query.bind(1, std::string_view(table.name));
    while (query.step()) {
        const std::string name(query.text(0));
        indexes.push_back({indexName(table.name, name), readIndexFields(connection, name), query.integer(1) != 0});
    }
    return indexes;
}

}  // namespace

std::string indexNameInFile(const TableDef& table, const IndexDef& index) { return table.name + "." + index.name; }

std::string indexName(std::string_view table, std::string_view nameInFile) {
    const std::string prefix = std::string(table) + ".";
    const bool prefixed = nameInFile.size() > prefix.size() && nameInFile.starts_with(prefix);
    return std::string(prefixed ? nameInFile.substr(prefix.size()) : nameInFile);
}

std::string createTableStatement(const TableDef& table) {
    std::string statement = "CREATE TABLE " + identifier(table.name) + " (";
    for (const FieldDef& field : table.fields) {
        if (statement.back() != '(') statement += ", ";
        statement += identifier(field.name) + " " + columnDefinition(field);
    }
    return statement + ")";
}

std::string createIndexStatement(const TableDef& table, const IndexDef& index) {
    const std::vector<std::string> columns = index.columns();
    if (columns.size() == 1 && isCounter(table, columns.front())) return {};
    std::string statement = index.unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ";
    statement += identifier(indexNameInFile(table, index)) + " ON " + identifier(table.name) + " (";
    for (const std::string& part : split(index.fields, ";")) {
        if (statement.back() != '(') statement += ", ";
        const bool marked = part.starts_with('+') || part.starts_with('-');
        statement += identifier(marked ? std::string_view(part).substr(1) : part);
        if (part.starts_with('-')) statement += " DESC";
    }
    return statement + ")";
}

std::vector<std::string> readTableNames(SqliteConnection& connection) {
    SqliteStatement query(connection, "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY rowid");
    std::vector<std::string> names;
    while (query.step()) {
        const std::string_view name = query.text(0);
        if (!name.starts_with("sqlite_") && !name.starts_with(kInternalPrefix)) names.emplace_back(name);
    }
    return names;
}

TableDef readTable(SqliteConnection& connection, std::string_view name) {
    TableDef table{std::string(name), readFields(connection, name), {}};
    table.indexes = readIndexes(connection, table);
    return table;
}

}  // namespace kolmera
