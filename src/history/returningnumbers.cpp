#include "history/returningnumbers.h"

#include <algorithm>
#include <optional>
#include <span>
#include <vector>

#include "history/presentrows.h"
#include "history/undoplan.h"
#include "platform/engine/fieldvalue.h"

namespace kolmera {

ReturningNumbers::ReturningNumbers(NetRows& net) : net_(net), file_({}, {.create = true}) {
    file_.run("PRAGMA journal_mode=OFF");
    file_.run("PRAGMA synchronous=OFF");
    file_.run("PRAGMA cache_size=-2048");
    file_.begin();
    file_.run(
        "CREATE TABLE back(tab, col, number COLLATE SVENSKA, id, PRIMARY KEY(tab, col, number, id)) WITHOUT ROWID");
    add_ = SqliteStatement(file_, "INSERT INTO back VALUES(?, ?, ?, ?)");
    find_ = SqliteStatement(file_, "SELECT id FROM back WHERE tab = ? AND col = ? AND number = ?");
}

bool ReturningNumbers::has(const NetRow& row, int column, const Value& number) {
    if (read_.emplace(row.table, column).second) read(row.table, column);
    const StatementUse use(find_);
    find_.bind(1, std::int64_t{row.table});
    find_.bind(2, std::int64_t{column});
    find_.bind(3, number);
    while (find_.step()) {
        const std::int64_t id = find_.integer(0);
        if (id == row.id) continue;
        // It may have turned out since that it stays, in this column at least.
        const std::optional<NetRow> other = net_.find(row.table, id, std::span(&column, 1));
        const bool returns = other->mark == kInsert || other->mark == kRestoreKey || other->mark == kExchange;
        if (returns && !other->cells.empty() && compareValues(other->cells.front().before, number) == 0) return true;
    }
    return false;
}

void ReturningNumbers::read(int table, int column) {
    for (const UndoStep step : {kInsert, kRestoreKey, kExchange}) {
        std::optional<std::int64_t> behind;
        for (;;) {
            const std::vector<NetRow> rows = net_.next(table, behind, step, kRowsAtOnce, std::span(&column, 1));
            if (rows.empty()) break;
            behind = rows.back().id;
            for (const NetRow& row : rows) {
                if (row.cells.empty() || isNull(row.cells.front().before)) continue;
                const StatementUse use(add_);
                add_.bind(1, std::int64_t{table});
                add_.bind(2, std::int64_t{column});
                add_.bind(3, row.cells.front().before);
                add_.bind(4, row.id);
                add_.step();
            }
        }
    }
}

}  // namespace kolmera
