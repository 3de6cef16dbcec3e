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
    const auto found = std::ranges::lower_bound(row.cells, column, {}, &CellChange::column);
    return found == row.cells.end() || found->column != column ? nullptr : &*found;
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

/// Whether it takes a whole row to know what became of it.
bool needsAll(const NetRow& row) { return row.kind != ChangeKind::Changed || row.rebuilt; }

std::vector<int> columnsOf(std::span<const NetRow> rows) {
    std::set<int> columns;
    for (const NetRow& row : rows) {
        for (const CellChange& cell : row.cells) columns.insert(cell.column);
    }
    return {columns.begin(), columns.end()};
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

struct InOrder {
    bool operator()(const Value& a, const Value& b) const { return compareValues(a, b) < 0; }
};

bool restoresKey(const NetRow& row) { return row.mark == kRestoreKey || row.mark == kExchange; }

bool namesOthers(const TableDef& table, int column) {
    return std::ranges::any_of(kReferences, [&](const Reference& reference) {
        return equalNoCase(reference.table, table.name) && table.ordinal(reference.column) == column;
    });
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
        std::vector<NetRow> rows = net_.next(place, behind, kUnseen, kRowsAtOnce, {});
        if (rows.empty()) return true;
        behind = rows.back().id;
        const bool whole = std::ranges::any_of(rows, needsAll);
        if (!whole) std::ranges::for_each(rows, [&](NetRow& row) { net_.fill(row); });
        const std::vector<int> columns = whole ? allColumns(table) : columnsOf(rows);
        const PresentRows present = readRows(database_, table, columns, idsOf(rows));
        for (NetRow& row : rows) {
            const auto found = present.find(row.id);
            const std::vector<Value>* now = found == present.end() ? nullptr : &found->second;
            // A row that was removed and is not there needs no look at its cells.
            if (whole && (now != nullptr || row.kind == ChangeKind::Changed)) net_.fill(row);
            const std::size_t cells = row.cells.size();
            lookAt(table, row, now, columns);
            if (row.cells.size() == cells) {
                net_.putMark(row);
            } else {
                net_.put(row);
            }
        }
        looked_ += static_cast<std::int64_t>(rows.size());
        if (!(*goOn_)(looked_, net_.count())) return false;
    }
}

