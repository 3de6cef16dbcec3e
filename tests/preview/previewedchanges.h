#pragma once

#include "history/recordreader.h"
#include "undo/tablestates.h"

namespace kolmera::test {

inline void apply(const RowChange& change, CompanyState& state) {
    TableState& rows = state.at(change.table);
    const std::string place = change.table + " " + std::to_string(change.id);
    EXPECT_EQ(rows.contains(change.id), change.kind != ChangeKind::Added) << place;
    if (change.kind == ChangeKind::Added) {
        for (const TableDef& table : companySchema()) {
            if (table.name == change.table) rows[change.id].resize(table.fields.size());
        }
        rows[change.id][0] = change.id;
    }
    for (const CellChange& cell : change.cells) {
        Value& value = rows[change.id][static_cast<std::size_t>(cell.column)];
        EXPECT_EQ(value, cell.before) << place << ", column " << cell.column;
        value = cell.after;
    }
    if (change.kind == ChangeKind::Removed) rows.erase(change.id);
}

/// What a company is when the changes of a record are made in it, in their order.
inline CompanyState changed(CompanyState state, const RecordReader& record) {
    record.forEachChange([&](const RowChange& change) {
        apply(change, state);
        return true;
    });
    return state;
}

}  // namespace kolmera::test
