#include "history/netrows.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

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
    bytes.number(cells.size());
    for (const CellChange& cell : cells) {
        bytes.signedNumber(cell.column);
        bytes.value(cell.before);
        bytes.value(cell.after);
    }
    return bytes;
}

std::vector<CellChange> cellsOf(std::string_view block) {
    BlockReader bytes(block);
    std::vector<CellChange> cells(bytes.number());
    for (CellChange& cell : cells) {
        cell.column = static_cast<int>(bytes.signedNumber());
        cell.before = bytes.value();
        cell.after = bytes.value();
    }
    return cells;
}

std::vector<CellChange> cellsOf(std::string_view block, std::span<const int> columns) {
    std::vector<CellChange> cells;
    BlockReader bytes(block);
    for (std::uint64_t left = bytes.number(); left > 0 && cells.size() < columns.size(); --left) {
        const auto column = static_cast<int>(bytes.signedNumber());
        if (std::ranges::count(columns, column) > 0) {
            CellChange& cell = cells.emplace_back();
            cell.column = column;
            cell.before = bytes.value();
            cell.after = bytes.value();
        } else {
            bytes.skipValue();
            bytes.skipValue();
        }
    }
    return cells;
}

/// A row of "SELECT key, kind, rebuilt, mark, record, label", without its cells.
NetRow rowOf(const SqliteStatement& statement) {
    const std::int64_t key = statement.integer(0);
    return {.kind = static_cast<ChangeKind>(statement.integer(1)),
            .table = static_cast<int>(key / kIdsOfTable),
            .id = idOf(key),
            .record = statement.integer(4),
            .label = std::string(statement.text(5)),
            .cells = {},
            .rebuilt = statement.integer(2) != 0,
            .mark = static_cast<int>(statement.integer(3))};
}

std::vector<CellChange> byColumn(std::vector<CellChange> cells) {
    if (!std::ranges::is_sorted(cells, {}, &CellChange::column)) std::ranges::sort(cells, {}, &CellChange::column);
    return cells;
}

}  // namespace

NetRows::NetRows() : file_({}, {.create = true}) {
    file_.run("PRAGMA journal_mode=OFF");
    file_.run("PRAGMA synchronous=OFF");
    file_.run("PRAGMA cache_size=-8192");
    file_.begin();
    // Apart, because most of what is asked and written is about marks, and the cells are most of the bytes.
    file_.run("CREATE TABLE net(key INTEGER PRIMARY KEY, kind, rebuilt, mark, record, label)");
    file_.run("CREATE TABLE cells(key INTEGER PRIMARY KEY, data)");
    const std::string select = "SELECT key, kind, rebuilt, mark, record, label FROM net WHERE ";
    find_ = SqliteStatement(file_, select + "key = ?");
    next_ = SqliteStatement(file_, select + "key > ? AND key < ? AND mark = ? ORDER BY key LIMIT ?");
    cells_ = SqliteStatement(file_, "SELECT data FROM cells WHERE key = ?");
    put_ = SqliteStatement(file_, "INSERT OR REPLACE INTO net VALUES(?, ?, ?, ?, ?, ?)");
    putCells_ = SqliteStatement(file_, "INSERT OR REPLACE INTO cells VALUES(?, ?)");
    mark_ = SqliteStatement(file_, "UPDATE net SET mark = ? WHERE key = ?");
    drop_ = SqliteStatement(file_, "DELETE FROM net WHERE key = ?");
    dropCells_ = SqliteStatement(file_, "DELETE FROM cells WHERE key = ?");
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
    std::optional<NetRow> row = find(table, change.id, {});
    std::vector<CellChange> cells = byColumn(change.cells);
    if (!row) {
        ++rows_;
        return put({.kind = change.kind,
                    .table = table,
                    .id = change.id,
                    .record = change.record,
                    .label = change.label,
                    .cells = std::move(cells)});
    }
    if (row->kind == ChangeKind::Added && change.kind == ChangeKind::Removed) return drop(*row);
    fill(*row);
    merge(*row, change, std::move(cells));
    put(*row);
}

