#include "platform/engine/odbc/servertable.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "platform/engine/fieldvalue.h"
#include "platform/engine/odbc/serverwindow.h"
#include "platform/error.h"

namespace kolmera {

namespace {

constexpr std::size_t kMostRowsAtOnce = 400;
/// IDs of one statement; a fixed number, so that it is one statement however many rows are asked for.
constexpr std::size_t kIdsAtOnce = 64;
constexpr int kIdsInPortion = 10000;

}  // namespace

ServerStatement both(const ServerStatement& a, const ServerStatement& b) {
    if (a.text.empty()) return b;
    if (b.text.empty()) return a;
    ServerStatement joint{"(" + a.text + ") AND " + b.text, a.parameters};
    joint.parameters.insert(joint.parameters.end(), b.parameters.begin(), b.parameters.end());
    return joint;
}

ServerTable::ServerTable(ServerSession& session, ServerWindow& window, ServerTableInfo info)
    : session_(session),
      window_(window),
      info_(std::move(info)),
      quotedName_(kolmera::quotedName(session.dialect(), info_.definition.name)) {
    if (info_.definition.fields.size() > ColumnSet::kCapacity) {
        throw PlatformError(errors::kInternal, "table " + info_.definition.name + " has too many columns");
    }
    for (const FieldDef& field : info_.definition.fields) {
        if (field.counter) key_ = columns();
        all_.push_back(columns());
        quotedColumns_.push_back(kolmera::quotedName(session.dialect(), field.name));
        defaults_.push_back(defaultOf(field));
    }
}

std::vector<std::string> ServerTable::quoted(std::span<const int> columns) const {
    std::vector<std::string> names;
    names.reserve(columns.size() + 1);
    for (const int column : columns) names.push_back(quotedColumn(column));
    return names;
}

std::vector<FieldType> ServerTable::types(std::span<const int> columns) const {
    std::vector<FieldType> result;
    result.reserve(columns.size() + 1);
    for (const int column : columns) result.push_back(field(column).type);
    return result;
}

ServerStatement ServerTable::byId(std::int64_t id) const { return {quotedKey() + " = ?", {id}}; }

void ServerTable::learn(int ordinal) {
    if (ordinal == key_ || learnedSet_.has(ordinal)) return;
    learnedSet_.add(ordinal);
    learned_.push_back(ordinal);
}

std::vector<Value> ServerTable::takeValues() {
    if (spare_.empty()) return std::vector<Value>(quotedColumns_.size());
    std::vector<Value> values = std::move(spare_.back());
    spare_.pop_back();
    return values;
}

const ServerColumnType& ServerTable::stored(int ordinal) {
    if (stored_.empty()) {
        stored_.resize(quotedColumns_.size());
        const std::vector<FieldType> texts(3, FieldType::Text);
        const ServerStatement select{fmt::format(fmt::runtime(session_.dialect().columns), definition().name)};
        for (const std::vector<Value>& row : session_.read(select, texts).rows) {
            const int column = definition().ordinal(textOf(row[0]));
            if (column >= 0) {
                stored_[static_cast<std::size_t>(column)] = {std::string(textOf(row[1])), std::string(textOf(row[2]))};
            }
        }
    }
    return stored_[static_cast<std::size_t>(ordinal)];
}

// Reading.

ServerTable::Rows ServerTable::readRow(std::int64_t id) {
    if (auto known = window_.row(*this, id)) return *std::move(known);
    return readFromServer(byId(knownId(id)), {}, 0);
}

ServerTable::Rows ServerTable::readRows(const ServerStatement& where, std::string_view order, int limit) {
    if (auto known = window_.rows(*this, where, order, limit)) return *std::move(known);
    return readFromServer(where, order, limit);
}

ServerTable::Rows ServerTable::readFromServer(const ServerStatement& where, std::string_view order, int limit) {
    std::vector<std::string> names = quoted(learned_);
    names.push_back(quotedKey());
    std::vector<FieldType> kinds = types(learned_);
    kinds.push_back(FieldType::Long);
    const ServerStatement statement{
        selectText(session_.dialect(),
                   {.columns = names, .table = quotedName_, .where = where.text, .order = order, .limit = limit}),
        where.parameters};
    Rows found{.columns = learned_, .ids = {}, .values = session_.read(statement, kinds).rows, .version = version()};
    for (std::vector<Value>& row : found.values) {
        const auto* id = std::get_if<std::int64_t>(&row.back());
        found.ids.push_back(id != nullptr ? *id : 0);
        row.pop_back();
        window_.learnRow(*this, found.ids.back(), found.columns, row);
    }
    return found;
}

ServerTable::Rows ServerTable::readRows(std::span<const std::int64_t> ids) {
    window_.settle(*this);
    ServerStatement where{quotedKey() + " IN (?", {knownId(ids.front())}};
    for (std::size_t i = 1; i < kIdsAtOnce; ++i) {
        where.text += ", ?";
        where.parameters.emplace_back(knownId(ids[std::min(i, ids.size() - 1)]));
    }
    where.text += ")";
    return readRows(where, {}, 0);
}

std::vector<std::int64_t> ServerTable::readIds(const ServerStatement& where, std::string_view order) {
    // In the order of the key they come in portions: the rows of an answer take many times the memory of their IDs.
    const int portion = order == quotedKey() ? kIdsInPortion : 0;
    std::vector<std::int64_t> ids;
    for (;;) {
        const ServerStatement behind = ids.empty() ? where : both(where, {quotedKey() + " > ?", {ids.back()}});
        const std::vector<std::vector<Value>> rows = readAll(std::span(&key_, 1), behind, order, portion);
        for (const std::vector<Value>& row : rows) ids.push_back(std::get<std::int64_t>(row.front()));
        if (portion == 0 || rows.size() < static_cast<std::size_t>(portion)) return ids;
    }
}

std::vector<Value> ServerTable::readWhole(std::int64_t id) {
    if (auto known = window_.whole(*this, id)) return *std::move(known);
    id = knownId(id);  // a row that waited has been written
    std::vector<std::vector<Value>> rows = session_.read(select(all_, byId(id), {}, 0), types(all_)).rows;
    if (rows.empty()) return {};
    window_.learnRow(*this, id, all_, rows.front());
    return std::move(rows.front());
}

std::vector<std::vector<Value>> ServerTable::readAll(std::span<const int> columns, const ServerStatement& where,
                                                     std::string_view order, int limit) {
    if (auto known = readKnown(columns, where, order, limit)) return *std::move(known);
    window_.settle(*this);
    return session_.read(select(columns, where, order, limit), types(columns)).rows;
}

/// As far as a window of records knows the rows, with these columns.
std::optional<std::vector<std::vector<Value>>> ServerTable::readKnown(std::span<const int> columns,
                                                                      const ServerStatement& where,
                                                                      std::string_view order, int limit) {
    if (!window_.open()) return std::nullopt;
    for (const int column : columns) learn(column);
    const auto known = window_.rows(*this, where, order, limit);
    if (!known) return std::nullopt;
    std::vector<std::vector<Value>> rows;
    for (std::size_t i = 0; i < known->ids.size(); ++i) {
        std::vector<Value>& row = rows.emplace_back();
        for (const int column : columns) {
            const auto place = std::ranges::find(known->columns, column);
            if (column != key_ && place == known->columns.end()) return std::nullopt;
            row.push_back(column == key_ ? Value(known->ids[i])
                                         : known->values[i][static_cast<std::size_t>(place - known->columns.begin())]);
        }
    }
    return rows;
}

ServerStatement ServerTable::select(std::span<const int> columns, const ServerStatement& where, std::string_view order,
                                    int limit) const {
    const std::vector<std::string> names = quoted(columns);
    const SelectParts parts{
        .columns = names, .table = quotedName_, .where = where.text, .order = order, .limit = limit};
    return {selectText(session_.dialect(), parts), where.parameters};
}

ServerStatement ServerTable::rowStatement(std::int64_t id) const {
    const std::string& key = quotedKey();
    const ServerStatement where = byId(id);
    return {selectText(session_.dialect(), {.columns = std::span(&key, 1), .table = quotedName_, .where = where.text}),
            where.parameters};
}

// Writing.

std::int64_t ServerTable::knownId(std::int64_t id) { return window_.knownId(*this, id); }

std::int64_t ServerTable::realId(std::int64_t id) { return window_.realId(*this, id); }

std::int64_t ServerTable::insert(const ColumnSet& columns, const std::vector<Value>& values) {
    if (window_.open()) return window_.add(*this, columns, values);
    std::vector<int> written;
    columns.forEach([&](int column) { written.push_back(column); });
    ServerStatement statement{insertText(session_.dialect(), quotedName_, quoted(written), quotedKey())};
    for (const int column : written) statement.parameters.push_back(values[static_cast<std::size_t>(column)]);
    ServerSession::Hearing hearing;
    if (ChangeListener* const listener = session_.listener())
        hearing = std::make_shared<HeardAddition>(*this, listener->place(), written,
                                                  std::vector<std::vector<Value>>{statement.parameters});
    const auto again = [&](std::int64_t id) {
        std::vector<std::string> names = quoted(written);
        names.push_back(quotedKey());
        ServerStatement repeated{insertRowsText(session_.dialect(), quotedName_, names, 1), statement.parameters};
        repeated.parameters.emplace_back(id);
        return repeated;
    };
    return session_.insert(statement, again, hearing);
}

bool ServerTable::update(std::int64_t id, const ColumnSet& columns, const std::vector<Value>& values,
                         const ServerSession::Hearing& hearing) {
    if (window_.open() && window_.change(*this, id, columns, values, hearing)) return true;
    std::vector<std::string> names;
    ServerStatement statement;
    columns.forEach([&](int column) {
        names.push_back(quotedColumn(column));
        statement.parameters.push_back(values[static_cast<std::size_t>(column)]);
    });
    statement.text = updateText(quotedName_, names, quotedKey());
    statement.parameters.emplace_back(id);
    const bool found = session_.writeRow(statement, rowStatement(id), hearing);
    if (found) window_.changedAtOnce(*this, id, columns, values);
    return found;
}

void ServerTable::remove(std::int64_t id) {
    id = realId(id);
    window_.writeAtOnce();
    ServerSession::Hearing hearing;
    if (ChangeListener* const listener = session_.listener())
        hearing = std::make_shared<HeardRemoval>(*this, listener->place(), byId(id));
    session_.write({deleteText(quotedName_, quotedKey()), {id}}, {}, hearing);
    window_.removed(*this, id);
}

ServerStatement ServerTable::rowsStatement(std::span<const int> columns,
                                           std::span<const std::vector<Value>> rows) const {
    ServerStatement statement{insertRowsText(session_.dialect(), quotedName_, quoted(columns), rows.size())};
    statement.parameters.reserve(rows.size() * columns.size());
    for (const std::vector<Value>& row : rows) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            Value& value = statement.parameters.emplace_back(row[i]);
            fitToField(field(columns[i]), value, session_.locale());
        }
    }
    return statement;
}

