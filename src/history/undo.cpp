#include "history/undo.h"

#include <algorithm>
#include <optional>
#include <set>

#include "db/batchtransaction.h"
#include "history/keptrows.h"
#include "history/presentrows.h"
#include "history/undoplan.h"
#include "platform/error.h"

namespace kolmera {

struct RunUndo::Impl {
    Impl(Database& to, const NetRows::Source& changes, LastIds ids) : database(to), lastIds(std::move(ids)) {
        changes([&](const RowChange& change) {
            requireColumns(change);
            net.add(change);
            return true;
        });
        counts.rows = net.count();
    }

    bool carryOut(const GoOn& goOn);

    Database& database;
    LastIds lastIds;
    NetRows net;
    KeptRows kept;
    UndoCounts counts;

  private:
    enum class Result { Written, AsBefore, Kept, KeyTaken };
    using WriteRows = void (Impl::*)(const TableDef& table, std::vector<NetRow>& rows);

    void requireColumns(const RowChange& change);
    bool forEachBatch(UndoStep step, WriteRows write);
    bool next();
    void keep(const TableDef& table, NetRow& row, Stays why, std::vector<KeptCell> cells, std::string by = {});
    void settle(NetRow& row, std::int64_t& count);
    void refuse(const TableDef& table, NetRow& row, const PlatformError& error);
    template <typename Write>
    void walk(const TableDef& table, std::vector<NetRow>& rows, Write&& write);

    void removeRows(const TableDef& table, std::vector<NetRow>& rows);
    void restoreRows(const TableDef& table, std::vector<NetRow>& rows);
    void restoreRow(const TableDef& table, NetRow& row, Recordset& records);
    static std::vector<KeptCell> takeChanged(NetRow& row, Recordset& records);
    static void write(const NetRow& row, Recordset& records);
    void keepGone(const TableDef& table, NetRow& row);
    void insertRows(const TableDef& table, std::vector<NetRow>& rows);
    void insertOneByOne(const TableDef& table, std::vector<NetRow>& rows);

    template <typename Write>
    void forEachExchanged(Write&& write);
    void exchange();
    void giveNumbersUp();
    void takeOldNumbers();
    void exchangeOneByOne();

