#include "platform/engine/odbc/serverhearing.h"

#include <algorithm>
#include <iterator>

#include "platform/engine/fieldvalue.h"
#include "platform/engine/odbc/servertable.h"

namespace kolmera {

namespace {

constexpr int kPortion = 500;
constexpr std::size_t kIdsAtOnce = 64;

std::size_t at(int column) { return static_cast<std::size_t>(column); }

}  // namespace

ServerHearing::Error ServerHearing::before(OdbcConnection& /*connection*/, ChangeListener& /*listener*/,
                                           bool /*again*/) {
    return std::nullopt;
}

ServerHearing::Error ServerHearing::after(OdbcConnection& /*connection*/, const StatementResult& /*result*/) {
    return std::nullopt;
}

ServerHearing::Error ServerHearing::readRows(OdbcConnection& connection, const ServerStatement& where, int limit,
                                             Rows& rows) const {
    const ServerStatement select = table_.select(table_.all(), where, table_.quotedKey(), limit);
    StatementResult result;
    Error error = connection.run(select.text, select.parameters, table_.types(table_.all()), result);
    rows = std::move(result.rows);
    return error;
}

ServerHearing::Error ServerHearing::readAgain(OdbcConnection& connection, const Rows& rows, Rows& again) const {
    again.clear();
    for (std::size_t first = 0; first < rows.size(); first += kIdsAtOnce) {
        ServerStatement where{table_.quotedKey() + " IN (?", {idOf(rows[first])}};
        for (std::size_t i = 1; i < kIdsAtOnce; ++i) {
            where.text += ", ?";
            where.parameters.emplace_back(idOf(rows[std::min(first + i, rows.size() - 1)]));
        }
        where.text += ")";
        Rows portion;
        if (Error error = readRows(connection, where, 0, portion)) return error;
        std::ranges::move(portion, std::back_inserter(again));
    }
    return std::nullopt;
}

std::int64_t ServerHearing::idOf(const std::vector<Value>& row) const {
    const auto* id = std::get_if<std::int64_t>(&row[at(table_.key())]);
    return id != nullptr ? *id : 0;
}

void ServerHearing::tellWhole(ChangeListener& listener, const std::vector<Value>& row, bool added) const {
    std::vector<ChangedCell> cells;
    for (int column = 0; column < table_.columns(); ++column) {
        const Value& value = row[at(column)];
        if (isNull(value) || table_.field(column).counter) continue;
        cells.push_back({.column = column, .before = added ? nullptr : &value, .after = added ? &value : nullptr});
    }
    const std::vector<const Value*> known(row.size());
    const ChangedRow told{
        .table = table_.definition(), .id = idOf(row), .cells = cells, .known = known, .place = place_};
    if (added) {
        listener.added(told);
    } else {
        listener.removed(told);
    }
}

HeardUpdate::HeardUpdate(const ServerTable& table, std::int64_t place, std::int64_t id, const ColumnSet& columns,
                         const ColumnSet& loaded, const std::vector<Value>& values, const std::vector<Value>& after)
    : ServerHearing(table, place), id_(id) {
    values_.set(loaded, values);
    after_.set(columns, after);
}

ServerHearing::Error HeardUpdate::before(OdbcConnection& connection, ChangeListener& /*listener*/, bool again) {
    if (!again) return std::nullopt;
    Rows rows;
    Error error = readRows(connection, {table().quotedKey() + " = ?", {id_}}, 0, rows);
    there_ = !rows.empty();
    if (!there_) return error;
    for (int column = 0; column < table().columns(); ++column) {
        values_.set(column, std::move(rows.front()[at(column)]));
    }
    return error;
}

void HeardUpdate::tell(ChangeListener& listener) {
    std::vector<ChangedCell> cells;
    after_.columns().forEach([&](int column) {
        const Value* const before = values_.find(column);
        const Value* const after = after_.find(column);
        if (*before != *after) cells.push_back({.column = column, .before = before, .after = after});
    });
    if (!there_ || cells.empty()) return;
    std::vector<const Value*> known(at(table().columns()));
    values_.columns().forEach([&](int column) {
        if (after_.find(column) == nullptr) known[at(column)] = values_.find(column);
    });
    listener.changed({.table = table().definition(), .id = id_, .cells = cells, .known = known, .place = place()});
}

ServerHearing::Error HeardRemoval::before(OdbcConnection& connection, ChangeListener& listener, bool /*again*/) {
    listener.statementBegins();
    Rows rows;
    for (ServerStatement where = where_;; where = both(where_, {table().quotedKey() + " > ?", {idOf(rows.back())}})) {
        if (Error error = readRows(connection, where, kPortion, rows)) return error;
        for (const std::vector<Value>& row : rows) tellWhole(listener, row, false);
        if (rows.size() < kPortion) return std::nullopt;
    }
}

ServerHearing::Error HeardChanges::before(OdbcConnection& connection, ChangeListener& /*listener*/, bool /*again*/) {
    return readRows(connection, where_, 0, before_);
}

ServerHearing::Error HeardChanges::after(OdbcConnection& connection, const StatementResult& /*result*/) {
    return readAgain(connection, before_, after_);
}

void HeardChanges::tell(ChangeListener& listener) {
    for (const std::vector<Value>& old : before_) {
        // Both were read in the order of their IDs.
        const auto now = std::ranges::lower_bound(after_, idOf(old), {},
                                                  [this](const std::vector<Value>& row) { return idOf(row); });
        if (now == after_.end() || idOf(*now) != idOf(old)) continue;
        std::vector<ChangedCell> cells;
        std::vector<const Value*> known(old.size());
        for (int column = 0; column < table().columns(); ++column) {
            if (old[at(column)] == (*now)[at(column)]) {
                known[at(column)] = &old[at(column)];
            } else {
                cells.push_back({.column = column, .before = &old[at(column)], .after = &(*now)[at(column)]});
            }
        }
        if (cells.empty()) continue;
        listener.changed(
            {.table = table().definition(), .id = idOf(old), .cells = cells, .known = known, .place = place()});
    }
}

HeardAddition::HeardAddition(const ServerTable& table, std::int64_t place, std::span<const int> columns, Rows rows)
    : ServerHearing(table, place) {
    ColumnSet given;
    for (const int column : columns) given.add(column);
    std::vector<Value> fresh(at(table.columns()));
    for (int column = 0; column < table.columns(); ++column) {
        if (given.has(column)) continue;
        if (!table.info().missingDefaults.has(column)) fresh[at(column)] = table.defaults()[at(column)];
        if (table.info().otherDefaults.has(column)) read_ = true;
    }
    for (std::vector<Value>& row : rows) {
        rows_.push_back(fresh);
        for (std::size_t i = 0; i < columns.size(); ++i) rows_.back()[at(columns[i])] = std::move(row[i]);
    }
}

ServerHearing::Error HeardAddition::after(OdbcConnection& connection, const StatementResult& result) {
    if (idOf(rows_.front()) == 0 && !result.rows.empty())
        rows_.front()[at(table().key())] = result.rows.front().front();
    if (!read_) return std::nullopt;
    Rows stored;
    Error error = readAgain(connection, rows_, stored);
    rows_ = std::move(stored);
    return error;
}

void HeardAddition::tell(ChangeListener& listener) {
    for (const std::vector<Value>& row : rows_) tellWhole(listener, row, true);
}

ServerHearing::Error HeardInsert::after(OdbcConnection& /*connection*/, const StatementResult& result) {
    rows_ = result.rows;
    return std::nullopt;
}

void HeardInsert::tell(ChangeListener& listener) {
    for (const std::vector<Value>& row : rows_) tellWhole(listener, row, true);
}

}  // namespace kolmera
