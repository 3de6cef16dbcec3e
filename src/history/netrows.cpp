#include "history/netrows.h"

#include <algorithm>
#include <limits>

#include "history/blockbytes.h"
#include "platform/error.h"

namespace kolmera {
namespace {

/// The key of a row: its table above its ID.
constexpr std::int64_t kIdsOfTable = std::int64_t{1} << 52;

std::int64_t keyOf(int table, std::int64_t id) {
    if (id <= -kIdsOfTable / 2 || id >= kIdsOfTable / 2) throw PlatformError(errors::kDamaged, "no ID of a row");
    return table * kIdsOfTable + kIdsOfTable / 2 + id;
}

std::int64_t idOf(std::int64_t key) { return key % kIdsOfTable - kIdsOfTable / 2; }

BlockWriter bytesOf(const std::vector<CellChange>& cells) {
    BlockWriter bytes;
    for (const CellChange& cell : cells) {
        bytes.signedNumber(cell.column);
        bytes.value(cell.before);
        bytes.value(cell.after);
    }
    return bytes;
}

std::vector<CellChange> cellsOf(std::string_view block) {
    std::vector<CellChange> cells;
    for (BlockReader bytes(block); !bytes.atEnd();) {
        CellChange& cell = cells.emplace_back();
        cell.column = static_cast<int>(bytes.signedNumber());
        cell.before = bytes.value();
        cell.after = bytes.value();
    }
    return cells;
}

/// A row of "SELECT key, kind, rebuilt, mark, record, label, cells".
NetRow rowOf(const SqliteStatement& statement) {
    const std::int64_t key = statement.integer(0);
    return {.kind = static_cast<ChangeKind>(statement.integer(1)),
            .table = static_cast<int>(key / kIdsOfTable),
            .id = idOf(key),
            .record = statement.integer(4),
            .label = std::string(statement.text(5)),
            .cells = cellsOf(statement.bytes(6)),
            .rebuilt = statement.integer(2) != 0,
            .mark = static_cast<int>(statement.integer(3))};
}

CellChange& cellOf(NetRow& row, const CellChange& change) {
    const auto found = std::ranges::find(row.cells, change.column, &CellChange::column);
    if (found != row.cells.end()) return *found;
    const bool wasNull = row.kind == ChangeKind::Added || row.rebuilt;
    return row.cells.emplace_back(CellChange{change.column, wasNull ? Value() : change.before, Value()});
}

}  // namespace

NetRows::NetRows() : file_({}, {.create = true}) {
    file_.run("PRAGMA journal_mode=OFF");
    file_.run("PRAGMA synchronous=OFF");
    file_.run("PRAGMA cache_size=-8192");
    file_.begin();
    file_.run("CREATE TABLE net(key INTEGER PRIMARY KEY, kind, rebuilt, mark, record, label, cells)");
    const std::string select = "SELECT key, kind, rebuilt, mark, record, label, cells FROM net WHERE ";
    find_ = SqliteStatement(file_, select + "key = ?");
    next_ = SqliteStatement(file_, select + "key > ? AND key < ? AND mark = ? ORDER BY key LIMIT ?");
    put_ = SqliteStatement(file_, "INSERT OR REPLACE INTO net VALUES(?, ?, ?, ?, ?, ?, ?)");
    drop_ = SqliteStatement(file_, "DELETE FROM net WHERE key = ?");
}

int NetRows::place(std::string_view table) const {
    const auto found = std::ranges::find(tables_, table);
    return found == tables_.end() ? -1 : static_cast<int>(found - tables_.begin());
}

void NetRows::add(const RowChange& change) {
    int table = place(change.table);
    if (table < 0) {
        table = static_cast<int>(tables_.size());
        tables_.push_back(change.table);
    }
    std::optional<NetRow> row = find(table, change.id);
    if (!row) {
        ++rows_;
        return put({.kind = change.kind,
                    .table = table,
                    .id = change.id,
                    .record = change.record,
                    .label = change.label,
                    .cells = change.cells});
    }
    if (row->kind == ChangeKind::Added && change.kind == ChangeKind::Removed) return drop(*row);
    merge(*row, change);
    put(*row);
}

void NetRows::merge(NetRow& row, const RowChange& change) {
    if (change.record != 0) row.record = change.record;
    if (!change.label.empty()) row.label = change.label;
    for (const CellChange& cell : change.cells) cellOf(row, cell).after = cell.after;
    if (change.kind == ChangeKind::Removed) {
        for (CellChange& cell : row.cells) cell.after = Null{};
        row.kind = ChangeKind::Removed;
    } else if (row.kind == ChangeKind::Removed) {
        row.rebuilt = true;
        row.kind = ChangeKind::Changed;
    }
}

std::optional<NetRow> NetRows::find(int table, std::int64_t id) {
    const StatementUse use(find_);
    find_.bind(1, keyOf(table, id));
    if (!find_.step()) return std::nullopt;
    return rowOf(find_);
}

std::vector<NetRow> NetRows::next(int table, std::optional<std::int64_t> behind, int mark, int count) {
    const StatementUse use(next_);
    next_.bind(1, behind ? keyOf(table, *behind) : table * kIdsOfTable);
    next_.bind(2, (table + 1) * kIdsOfTable);
    next_.bind(3, std::int64_t{mark});
    next_.bind(4, std::int64_t{count});
    std::vector<NetRow> rows;
    while (next_.step()) rows.push_back(rowOf(next_));
    return rows;
}

void NetRows::put(const NetRow& row) {
    const BlockWriter cells = bytesOf(row.cells);
    const StatementUse use(put_);
    put_.bind(1, keyOf(row.table, row.id));
    put_.bind(2, static_cast<std::int64_t>(row.kind));
    put_.bind(3, std::int64_t{row.rebuilt});
    put_.bind(4, std::int64_t{row.mark});
    put_.bind(5, row.record);
    put_.bind(6, std::string_view(row.label));
    put_.bindBytes(7, cells.bytes());
    put_.step();
}

void NetRows::drop(const NetRow& row) {
    --rows_;
    const StatementUse use(drop_);
    drop_.bind(1, keyOf(row.table, row.id));
    drop_.step();
}

}  // namespace kolmera
