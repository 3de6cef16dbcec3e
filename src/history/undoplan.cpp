#include "history/undoplan.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <set>

#include "db/companyschema.h"
#include "history/references.h"
#include "platform/engine/fieldvalue.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

const FieldDef& fieldOf(const TableDef& table, int column) { return table.fields[static_cast<std::size_t>(column)]; }

const CellChange* cellOf(const NetRow& row, int column) {
    const auto found = std::ranges::find(row.cells, column, &CellChange::column);
    return found == row.cells.end() ? nullptr : &*found;
}

std::vector<std::int64_t> idsOf(std::span<const NetRow> rows) {
    std::vector<std::int64_t> ids;
    for (const NetRow& row : rows) ids.push_back(row.id);
    return ids;
}

std::vector<int> allColumns(const TableDef& table) {
    std::vector<int> columns(table.fields.size());
    std::iota(columns.begin(), columns.end(), 0);
    return columns;
}

/// The columns that have to be read to know what the rows are now.
std::vector<int> columnsOf(const TableDef& table, std::span<const NetRow> rows) {
    std::set<int> columns;
    for (const NetRow& row : rows) {
        if (row.kind != ChangeKind::Changed || row.rebuilt) return allColumns(table);
        for (const CellChange& cell : row.cells) columns.insert(cell.column);
    }
    return {columns.begin(), columns.end()};
}

/// The unique indexes whose columns are values of the user's.
std::vector<IndexDef> keysOf(const TableDef& table) {
    std::vector<IndexDef> keys;
    for (const IndexDef& index : table.indexes) {
        const auto isId = [&](const std::string& column) { return fieldOf(table, table.ordinal(column)).counter; };
        if (index.unique && std::ranges::none_of(index.columns(), isId)) keys.push_back(index);
    }
    return keys;
}

std::vector<int> ordinalsOf(const TableDef& table, const IndexDef& index) {
    std::vector<int> columns;
    for (const std::string& column : index.columns()) columns.push_back(table.ordinal(column));
    return columns;
}

bool sameKey(const std::vector<Value>& a, const std::vector<Value>& b) {
    return std::ranges::equal(a, b, [](const Value& x, const Value& y) { return compareValues(x, y) == 0; });
}

/// What a row will have in the columns of a key. `now` is what it has; nothing is needed of a row that comes back.
std::vector<Value> keyBack(const NetRow& row, std::span<const int> columns, const std::vector<Value>* now) {
    std::vector<Value> key;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const CellChange* cell = cellOf(row, columns[i]);
        key.push_back(cell != nullptr ? cell->before : now != nullptr ? (*now)[i] : Value());
    }
    return key;
}

std::string placeOf(const TableDef& table, std::int64_t id) {
    const bool hasId = std::ranges::count(table.fields, true, &FieldDef::counter) > 0;
    return hasId ? fmt::format("{}, ID {}", table.name, id) : table.name;
}

/// The tables of a run in the order in which rows can be removed: those that name others first.
std::vector<int> inOrder(const NetRows& net) {
    const auto rank = [&](int place) {
        const std::string& table = net.tables()[static_cast<std::size_t>(place)];
        std::size_t last = 0;
        for (std::size_t i = 0; i < std::size(kReferences); ++i) {
            if (equalNoCase(kReferences[i].table, table)) last = i + 1;
            if (equalNoCase(kReferences[i].named, table) && last == 0) last = std::size(kReferences) + 1;
        }
        return last;
    };
    std::vector<int> places(net.tables().size());
    std::iota(places.begin(), places.end(), 0);
    std::ranges::stable_sort(places, {}, rank);
    return places;
}

}  // namespace

bool UndoPlan::run(const RunUndo::GoOn& goOn) {
    goOn_ = &goOn;
    const std::vector<int> places = inOrder(net_);
    for (const int place : places) {
        if (!look(place)) return false;
    }
    // What stays may be what another row waits for.
    bool again = true;
    while (again) {
        again = false;
        for (const int place : places) again = keepNamed(place) || again;
        bool taken = true;
        while (taken) {
            taken = false;
            for (const int place : places) taken = keepWithoutKey(place) || taken;
            again = again || taken;
            if (!goOn(looked_, net_.count())) return false;
        }
    }
    return true;
}