void NetRows::merge(NetRow& row, const RowChange& change, std::vector<CellChange> cells) {
    if (change.record != 0) row.record = change.record;
    if (!change.label.empty()) row.label = change.label;
    const bool wasNull = row.kind == ChangeKind::Added || row.rebuilt;
    std::vector<CellChange> both;
    both.reserve(row.cells.size() + cells.size());
    auto earlier = row.cells.begin();
    for (CellChange& cell : cells) {
        while (earlier != row.cells.end() && earlier->column < cell.column) both.push_back(std::move(*earlier++));
        if (earlier != row.cells.end() && earlier->column == cell.column) {
            cell.before = std::move(earlier++->before);
        } else if (wasNull) {
            cell.before = Null{};
        }
        both.push_back(std::move(cell));
    }
    std::move(earlier, row.cells.end(), std::back_inserter(both));
    row.cells = std::move(both);
    if (change.kind == ChangeKind::Removed) {
        for (CellChange& cell : row.cells) cell.after = Null{};
        row.kind = ChangeKind::Removed;
    } else if (row.kind == ChangeKind::Removed) {
        row.rebuilt = true;
        row.kind = ChangeKind::Changed;
    }
}

std::optional<NetRow> NetRows::find(int table, std::int64_t id) {
    std::optional<NetRow> row = find(table, id, {});
    if (row) fill(*row);
    return row;
}

std::optional<NetRow> NetRows::find(int table, std::int64_t id, std::span<const int> columns) {
    std::optional<NetRow> row;
    {
        const StatementUse use(find_);
        find_.bind(1, keyOf(table, id));
        if (find_.step()) row = rowOf(find_);
    }
    if (row) fill(*row, columns);
    return row;
}

std::vector<NetRow> NetRows::next(int table, std::optional<std::int64_t> behind, int mark, int count) {
    std::vector<NetRow> rows = next(table, behind, mark, count, {});
    for (NetRow& row : rows) fill(row);
    return rows;
}

std::vector<NetRow> NetRows::next(int table, std::optional<std::int64_t> behind, int mark, int count,
                                  std::span<const int> columns) {
    std::vector<NetRow> rows;
    {
        const StatementUse use(next_);
        next_.bind(1, behind ? keyOf(table, *behind) : table * kIdsOfTable);
        next_.bind(2, (table + 1) * kIdsOfTable);
        next_.bind(3, std::int64_t{mark});
        next_.bind(4, std::int64_t{count});
        while (next_.step()) rows.push_back(rowOf(next_));
    }
    for (NetRow& row : rows) fill(row, columns);
    return rows;
}

void NetRows::fill(NetRow& row) {
    const StatementUse use(cells_);
    cells_.bind(1, keyOf(row.table, row.id));
    if (cells_.step()) row.cells = cellsOf(cells_.bytes(0));
}

void NetRows::fill(NetRow& row, std::span<const int> columns) {
    if (columns.empty()) return;
    const StatementUse use(cells_);
    cells_.bind(1, keyOf(row.table, row.id));
    if (cells_.step()) row.cells = cellsOf(cells_.bytes(0), columns);
}

void NetRows::put(const NetRow& row) {
    const std::int64_t key = keyOf(row.table, row.id);
    {
        const StatementUse use(put_);
        put_.bind(1, key);
        put_.bind(2, static_cast<std::int64_t>(row.kind));
        put_.bind(3, std::int64_t{row.rebuilt});
        put_.bind(4, std::int64_t{row.mark});
        put_.bind(5, row.record);
        put_.bind(6, std::string_view(row.label));
        put_.step();
    }
    const BlockWriter cells = bytesOf(row.cells);
    const StatementUse use(putCells_);
    putCells_.bind(1, key);
    putCells_.bindBytes(2, cells.bytes());
    putCells_.step();
}

void NetRows::putMark(const NetRow& row) {
    const StatementUse use(mark_);
    mark_.bind(1, std::int64_t{row.mark});
    mark_.bind(2, keyOf(row.table, row.id));
    mark_.step();
}

std::int64_t NetRows::remark(int from, int to) {
    file_.run(fmt::format("UPDATE net SET mark = {} WHERE mark = {}", to, from));
    return file_.number("SELECT changes()");
}

void NetRows::drop(const NetRow& row) {
    --rows_;
    for (SqliteStatement* statement : {&drop_, &dropCells_}) {
        const StatementUse use(*statement);
        statement->bind(1, keyOf(row.table, row.id));
        statement->step();
    }
}

}  // namespace kolmera