    std::string checked_;  ///< table that has so many columns
    int columns_ = 0;
    std::optional<UndoPlan> again_;  ///< looks once more at what comes to name rows that go
    std::optional<BatchTransaction> batch_;
    const GoOn* goOn_ = nullptr;
    std::int64_t done_ = 0, all_ = 0;
};

namespace {

/// Written between two looks at whether to go on, and in one transaction on a server.
constexpr int kRowsInBatch = 64;

std::vector<std::int64_t> idsOf(std::span<const NetRow> rows) {
    std::vector<std::int64_t> ids;
    for (const NetRow& row : rows) ids.push_back(row.id);
    return ids;
}

/// The values of a row as it was before the run, for these columns.
std::vector<Value> rowBefore(const NetRow& row, int id, std::size_t columns) {
    std::vector<Value> values(columns);
    values[static_cast<std::size_t>(id)] = row.id;
    for (const CellChange& cell : row.cells) values[static_cast<std::size_t>(cell.column)] = cell.before;
    return values;
}

std::vector<Value> valuesOf(Recordset& records, const TableDef& table) {
    std::vector<Value> values;
    values.reserve(table.fields.size());
    for (int column = 0; column < static_cast<int>(table.fields.size()); ++column) {
        values.push_back(records.value(column));
    }
    return values;
}

}  // namespace

/// A record may be damaged, or the company another one than the run's.
void RunUndo::Impl::requireColumns(const RowChange& change) {
    if (change.table != checked_) {
        columns_ = static_cast<int>(database.table(change.table).fields.size());
        checked_ = change.table;
    }
    const auto isThere = [&](const CellChange& cell) { return cell.column >= 0 && cell.column < columns_; };
    if (std::ranges::all_of(change.cells, isThere)) return;
    throw PlatformError(errors::kUnknownField, "the company has no such column").about(change.table);
}

bool RunUndo::Impl::carryOut(const GoOn& goOn) {
    goOn_ = &goOn;
    all_ = counts.removed + counts.changedBack + counts.broughtBack;
    done_ = counts.removed = counts.changedBack = counts.broughtBack = 0;
    again_.emplace(database, net, lastIds, kept, counts);
    batch_.emplace(database);
    const bool finished = forEachBatch(kRemove, &Impl::removeRows) && forEachBatch(kRestore, &Impl::restoreRows) &&
                          forEachBatch(kRestoreKey, &Impl::restoreRows);
    if (finished) exchange();
    const bool all = finished && forEachBatch(kInsert, &Impl::insertRows);
    batch_->end();
    batch_.reset();
    return all;
}

/// Rows of one step leave it as they are written, and none comes to a step behind the one at hand.
bool RunUndo::Impl::forEachBatch(UndoStep step, WriteRows writeRows) {
    for (int place = 0; place < static_cast<int>(net.tables().size()); ++place) {
        const TableDef& table = database.table(net.tables()[static_cast<std::size_t>(place)]);
        std::optional<std::int64_t> behind;
        for (;;) {
            std::vector<NetRow> rows = net.next(place, behind, step, kRowsInBatch);
            if (rows.empty()) break;
            behind = rows.back().id;
            const auto read = static_cast<std::int64_t>(rows.size());
            if (!(*goOn_)(done_, all_)) return false;
            (this->*writeRows)(table, rows);
            for (NetRow& row : rows) {
                if (row.mark == step) settle(row, counts.asBefore);  // it is gone, as it is to be
                if (row.mark == kExchange) {
                    net.put(row);  // without the cells that stay
                } else {
                    net.putMark(row);
                }
            }
            done_ += read;
            batch_->next();
        }
    }
    return true;
}

void RunUndo::Impl::keep(const TableDef& table, NetRow& row, Stays why, std::vector<KeptCell> cells, std::string by) {
    KeptRow stays = UndoPlan::keptRow(table, row, why);
    stays.cells = std::move(cells);
    stays.by = std::move(by);
    kept.add(stays);
    row.mark = kSettled;
}

void RunUndo::Impl::settle(NetRow& row, std::int64_t& count) {
    row.mark = kSettled;
    ++count;
}

void RunUndo::Impl::refuse(const TableDef& table, NetRow& row, const PlatformError& error) {
    if (error.endsRun()) throw error;
    std::vector<KeptCell> cells;
    for (const CellChange& cell : row.cells) {
        cells.push_back({cell.column, cell.before, cell.after, row.kind == ChangeKind::Removed ? Value() : cell.after});
    }
    const bool taken = error.number() == errors::kDuplicateKey;
    keep(table, row, taken ? Stays::KeyTaken : Stays::Refused, std::move(cells), error.description());
}

/// Goes through those of the rows that are there.
template <typename Write>
void RunUndo::Impl::walk(const TableDef& table, std::vector<NetRow>& rows, Write&& write) {
    if (rows.empty()) return;
    const auto records = database.open(rowsStatement(table, idsOf(rows)), RecordsetType::Dynaset);
    const int id = idColumn(table);
    for (; !records->eof(); records->moveNext()) {
        const auto found = std::get<std::int64_t>(records->value(id));
        const auto row = std::ranges::lower_bound(rows, found, {}, &NetRow::id);
        if (row != rows.end() && row->id == found) write(*row, *records);
    }
}

void RunUndo::Impl::removeRows(const TableDef& table, std::vector<NetRow>& rows) {
    again_->keepNamedSince(table, rows);
    walk(table, rows, [&](NetRow& row, Recordset& records) {
        if (row.mark != kRemove) return;
        std::vector<KeptCell> changed =
            UndoPlan::differences(table, row, UndoPlan::Side::After, valuesOf(records, table));
        if (!changed.empty()) return keep(table, row, Stays::Changed, std::move(changed));
        try {
            records.remove();
            settle(row, counts.removed);
        } catch (const PlatformError& error) {
            refuse(table, row, error);
        }
    });
}

/// Takes the cells out that are not to be written, because somebody has written them since the plan.
std::vector<KeptCell> RunUndo::Impl::takeChanged(NetRow& row, Recordset& records) {
    std::vector<KeptCell> changed;
    std::erase_if(row.cells, [&](const CellChange& cell) {
        const Value& now = records.value(cell.column);
        if (now == cell.after) return false;
        if (now != cell.before) changed.push_back({cell.column, cell.before, cell.after, now});
        return true;
    });
    if (row.rebuilt && !changed.empty()) row.cells.clear();
    return changed;
}

void RunUndo::Impl::write(const NetRow& row, Recordset& records) {
    records.edit();
    for (const CellChange& cell : row.cells) records.set(cell.column, cell.before);
    records.update();
}

void RunUndo::Impl::restoreRow(const TableDef& table, NetRow& row, Recordset& records) {
    const int step = row.mark;
    std::vector<KeptCell> changed = takeChanged(row, records);
    if (!changed.empty()) keep(table, row, Stays::Changed, std::move(changed));
    row.mark = step;
    if (row.cells.empty()) {
        row.mark = kSettled;
        return;
    }
    try {
        write(row, records);
        settle(row, counts.changedBack);
    } catch (const PlatformError& error) {
        const bool waits = error.number() == errors::kDuplicateKey && !error.endsRun() && step == kRestoreKey;
        if (waits) {
            row.mark = kExchange;
        } else {
            refuse(table, row, error);
        }
    }
}

void RunUndo::Impl::restoreRows(const TableDef& table, std::vector<NetRow>& rows) {
    const int step = rows.front().mark;
    if (step == kRestoreKey) again_->keepNamedSince(table, rows);
    std::erase_if(rows, [&](const NetRow& row) { return row.mark != step; });
    walk(table, rows, [&](NetRow& row, Recordset& records) { restoreRow(table, row, records); });
    for (NetRow& row : rows) {
        if (row.mark == step) keepGone(table, row);
    }
}

void RunUndo::Impl::keepGone(const TableDef& table, NetRow& row) {
    std::vector<KeptCell> cells;
    for (const CellChange& cell : row.cells) cells.push_back({cell.column, cell.before, cell.after, Null{}});
    keep(table, row, Stays::Removed, std::move(cells));
}

// Rows that get back numbers which others of them still have: first they give theirs up, then all get the old ones. In
// one transaction, so that no row is ever seen, or left by a crash, without its number.

template <typename Write>
void RunUndo::Impl::forEachExchanged(Write&& write) {
    for (int place = 0; place < static_cast<int>(net.tables().size()); ++place) {
        const TableDef& table = database.table(net.tables()[static_cast<std::size_t>(place)]);
        std::optional<std::int64_t> behind;
        for (;;) {
            std::vector<NetRow> rows = net.next(place, behind, kExchange, kRowsInBatch);
            if (rows.empty()) break;
            behind = rows.back().id;
            write(table, rows);
        }
    }
}

void RunUndo::Impl::exchange() {
    bool any = false;
    for (int place = 0; place < static_cast<int>(net.tables().size()); ++place) {
        any = any || !net.next(place, {}, kExchange, 1, {}).empty();
    }
    if (!any) return;
    batch_->end();
    batch_.reset();
    database.begin();
    try {
        giveNumbersUp();
        takeOldNumbers();
        database.commit();
        counts.changedBack += net.remark(kExchanged, kSettled);
    } catch (const PlatformError& error) {
        if (database.inTransaction()) database.rollback();
        if (error.endsRun()) throw;
        (void)net.remark(kExchanged, kExchange);
    }
    batch_.emplace(database);
    exchangeOneByOne();
}

void RunUndo::Impl::giveNumbersUp() {
    forEachExchanged([&](const TableDef& table, std::vector<NetRow>& rows) {
        std::set<int> unique;
        for (const UndoPlan::Key& key : again_->keysOf(table)) unique.insert(key.begin(), key.end());
        again_->keepNamedSince(table, rows);
        std::erase_if(rows, [](const NetRow& row) { return row.mark != kExchange; });
        std::vector<bool> met(rows.size());
        walk(table, rows, [&](NetRow& row, Recordset& records) {
            met[static_cast<std::size_t>(&row - rows.data())] = true;
            std::vector<KeptCell> changed = takeChanged(row, records);
            if (!changed.empty()) {
                keep(table, row, Stays::Changed, std::move(changed));
                row.mark = row.cells.empty() ? kSettled : kExchange;
                net.put(row);
            }
            if (row.cells.empty()) return;
            records.edit();
            for (const CellChange& cell : row.cells) {
                if (unique.contains(cell.column)) records.set(cell.column, Null{});
            }
            records.update();
        });
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (met[i]) continue;
            keepGone(table, rows[i]);
            net.putMark(rows[i]);
        }
    });
}