ServerSession::Hearing ServerTable::hearingOf(std::span<const int> columns, std::span<const Value> values) {
    ChangeListener* const listener = session_.listener();
    if (listener == nullptr) return {};
    std::vector<std::vector<Value>> rows;
    for (; !values.empty(); values = values.subspan(columns.size()))
        rows.emplace_back(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(columns.size()));
    return std::make_shared<HeardAddition>(*this, listener->place(), columns, std::move(rows));
}

void ServerTable::insertRows(std::span<const int> columns, std::span<const std::vector<Value>> rows) {
    window_.writeAtOnce();
    window_.written(*this);
    const std::size_t fitting = session_.dialect().mostParameters / std::max<std::size_t>(columns.size(), 1);
    const std::size_t atOnce = std::clamp<std::size_t>(fitting, 1, kMostRowsAtOnce);
    while (!rows.empty()) {
        const std::size_t count = std::min(atOnce, rows.size());
        const ServerStatement statement = rowsStatement(columns, rows.first(count));
        const ServerSession::Hearing hearing = hearingOf(columns, statement.parameters);
        count == atOnce ? session_.write(statement, {}, hearing) : session_.writeOnce(statement, hearing);
        rows = rows.subspan(count);
    }
    noteWrite();
    const std::string move = hasKey() ? moveSequenceText(session_.dialect(), definition().name, field(key_).name) : "";
    if (!move.empty()) session_.read({move}, {});
}

}  // namespace kolmera