bool UndoPlan::look(int place) {
    const TableDef& table = database_.table(net_.tables()[static_cast<std::size_t>(place)]);
    std::optional<std::int64_t> behind;
    for (;;) {
        std::vector<NetRow> rows = net_.next(place, behind, kUnseen, kRowsAtOnce);
        if (rows.empty()) return true;
        behind = rows.back().id;
        const std::vector<int> columns = columnsOf(table, rows);
        const PresentRows present = readRows(database_, table, columns, idsOf(rows));
        for (NetRow& row : rows) {
            const auto now = present.find(row.id);
            lookAt(table, row, now == present.end() ? nullptr : &now->second, columns);
            net_.put(row);
        }
        looked_ += static_cast<std::int64_t>(rows.size());
        if (!(*goOn_)(looked_, net_.count())) return false;
    }
}

std::vector<KeptCell> UndoPlan::differences(const TableDef& table, const NetRow& row, Side side,
                                            const std::vector<Value>& now) {
    std::vector<KeptCell> cells;
    for (int column = 0; column < static_cast<int>(table.fields.size()); ++column) {
        if (fieldOf(table, column).counter) continue;
        const CellChange* cell = cellOf(row, column);
        const Value none = Null{};
        const Value& before = cell != nullptr ? cell->before : none;
        const Value& left = cell != nullptr ? cell->after : none;
        const Value& present = now[static_cast<std::size_t>(column)];
        if (present != (side == Side::Before ? before : left)) cells.push_back({column, before, left, present});
    }
    return cells;
}

KeptRow UndoPlan::keptRow(const TableDef& table, const NetRow& row, Stays why) {
    return {.why = why,
            .kind = row.kind,
            .table = table.name,
            .id = row.id,
            .record = row.record,
            .label = row.label,
            .by = {},
            .cells = {}};
}

bool UndoPlan::writesKey(const TableDef& table, const NetRow& row) {
    return std::ranges::any_of(keysOf(table), [&](const IndexDef& index) {
        return std::ranges::any_of(ordinalsOf(table, index),
                                   [&](int column) { return cellOf(row, column) != nullptr; });
    });
}

void UndoPlan::keep(NetRow& row, KeptRow kept) {
    row.mark = kSettled;
    kept_.add(kept);
}

void UndoPlan::lookAt(const TableDef& table, NetRow& row, const std::vector<Value>* now, std::span<const int> columns) {
    const bool added = row.kind == ChangeKind::Added;
    if (row.kind == ChangeKind::Changed && (now != nullptr || !row.rebuilt)) {
        if (now != nullptr && row.rebuilt) return lookAtRebuilt(table, row, *now);
        if (now != nullptr) return lookAtCells(table, row, *now, columns);
        KeptRow kept = keptRow(table, row, Stays::Removed);
        for (const CellChange& cell : row.cells) kept.cells.push_back({cell.column, cell.before, cell.after, Null{}});
        return keep(row, std::move(kept));
    }
    if (now == nullptr) {
        row.mark = added ? kSettled : kInsert;
        ++(added ? counts_.asBefore : counts_.broughtBack);
        return;
    }
    // All columns were read. A row that was removed is there again: as before, or another one.
    KeptRow kept = keptRow(table, row, Stays::Changed);
    kept.cells = differences(table, row, added ? Side::After : Side::Before, *now);
    if (!kept.cells.empty()) return keep(row, std::move(kept));
    row.mark = added ? kRemove : kSettled;
    ++(added ? counts_.removed : counts_.asBefore);
}

/// The ID belonged to one row before the run and to another after it, which stays or goes whole.
void UndoPlan::lookAtRebuilt(const TableDef& table, NetRow& row, const std::vector<Value>& now) {
    if (differences(table, row, Side::Before, now).empty()) {
        row.mark = kSettled;
        ++counts_.asBefore;
        return;
    }
    KeptRow kept = keptRow(table, row, Stays::Changed);
    kept.cells = differences(table, row, Side::After, now);
    if (!kept.cells.empty()) return keep(row, std::move(kept));
    std::erase_if(row.cells, [](const CellChange& cell) { return cell.before == cell.after; });
    row.mark = writesKey(table, row) ? kRestoreKey : kRestore;
    ++counts_.changedBack;
}

