#include "platform/engine/sqlite/filetable.h"

#include <algorithm>
#include <utility>

#include "platform/engine/fieldvalue.h"
#include "platform/engine/sqlite/tablerow.h"
#include "platform/engine/sqlitenames.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

constexpr std::size_t kMostKeptStatements = 64;  // per table and kind

bool rulesOf(SqliteConnection& connection, const std::string& table) {
    SqliteStatement rules(connection,
                          "SELECT 1 FROM sqlite_master WHERE tbl_name = ? COLLATE NOCASE AND "
                          "(type = 'trigger' OR sql LIKE '%CHECK%' OR sql LIKE '%NOT NULL%')");
    rules.bind(1, std::string_view(table));
    return rules.step();
}

}  // namespace

FileTable::FileTable(FileSession& session, TableDef definition)
    : session_(session), definition_(std::move(definition)), quotedName_(identifier(definition_.name)) {
    if (definition_.fields.size() > ColumnSet::kCapacity) {
        throw PlatformError(errors::kInternal, "table " + definition_.name + " has too many columns");
    }
    hasRules_ = rulesOf(session_.connection, definition_.name);
    for (const FieldDef& field : definition_.fields) {
        quotedColumns_.push_back(identifier(field.name));
        defaults_.push_back(defaultOf(field));
    }
    for (const IndexDef& index : definition_.indexes) {
        indexes_.push_back(makeIndex(index));
        if (!index.unique) continue;
        for (const KeyColumn& column : indexes_.back().columns) uniqueColumns_.add(column.ordinal);
    }
    session_.tables.push_back(this);
}

TableIndex FileTable::makeIndex(const IndexDef& index) const {
    TableIndex made{index.name, {}, index.unique};
    for (const std::string& part : split(index.fields, ";")) {
        const bool marked = part.starts_with('+') || part.starts_with('-');
        const int ordinal = definition_.ordinal(std::string_view(part).substr(marked ? 1 : 0));
        if (ordinal < 0)
            throw PlatformError(errors::kUnknownField, "an index has no such column").about(index.name + ", " + part);
        made.columns.push_back({ordinal, part.starts_with('-')});
    }
    return made;
}

const TableIndex& FileTable::index(std::string_view name) const {
    for (const TableIndex& candidate : indexes_) {
        if (equalNoCase(candidate.name, name)) return candidate;
    }
    throw PlatformError(errors::kUnknownField, "there is no such index")
        .about(definition_.name + ", " + std::string(name));
}

template <typename MakeText>
SqliteStatement& FileTable::keptStatement(KeptStatements& kept, const ColumnSet& columns, MakeText&& makeText) {
    const auto found = std::find_if(kept.rbegin(), kept.rend(),
                                    [&](const KeptStatement& candidate) { return candidate.columns == columns; });
    if (found != kept.rend()) {
        std::rotate(found.base() - 1, found.base(), kept.end());  // the last one used stands last
        return kept.back().statement;
    }
    if (kept.size() >= kMostKeptStatements) kept.erase(kept.begin());
    kept.push_back({columns, SqliteStatement(session_.connection, makeText())});
    return kept.back().statement;
}

SqliteStatement& FileTable::updateStatement(const ColumnSet& columns) {
    return keptStatement(updates_, columns, [&] { return updateText(columns); });
}

SqliteStatement& FileTable::insertStatement(const ColumnSet& columns) {
    return keptStatement(inserts_, columns, [&] { return insertText(columns); });
}

SqliteStatement& FileTable::deleteStatement() {
    if (!delete_.prepared()) {
        delete_ = SqliteStatement(session_.connection, "DELETE FROM " + quotedName_ + " WHERE rowid = ?");
    }
    return delete_;
}

std::string FileTable::updateText(const ColumnSet& columns) const {
    std::string text = "UPDATE " + quotedName_ + " SET ";
    bool first = true;
    columns.forEach([&](int column) {
        text += (first ? "" : ", ") + quotedColumn(column) + " = ?";
        first = false;
    });
    return text + " WHERE rowid = ?";
}

std::string FileTable::insertText(const ColumnSet& columns) const {
    if (columns.empty()) return "INSERT INTO " + quotedName_ + " DEFAULT VALUES";
    std::string names;
    std::string marks;
    columns.forEach([&](int column) {
        names += (names.empty() ? "" : ", ") + quotedColumn(column);
        marks += marks.empty() ? "?" : ", ?";
    });
    return "INSERT INTO " + quotedName_ + " (" + names + ") VALUES (" + marks + ")";
}

void FileTable::writeHeldBack() {
    try {
        std::exchange(heldBack_, nullptr)->writeHeldBack();
    } catch (const PlatformError& error) {
        throw error.endingRun();
    }
}

}  // namespace kolmera