void RunUndo::Impl::takeOldNumbers() {
    forEachExchanged([&](const TableDef& table, std::vector<NetRow>& rows) {
        walk(table, rows, [&](NetRow& row, Recordset& records) {
            write(row, records);
            row.mark = kExchanged;
            net.putMark(row);
        });
    });
}

/// Where the exchange was refused each one gets what it can.
void RunUndo::Impl::exchangeOneByOne() {
    forEachExchanged([&](const TableDef& table, std::vector<NetRow>& rows) {
        walk(table, rows, [&](NetRow& row, Recordset& records) {
            const auto isBack = [&](const CellChange& cell) { return records.value(cell.column) == cell.before; };
            if (std::ranges::all_of(row.cells, isBack)) {
                settle(row, counts.changedBack);  // the answer to the commit was lost
            } else {
                restoreRow(table, row, records);
            }
        });
        for (NetRow& row : rows) {
            if (row.mark == kExchange) keep(table, row, Stays::Removed, {});
            net.putMark(row);
        }
        batch_->next();
    });
}

void RunUndo::Impl::insertRows(const TableDef& table, std::vector<NetRow>& rows) {
    std::vector<int> columns;
    std::vector<std::vector<Value>> values;
    for (std::size_t i = 0; i < table.fields.size(); ++i) columns.push_back(static_cast<int>(i));
    values.reserve(rows.size());
    for (const NetRow& row : rows) values.push_back(rowBefore(row, idColumn(table), columns.size()));
    try {
        database.insertRows(table.name, columns, values);
        for (NetRow& row : rows) settle(row, counts.broughtBack);
    } catch (const PlatformError& error) {
        if (error.endsRun()) throw;
        insertOneByOne(table, rows);
    }
}

