#include "platform/engine/repair/rebuilding.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <iterator>

#include "platform/engine/sqlite/password.h"
#include "platform/engine/sqlitenames.h"
#include "platform/error.h"

namespace kolmera {

namespace {

constexpr std::string_view kHashBeginning = "$argon2";

}  // namespace

Rebuilding::Rebuilding(const std::filesystem::path& newFile, const PageFile& damaged, std::span<const TableDef> known)
    : damaged_(damaged), connection_(newFile, {.create = true}), layout_(salvageLayout(damaged, known)) {
    if (layout_.tables.empty()) throw PlatformError(errors::kDamaged, "nothing tells what tables the file had");
    connection_.prepareForMaking();
    std::vector<TableDef> tables;
    for (const SalvageTable& table : layout_.tables) tables.push_back(table.definition);
    makeTables(connection_, tables, layout_.password);
    inserts_.resize(tables.size());
    report_.leftOut = layout_.leftOut;
    report_.passwordLost = layout_.password;
}

RepairReport Rebuilding::bringOver() {
    std::vector<SalvageTable> tables = layout_.tables;
    tables.push_back({{std::string(kPasswordTable), {{.name = "hash"}}, {}}, layout_.passwordRoot});
    std::ranges::move(engineTables(), std::back_inserter(tables));  // so that their pages are nobody else's
    if (!layout_.password) tables.erase(tables.begin() + static_cast<std::ptrdiff_t>(layout_.tables.size()));
    const Salvage salvage(damaged_, tables);
    const Salvage::TakeRow take = [this](const SalvagedRow& row) { takeRow(row); };
    salvage.readRows(Trust::Tree, take);
    makeAllIndexes();
    salvage.readRows(Trust::Lost, take);
    salvage.readRows(Trust::Doubtful, take);
    report_.strange = salvage.strangeRows();
    countRows();
    connection_.commit();
    return std::move(report_);
}

SqliteStatement& Rebuilding::insertFor(std::size_t table, std::size_t values) {
    Insert& insert = inserts_[table];
    if (insert.statement.prepared() && insert.values == values) return insert.statement;
    const TableDef& definition = layout_.tables[table].definition;
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

void Rebuilding::takeRow(const SalvagedRow& row) {
    if (row.table >= layout_.tables.size()) return takePassword(row);
    // A row that lost its own ID to damage gets a new one rather than being lost.
    const bool newId = row.idUncertain && isTaken(row);
    if (!insert(row, newId ? Value(Null{}) : Value(row.id))) {
        ++report_.dropped;
    } else if (row.shortened && report_.shortened++ == 0) {
        report_.firstShortened = fmt::format("{} {}", layout_.tables[row.table].definition.name, row.id);
    }
}

bool Rebuilding::insert(const SalvagedRow& row, const Value& id) {
    SqliteStatement& statement = insertFor(row.table, row.values.size());
    int parameter = 0;
    statement.bind(++parameter, id);
    for (std::size_t i = 0; i < row.values.size(); ++i) {
        if (!layout_.tables[row.table].definition.fields[i].counter) statement.bind(++parameter, row.values[i]);
    }
    statement.run();
    return sqlite3_changes(connection_.handle()) > 0;
}

bool Rebuilding::isTaken(const SalvagedRow& row) {
    const std::string& name = layout_.tables[row.table].definition.name;
    return connection_.number("SELECT count(*) FROM " + identifier(name) + " WHERE rowid = " + std::to_string(row.id)) >
           0;
}

void Rebuilding::takePassword(const SalvagedRow& row) {
    const auto* hash = row.values.size() == 1 ? std::get_if<std::string_view>(&row.values[0]) : nullptr;
    if (!report_.passwordLost || hash == nullptr || !hash->starts_with(kHashBeginning)) return;
    storeHash(connection_, *hash);
    report_.passwordLost = false;
}

/// Of the rows that break a unique index, the oldest stays.
void Rebuilding::makeAllIndexes() {
    for (const SalvageTable& table : layout_.tables) {
        for (const IndexDef& index : table.definition.indexes) {
            if (index.unique) dropDuplicates(table.definition, index);
        }
        makeIndexes(connection_, table.definition);
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
    report_.dropped += sqlite3_changes(connection_.handle());
}

void Rebuilding::countRows() {
    for (const SalvageTable& table : layout_.tables) {
        const std::string& name = table.definition.name;
        report_.rows.emplace_back(name, connection_.number("SELECT count(*) FROM " + identifier(name)));
    }
}

}  // namespace kolmera
