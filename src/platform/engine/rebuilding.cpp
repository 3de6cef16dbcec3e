#include "platform/engine/rebuilding.h"

#include <sqlite3.h>

#include "platform/engine/sqlitenames.h"
#include "platform/engine/sqliteschema.h"
#include "platform/error.h"

namespace kolmera {

Rebuilding::Rebuilding(const std::filesystem::path& newFile, const PageFile& damaged)
    : damaged_(damaged), connection_(newFile, {.create = true}), layout_(salvageLayout(damaged)) {
    if (layout_.empty()) throw PlatformError(errors::kDamaged, "nothing tells what tables the file had");
    connection_.prepareForMaking();
    writeLayoutCopy(connection_, layout_);
    makeTables();
}

/// The indexes are made once while the tables are empty, which tells their columns, and again when the rows are in.
void Rebuilding::makeTables() {
    for (const char* type : {"table", "index"}) {
        for (const LayoutEntry& entry : layout_) {
            if (entry.type == type) connection_.run(entry.statement);
        }
    }
    for (const LayoutEntry& entry : layout_) {
        if (entry.type == "table") tables_.push_back({readTable(connection_, entry.name), entry.root});
    }
    for (const LayoutEntry& entry : layout_) {
        if (entry.type == "index") connection_.run("DROP INDEX " + identifier(entry.name));
    }
    inserts_.resize(tables_.size());
}

void Rebuilding::takeRows() {
    Salvage(damaged_).readTables(
        tables_, [this](std::size_t table, std::int64_t id, auto values) { takeRow(table, id, values); });
}

SqliteStatement& Rebuilding::insertFor(std::size_t table, std::size_t values) {
    Insert& insert = inserts_[table];
    if (insert.statement.prepared() && insert.values == values) return insert.statement;
    const TableDef& definition = tables_[table].definition;
    std::string names = "rowid";
    std::string marks = "?";
    for (std::size_t i = 0; i < values; ++i) {
        if (definition.fields[i].counter) continue;
        names += ", " + identifier(definition.fields[i].name);
        marks += ", ?";
    }
    insert.values = values;
    insert.statement = SqliteStatement(connection_, "INSERT OR IGNORE INTO " + identifier(definition.name) + " (" +
                                                        names + ") VALUES (" + marks + ")");
    return insert.statement;
}

void Rebuilding::takeRow(std::size_t table, std::int64_t id, std::span<const StoredValue> values) {
    SqliteStatement& insert = insertFor(table, values.size());
    int parameter = 0;
    insert.bind(++parameter, id);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!tables_[table].definition.fields[i].counter) insert.bind(++parameter, values[i]);
    }
    insert.run();
    if (sqlite3_changes(connection_.handle()) == 0) ++dropped_;
}

void Rebuilding::makeIndexes() {
    for (const SalvageTable& table : tables_) {
        for (const IndexDef& index : table.definition.indexes) {
            const std::string statement = createIndexStatement(table.definition, index);
            if (statement.empty()) continue;
            if (index.unique) dropDuplicates(table.definition, index);
            connection_.run(statement);
        }
    }
}

void Rebuilding::dropDuplicates(const TableDef& table, const IndexDef& index) {
    std::string columns;
    std::string allSet;
    for (const std::string& column : index.columns()) {
        columns += (columns.empty() ? "" : ", ") + identifier(column);
        allSet += identifier(column) + " IS NOT NULL AND ";  // keys with Null may repeat
    }
    const std::string name = identifier(table.name);
    connection_.run("DELETE FROM " + name + " WHERE " + allSet + "rowid NOT IN (SELECT min(rowid) FROM " + name +
                    " GROUP BY " + columns + ")");
    dropped_ += sqlite3_changes(connection_.handle());
}

std::vector<std::pair<std::string, std::int64_t>> Rebuilding::rows() {
    std::vector<std::pair<std::string, std::int64_t>> counts;
    for (const SalvageTable& table : tables_) {
        const std::string& name = table.definition.name;
        if (name.starts_with(kInternalPrefix)) continue;
        counts.emplace_back(name, connection_.number("SELECT count(*) FROM " + identifier(name)));
    }
    return counts;
}

}  // namespace kolmera