void UndoPlan::lookAtCells(const TableDef& table, NetRow& row, const std::vector<Value>& now,
                           std::span<const int> columns) {
    KeptRow kept = keptRow(table, row, Stays::Changed);
    std::erase_if(row.cells, [&](const CellChange& cell) {
        const auto at = static_cast<std::size_t>(std::ranges::find(columns, cell.column) - columns.begin());
        if (cell.before == cell.after || now[at] == cell.before) return true;
        if (now[at] == cell.after) return false;
        kept.cells.push_back({cell.column, cell.before, cell.after, now[at]});
        return true;
    });
    row.mark = row.cells.empty() ? kSettled : writesKey(table, row) ? kRestoreKey : kRestore;
    if (!row.cells.empty()) ++counts_.changedBack;
    if (row.cells.empty() && kept.cells.empty()) ++counts_.asBefore;
    if (!kept.cells.empty()) kept_.add(kept);
}

// Rows that others name.

void UndoPlan::keepNamedSince(const TableDef& table, std::vector<NetRow>& rows) {
    planning_ = false;
    for (const Naming& naming : namingOf(table)) (void)keepNamed(table, naming, rows);
}

const std::vector<UndoPlan::Naming>& UndoPlan::namingOf(const TableDef& table) {
    const auto known = namings_.find(table.name);
    return known != namings_.end() ? known->second : namings_.emplace(table.name, findNaming(table)).first->second;
}

std::vector<UndoPlan::Naming> UndoPlan::findNaming(const TableDef& table) {
    const std::vector<TableDef> own = companySchema();
    std::vector<Naming> naming;
    const auto take = [&](const Reference& reference, const TableDef& by) {
        const int column = by.ordinal(reference.column);
        const int named = table.ordinal(reference.byColumn);
        if (column >= 0 && named >= 0) naming.push_back({&by, column, named});
    };
    // A table with columns of types that the suite has not cannot be read by it, nor be one of its companies' own.
    const auto takeForeign = [&](const Reference& reference, const std::string& name) {
        try {
            take(reference, database_.table(name));
        } catch (const PlatformError& error) {
            if (error.endsRun()) throw;
        }
    };
    for (const std::string& name : database_.tableNames()) {
        const bool known = std::ranges::any_of(own, [&](const TableDef& one) { return equalNoCase(one.name, name); });
        for (const Reference& reference : kReferences) {
            const bool names = equalNoCase(reference.table, name) && equalNoCase(reference.named, table.name);
            if (names) take(reference, database_.table(name));
        }
        for (const Reference& reference : kForeignReferences) {
            if (!known && equalNoCase(reference.named, table.name)) takeForeign(reference, name);
        }
    }
    return naming;
}

bool UndoPlan::keepNamed(int place) {
    const TableDef& table = database_.table(net_.tables()[static_cast<std::size_t>(place)]);
    bool kept = false;
    for (const UndoStep step : {kRemove, kRestoreKey}) {
        if (net_.next(place, {}, step, 1).empty()) continue;
        const std::vector<Naming>& namings = namingOf(table);
        std::optional<std::int64_t> behind;
        while (!namings.empty()) {
            std::vector<NetRow> rows = net_.next(place, behind, step, kRowsAtOnce);
            if (rows.empty()) break;
            behind = rows.back().id;
            for (const Naming& naming : namings) kept = keepNamed(table, naming, rows) || kept;
        }
    }
    return kept;
}

bool UndoPlan::keepNamed(const TableDef& table, const Naming& naming, std::vector<NetRow>& rows) {
    // The name that a row loses.
    const auto nameOf = [&](const NetRow& row) -> Value {
        if (row.mark != kRemove && (row.mark != kRestoreKey || !row.rebuilt)) return Null{};
        if (naming.byColumn == idColumn(table)) return row.mark == kRemove ? Value(row.id) : Value();
        const CellChange* cell = cellOf(row, naming.byColumn);
        return cell != nullptr ? cell->after : Value();
    };
    std::vector<Value> names;
    for (const NetRow& row : rows) {
        const Value name = nameOf(row);
        if (!isNull(name) && name != Value(std::string())) names.push_back(name);
    }
    bool kept = false;
    for (const auto& [id, values] :
         readRowsWith(database_, *naming.table, std::span(&naming.column, 1), naming.column, names)) {
        const Value& value = values.front();
        const auto row = std::ranges::find_if(
            rows, [&](const NetRow& one) { return one.mark == kRemove && compareValues(nameOf(one), value) == 0; });
        if (row == rows.end() || !hasComeToName(naming, id, value)) continue;
        KeptRow stays = keptRow(table, *row, Stays::Named);
        stays.by = placeOf(*naming.table, id);
        if (planning_) --(row->mark == kRemove ? counts_.removed : counts_.changedBack);
        keep(*row, std::move(stays));
        net_.put(*row);
        kept = true;
    }
    return kept;
}