std::vector<KeptCell> UndoPlan::differences(const TableDef& table, const NetRow& row, Side side,
                                            const std::vector<Value>& now) {
    std::vector<KeptCell> cells;
    const Value none = Null{};
    auto next = row.cells.begin();
    for (int column = 0; column < static_cast<int>(table.fields.size()); ++column) {
        const CellChange* cell = next != row.cells.end() && next->column == column ? &*next++ : nullptr;
        if (fieldOf(table, column).counter) continue;
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

/// The unique indexes whose columns are values of the user's.
const std::vector<UndoPlan::Key>& UndoPlan::keysOf(const TableDef& table) {
    const auto known = keys_.find(table.name);
    if (known != keys_.end()) return known->second;
    std::vector<Key> keys;
    for (const IndexDef& index : table.indexes) {
        Key key = ordinalsOf(table, index);
        const auto isId = [&](int column) { return fieldOf(table, column).counter; };
        if (index.unique && std::ranges::none_of(key, isId)) keys.push_back(std::move(key));
    }
    return keys_.emplace(table.name, std::move(keys)).first->second;
}

bool UndoPlan::writesKey(const TableDef& table, const NetRow& row) {
    return std::ranges::any_of(keysOf(table), [&](const Key& key) {
        return std::ranges::any_of(key, [&](int column) { return cellOf(row, column) != nullptr; });
    });
}

void UndoPlan::keep(NetRow& row, const KeptRow& kept) {
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
        return keep(row, kept);
    }
    if (now == nullptr) {
        row.mark = added ? kSettled : kInsert;
        ++(added ? counts_.asBefore : counts_.broughtBack);
        return;
    }
    // All columns were read. A row that was removed is there again: as before, or another one.
    KeptRow kept = keptRow(table, row, Stays::Changed);
    kept.cells = differences(table, row, added ? Side::After : Side::Before, *now);
    if (!kept.cells.empty()) return keep(row, kept);
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
    if (!kept.cells.empty()) return keep(row, kept);
    std::erase_if(row.cells, [](const CellChange& cell) { return cell.before == cell.after; });
    row.mark = writesKey(table, row) ? kRestoreKey : kRestore;
    ++counts_.changedBack;
}

void UndoPlan::lookAtCells(const TableDef& table, NetRow& row, const std::vector<Value>& now,
                           std::span<const int> columns) {
    KeptRow kept = keptRow(table, row, Stays::Changed);
    std::erase_if(row.cells, [&](const CellChange& cell) {
        const auto at = static_cast<std::size_t>(std::ranges::lower_bound(columns, cell.column) - columns.begin());
        if (cell.before == cell.after || now[at] == cell.before) return true;
        if (now[at] == cell.after) return false;
        kept.cells.push_back({cell.column, cell.before, cell.after, now[at]});
        if (namesOthers(table, cell.column)) namesThatStay_.insert({row.table, row.id, cell.column});
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
    for (const UndoStep step : {kRemove, kRestoreKey, kExchange}) {
        if (net_.next(place, {}, step, 1, {}).empty()) continue;
        const std::vector<Naming>& namings = namingOf(table);
        std::vector<int> columns;
        columns.reserve(namings.size());
        for (const Naming& naming : namings) columns.push_back(naming.byColumn);
        std::optional<std::int64_t> behind;
        while (!namings.empty()) {
            std::vector<NetRow> rows = net_.next(place, behind, step, kRowsAtOnce, columns);
            if (rows.empty()) break;
            behind = rows.back().id;
            for (const Naming& naming : namings) kept = keepNamed(table, naming, rows) || kept;
        }
    }
    return kept;
}

/// The number or ID by which a row can be named now and by which nothing can be named once it is taken back; Null when
/// there is none.
Value UndoPlan::nameLost(const TableDef& table, const Naming& naming, const NetRow& row) {
    // Whoever names the ID of a row that gets its old values back may have named it before the run.
    if (naming.byColumn == idColumn(table)) return row.mark == kRemove ? Value(row.id) : Value();
    const CellChange* cell = row.mark == kRemove || restoresKey(row) ? cellOf(row, naming.byColumn) : nullptr;
    const bool named = cell != nullptr && !isNull(cell->after) && cell->after != Value(std::string());
    if (!named || compareValues(cell->before, cell->after) == 0) return {};
    return returning_.has(row, naming.byColumn, cell->after) ? Value() : cell->after;
}

bool UndoPlan::keepNamed(const TableDef& table, const Naming& naming, std::vector<NetRow>& rows) {
    std::vector<Value> names;
    std::map<Value, NetRow*, InOrder> named;
    for (NetRow& row : rows) {
        Value name = nameLost(table, naming, row);
        if (isNull(name)) continue;
        names.push_back(name);
        named.emplace(std::move(name), &row);
    }
    bool kept = false;
    for (const auto& [id, values] :
         readRowsWith(database_, *naming.table, std::span(&naming.column, 1), naming.column, names)) {
        const Value& value = values.front();
        const auto found = named.find(value);
        if (found == named.end() || !hasComeToName(naming, id, value)) continue;
        keepNamed(table, naming, *found->second, id);
        named.erase(found);
        kept = true;
    }
    return kept;
}

/// A row that the run had renamed keeps its number alone, any other stays whole.
void UndoPlan::keepNamed(const TableDef& table, const Naming& naming, NetRow& row, std::int64_t by) {
    const bool removed = row.mark == kRemove;
    row = *net_.find(row.table, row.id);
    KeptRow stays = keptRow(table, row, Stays::Named);
    stays.by = placeOf(*naming.table, by);
    if (removed) {
        row.mark = kSettled;
        if (planning_) --counts_.removed;
    } else {
        const CellChange& cell = *cellOf(row, naming.byColumn);
        stays.cells.push_back({cell.column, cell.before, cell.after, cell.after});
        withoutCells(table, {naming.byColumn}, row);
    }
    kept_.add(stays);
    net_.put(row);
}

/// Whether a row names another one that goes: not when it goes too or gets another number back, and not when it did so
/// before the run already.
bool UndoPlan::hasComeToName(const Naming& naming, std::int64_t id, const Value& value) {
    const int place = net_.place(naming.table->name);
    const std::optional<NetRow> row = place >= 0 ? net_.find(place, id, std::span(&naming.column, 1)) : std::nullopt;
    if (!row) return isNew(*naming.table, id);
    if (row->mark == kRemove) return false;
    if (namesThatStay_.contains({place, id, naming.column})) return true;
    const CellChange* cell = cellOf(*row, naming.column);
    if (row->mark == kRestore || restoresKey(*row))
        return false;  // with the cell it gets another, without it keeps this
    if (cell != nullptr) return compareValues(cell->before, value) != 0;
    return row->kind != ChangeKind::Changed || row->rebuilt;
}

/// Whether a row that the run has not written came after it. Where the run has removed the last row of all, a file
/// gives the IDs from there on anew.
bool UndoPlan::isNew(const TableDef& table, std::int64_t id) {
    const auto last = lastIds_.find(table.name);
    if (last == lastIds_.end() || id > last->second) return true;
    const int place = net_.place(table.name);
    const std::optional<NetRow> row = place >= 0 ? net_.find(place, last->second, {}) : std::nullopt;
    return row && (row->kind == ChangeKind::Removed || row->rebuilt);
}

// Unique numbers.

bool UndoPlan::keepWithoutKey(int place) {
    const TableDef& table = database_.table(net_.tables()[static_cast<std::size_t>(place)]);
    bool kept = false;
    for (const Key& key : keysOf(table)) {
        for (const UndoStep step : {kExchange, kRestoreKey, kInsert}) {
            std::optional<std::int64_t> behind;
            for (;;) {
                std::vector<NetRow> rows = net_.next(place, behind, step, kRowsAtOnce, key);
                if (rows.empty()) break;
                behind = rows.back().id;
                kept = keepWithoutKey(table, key, step, rows) || kept;
            }
        }
    }
    return kept;
}

bool UndoPlan::keepWithoutKey(const TableDef& table, const Key& key, UndoStep step, std::vector<NetRow>& rows) {
    if (step != kInsert) std::erase_if(rows, [](const NetRow& row) { return row.cells.empty(); });
    const auto isPart = [&](const NetRow& row) { return row.cells.size() < key.size(); };
    const bool needsOthers = step != kInsert && std::ranges::any_of(rows, isPart);
    const PresentRows present = needsOthers ? readRows(database_, table, key, idsOf(rows)) : PresentRows();
    std::vector<std::vector<Value>> backs;
    std::vector<Value> firsts;
    for (const NetRow& row : rows) {
        const auto now = present.find(row.id);
        backs.push_back(keyBack(row, key, now == present.end() ? nullptr : &now->second));
        if (std::ranges::none_of(backs.back(), isNull)) firsts.push_back(backs.back().front());
    }
    const PresentRows holders = readRowsWith(database_, table, key, key.front(), firsts);
    std::multimap<Value, const PresentRows::value_type*, InOrder> byFirst;
    for (const auto& holder : holders) byFirst.emplace(holder.second.front(), &holder);
    bool kept = false;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        NetRow& row = rows[i];
        if (std::ranges::any_of(backs[i], isNull)) continue;
        const auto [first, last] = byFirst.equal_range(backs[i].front());
        for (auto at = first; at != last; ++at) {
            const auto& [id, holds] = *at->second;
            const Holder holder = holderOf(key, row, backs[i], id, holds);
            if (holder == Holder::Stays) {
                keepWithoutKey(table, key, *net_.find(row.table, row.id), id);
                kept = true;
                break;
            }
            // It would be refused as long as that row has not moved on.
            if (holder == Holder::MovesOn && row.mark == kRestoreKey) {
                row.mark = kExchange;
                net_.putMark(row);
            }
        }
    }
    return kept;
}

/// Who has a number that a row gets back: whether it is gone by then, or gets another one back, or stays.
UndoPlan::Holder UndoPlan::holderOf(const Key& key, const NetRow& row, const std::vector<Value>& back, std::int64_t id,
                                    const std::vector<Value>& holds) {
    if (id == row.id || !sameKey(holds, back)) return Holder::Leaves;
    const std::optional<NetRow> other = net_.find(row.table, id, key);
    if (!other || other->mark == kSettled || other->mark == kInsert) return Holder::Stays;
    if (other->mark == kRemove) return Holder::Leaves;
    return sameKey(keyBack(*other, key, &holds), back) ? Holder::Stays : Holder::MovesOn;
}

void UndoPlan::keepWithoutKey(const TableDef& table, const Key& key, NetRow row, std::int64_t holder) {
    KeptRow stays = keptRow(table, row, Stays::KeyTaken);
    stays.by = placeOf(table, holder);
    const bool comesBack = row.mark == kInsert;
    for (const int column : key) {
        const CellChange* cell = cellOf(row, column);
        if (cell == nullptr) continue;
        stays.cells.push_back({column, cell->before, cell->after, comesBack ? Value() : cell->after});
    }
    kept_.add(stays);
    if (comesBack) {
        row.mark = kSettled;
        --counts_.broughtBack;
    } else {
        withoutCells(table, key, row);
    }
    net_.put(row);
}

/// A changed row keeps what it has in these columns, or whole.
void UndoPlan::withoutCells(const TableDef& table, const Key& columns, NetRow& row) {
    if (row.rebuilt) row.cells.clear();  // it would be half of one row and half of another
    std::erase_if(row.cells, [&](const CellChange& cell) { return std::ranges::count(columns, cell.column) > 0; });
    for (const int column : columns) {
        if (namesOthers(table, column)) namesThatStay_.insert({row.table, row.id, column});
    }
    if (row.cells.empty()) {
        row.mark = kSettled;
        if (planning_) --counts_.changedBack;
    } else if (planning_) {  // later its step is what it is in
        row.mark = writesKey(table, row) ? kRestoreKey : kRestore;
    }
}

}  // namespace kolmera
