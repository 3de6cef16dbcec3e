#include "platform/engine/odbc/servertable.h"

#include <algorithm>
#include <utility>

#include "platform/engine/fieldvalue.h"
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

ServerTable::ServerTable(ServerSession& session, ServerTableInfo info)
    : session_(session),
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

// Reading.

ServerTable::Rows ServerTable::readRows(const ServerStatement& where, std::string_view order, int limit) {
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
    }
    return found;
}

ServerTable::Rows ServerTable::readRows(std::span<const std::int64_t> ids) {
    ServerStatement where{quotedKey() + " IN (?", {ids.front()}};
    for (std::size_t i = 1; i < kIdsAtOnce; ++i) {
        where.text += ", ?";
        where.parameters.emplace_back(ids[std::min(i, ids.size() - 1)]);
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
    std::vector<std::vector<Value>> rows = readAll(all_, byId(id), {});
    return rows.empty() ? std::vector<Value>() : std::move(rows.front());
}

std::vector<std::vector<Value>> ServerTable::readAll(std::span<const int> columns, const ServerStatement& where,
                                                     std::string_view order, int limit) {
    return session_.read(select(columns, where, order, limit), types(columns)).rows;
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

std::int64_t ServerTable::insert(const ColumnSet& columns, const std::vector<Value>& values) {
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
    std::vector<std::string> names;
    ServerStatement statement;
    columns.forEach([&](int column) {
        names.push_back(quotedColumn(column));
        statement.parameters.push_back(values[static_cast<std::size_t>(column)]);
    });
    statement.text = updateText(quotedName_, names, quotedKey());
    statement.parameters.emplace_back(id);
    return session_.writeRow(statement, rowStatement(id), hearing);
}

void ServerTable::remove(std::int64_t id) {
    ServerSession::Hearing hearing;
    if (ChangeListener* const listener = session_.listener())
        hearing = std::make_shared<HeardRemoval>(*this, listener->place(), byId(id));
    session_.write({deleteText(quotedName_, quotedKey()), {id}}, {}, hearing);
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