/// Whether a row names another one that goes: not when it goes too, and not when it did so before the run had added it.
bool UndoPlan::hasComeToName(const Naming& naming, std::int64_t id, const Value& value) {
    const int place = net_.place(naming.table->name);
    const std::optional<NetRow> row = place >= 0 ? net_.find(place, id) : std::nullopt;
    const auto last = lastIds_.find(naming.table->name);
    const bool isNew = last == lastIds_.end() || id > last->second;
    if (!row) return isNew;
    if (row->mark == kRemove) return false;
    if (row->mark == kRestore || row->mark == kRestoreKey) {
        const CellChange* cell = cellOf(*row, naming.column);
        if (cell != nullptr) return compareValues(cell->before, value) == 0;
    }
    return isNew || row->kind != ChangeKind::Changed || row->rebuilt;
}

// Unique numbers.

bool UndoPlan::keepWithoutKey(int place) {
    const TableDef& table = database_.table(net_.tables()[static_cast<std::size_t>(place)]);
    bool kept = false;
    for (const IndexDef& index : keysOf(table)) {
        for (const UndoStep step : {kRestoreKey, kInsert}) {
            std::optional<std::int64_t> behind;
            for (;;) {
                std::vector<NetRow> rows = net_.next(place, behind, step, kRowsAtOnce);
                if (rows.empty()) break;
                behind = rows.back().id;
                kept = keepWithoutKey(table, index, rows) || kept;
            }
        }
    }
    return kept;
}

bool UndoPlan::keepWithoutKey(const TableDef& table, const IndexDef& index, std::vector<NetRow>& rows) {
    const std::vector<int> columns = ordinalsOf(table, index);
    const PresentRows present = readRows(database_, table, columns, idsOf(rows));
    const auto nowOf = [&](const NetRow& row) {
        const auto now = present.find(row.id);
        return now == present.end() ? nullptr : &now->second;
    };
    std::vector<Value> firsts;
    for (const NetRow& row : rows) {
        const std::vector<Value> key = keyBack(row, columns, nowOf(row));
        if (!isNull(key.front())) firsts.push_back(key.front());
    }
    const PresentRows holders = readRowsWith(database_, table, columns, columns.front(), firsts);
    bool kept = false;
    for (NetRow& row : rows) {
        const auto writes = [&](int column) { return cellOf(row, column) != nullptr; };
        if (row.mark == kRestoreKey && std::ranges::none_of(columns, writes)) continue;
        const std::vector<Value> key = keyBack(row, columns, nowOf(row));
        if (std::ranges::any_of(key, isNull)) continue;
        const auto inTheWay = [&](const auto& holder) {
            if (holder.first == row.id || !sameKey(holder.second, key)) return false;
            const std::optional<NetRow> other = net_.find(row.table, holder.first);
            if (!other || other->mark == kSettled || other->mark == kInsert) return true;
            return other->mark != kRemove && sameKey(keyBack(*other, columns, &holder.second), key);
        };
        const auto holder = std::ranges::find_if(holders, inTheWay);
        if (holder == holders.end()) continue;
        kept = true;
        KeptRow stays = keptRow(table, row, Stays::KeyTaken);
        stays.by = placeOf(table, holder->first);
        const bool comesBack = row.mark == kInsert;
        for (const int column : columns) {
            const CellChange* cell = cellOf(row, column);
            if (cell == nullptr) continue;
            stays.cells.push_back({column, cell->before, cell->after, comesBack ? Value() : cell->after});
        }
        if (!comesBack)
            std::erase_if(row.cells,
                          [&](const CellChange& cell) { return std::ranges::count(columns, cell.column) > 0; });
        kept_.add(stays);
        row.mark = comesBack || row.cells.empty() ? kSettled : writesKey(table, row) ? kRestoreKey : kRestore;
        if (row.mark == kSettled) --(comesBack ? counts_.broughtBack : counts_.changedBack);
        net_.put(row);
    }
    return kept;
}

}  // namespace kolmera
