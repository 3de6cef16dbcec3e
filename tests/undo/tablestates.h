#pragma once

#include <map>
#include <string>
#include <vector>

#include "db/companyschema.h"
#include "history/rowchange.h"
#include "platform/engine/database.h"

namespace kolmera::test {

using TableState = std::map<std::int64_t, std::vector<Value>>;
/// All rows of a company, by table and ID.
using CompanyState = std::map<std::string, TableState>;

inline CompanyState stateOf(Database& database) {
    CompanyState state;
    for (const TableDef& table : companySchema()) {
        TableState& rows = state[table.name];
        const auto records = database.open("SELECT * FROM " + table.name, RecordsetType::Snapshot, options::kReadOnly);
        std::vector<int> ordinals;
        for (const FieldDef& field : table.fields) ordinals.push_back(records->ordinal(field.name));
        for (; !records->eof(); records->moveNext()) {
            std::vector<Value>& row = rows[std::get<std::int64_t>(records->value(ordinals.front()))];
            for (const int ordinal : ordinals) row.push_back(records->value(ordinal));
        }
    }
    return state;
}

inline void tellApart(std::vector<RowChange>& changes, const std::string& table, std::int64_t id,
                      const std::vector<Value>& was, const std::vector<Value>& is) {
    RowChange& removed = changes.emplace_back(RowChange{ChangeKind::Removed, table, id, 0, {}, {}});
    for (std::size_t i = 1; i < was.size(); ++i) removed.cells.push_back({static_cast<int>(i), was[i], {}});
    RowChange& added = changes.emplace_back(RowChange{ChangeKind::Added, table, id, 0, {}, {}});
    for (std::size_t i = 1; i < is.size(); ++i) added.cells.push_back({static_cast<int>(i), {}, is[i]});
}

/// What a run between the two has changed, as its record would tell it.
inline std::vector<RowChange> changesBetween(const CompanyState& before, const CompanyState& after) {
    std::vector<RowChange> changes;
    for (const auto& [table, rows] : before) {
        const TableState& later = after.at(table);
        const auto tell = [&](std::int64_t id, const std::vector<Value>* was, const std::vector<Value>* is) {
            RowChange change{.kind = was == nullptr  ? ChangeKind::Added
                                     : is == nullptr ? ChangeKind::Removed
                                                     : ChangeKind::Changed,
                             .table = table,
                             .id = id,
                             .label = {},
                             .cells = {}};
            const std::size_t columns = (was != nullptr ? was : is)->size();
            for (std::size_t i = 1; i < columns; ++i) {
                const Value old = was != nullptr ? (*was)[i] : Value();
                const Value now = is != nullptr ? (*is)[i] : Value();
                if (old != now) change.cells.push_back({static_cast<int>(i), old, now});
            }
            if (was != nullptr && is != nullptr && (*was)[1] != (*is)[1]) {  // another row has got the ID
                tellApart(changes, table, id, *was, *is);
                return;
            }
            if (!change.cells.empty() || change.kind != ChangeKind::Changed) changes.push_back(change);
        };
        for (const auto& [id, row] : rows) {
            const auto found = later.find(id);
            tell(id, &row, found == later.end() ? nullptr : &found->second);
        }
        for (const auto& [id, row] : later) {
            if (!rows.contains(id)) tell(id, nullptr, &row);
        }
    }
    return changes;
}

/// Where two states differ first, "" when they are the same.
inline std::string differenceOf(const CompanyState& a, const CompanyState& b) {
    std::string text;
    for (const RowChange& change : changesBetween(a, b)) {
        text += change.table + " " + std::to_string(change.id) + ": ";
        for (const CellChange& cell : change.cells) text += std::to_string(cell.column) + " ";
        return text;
    }
    return text;
}

}  // namespace kolmera::test