/// To find the row that is refused; some are there already.
void RunUndo::Impl::insertOneByOne(const TableDef& table, std::vector<NetRow>& rows) {
    std::vector<int> columns;
    for (std::size_t i = 0; i < table.fields.size(); ++i) columns.push_back(static_cast<int>(i));
    const PresentRows present = readRows(database, table, columns, idsOf(rows));
    for (NetRow& row : rows) {
        const std::vector<std::vector<Value>> values = {rowBefore(row, idColumn(table), columns.size())};
        const auto there = present.find(row.id);
        if (there != present.end() && there->second == values.front()) {
            settle(row, counts.broughtBack);
            continue;
        }
        try {
            database.insertRows(table.name, columns, values);
            settle(row, counts.broughtBack);
        } catch (const PlatformError& error) {
            refuse(table, row, error);
        }
    }
}

RunUndo::RunUndo(Database& database, const NetRows::Source& changes, LastIds lastIds)
    : impl_(std::make_unique<Impl>(database, changes, std::move(lastIds))) {}

RunUndo::~RunUndo() = default;

bool RunUndo::plan(const GoOn& goOn) {
    return UndoPlan(impl_->database, impl_->net, impl_->lastIds, impl_->kept, impl_->counts).run(goOn);
}

bool RunUndo::carryOut(const GoOn& goOn) { return impl_->carryOut(goOn); }

UndoCounts RunUndo::counts() const {
    UndoCounts counts = impl_->counts;
    counts.kept = impl_->kept.count();
    return counts;
}

void RunUndo::forEachKept(const std::function<bool(const KeptRow&)>& take) const { impl_->kept.forEach(take); }

}  // namespace kolmera
