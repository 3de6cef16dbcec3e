#include "platform/engine/odbc/windowtable.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <ranges>
#include <utility>

#include "platform/engine/odbc/rowstext.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

constexpr std::size_t kMostRowsOfAKey = 8;     // on an average
constexpr std::size_t kMostRowsAtOnce = 2000;  // of one statement

std::size_t at(int column) { return static_cast<std::size_t>(column); }

/// Keys are told apart letter by letter.
std::string bytesOf(std::span<const Value> key) {
    std::string bytes;
    for (const Value& value : key) {
        if (const auto* whole = std::get_if<std::int64_t>(&value)) bytes += std::to_string(*whole);
        bytes += textOf(value);
        bytes += '\0';
    }
    return bytes;
}

bool isTextType(FieldType type) { return type == FieldType::Text || type == FieldType::Memo; }

bool isWholeType(FieldType type) {
    return type == FieldType::Byte || type == FieldType::Integer || type == FieldType::Long;
}

/// Whether a key can be asked for together with others.
bool fits(FieldType type, const Value& key) {
    if (isTextType(type))
        return std::holds_alternative<std::string>(key) && textOf(key).find('\0') == std::string::npos;
    return isWholeType(type) && std::holds_alternative<std::int64_t>(key);
}

std::int64_t wholeOf(const Value& value) {
    const auto* whole = std::get_if<std::int64_t>(&value);
    return whole != nullptr ? *whole : 0;
}

}  // namespace

WindowTable::WindowTable(ServerTable& table) : table_(table) {
    for (const IndexDef& index : table.definition().indexes) {
        if (!index.unique) continue;
        for (const std::string& column : index.columns()) {
            const int ordinal = table.definition().ordinal(column);
            if (ordinal >= 0) unique_.add(ordinal);
        }
    }
}

// Questions.

/// The columns of "A = ? AND B = ?"; none for any other condition.
std::vector<int> WindowTable::columnsOf(std::string_view where) const {
    constexpr std::string_view kEqual = " = ?";
    constexpr std::string_view kAnd = " AND ";
    std::vector<int> columns;
    for (;;) {
        int found = -1;
        for (const int column : table_.all()) {
            const std::string& name = table_.quotedColumn(column);
            if (where.starts_with(name) && where.substr(name.size()).starts_with(kEqual)) found = column;
        }
        if (found < 0 || std::ranges::find(columns, found) != columns.end()) return {};
        columns.push_back(found);
        where.remove_prefix(table_.quotedColumn(found).size() + kEqual.size());
        if (where.empty()) return columns;
        if (!where.starts_with(kAnd)) return {};
        where.remove_prefix(kAnd.size());
    }
}

/// Whether rows that have the same values in these columns come by their IDs: one that is added comes last then.
bool WindowTable::ordersById(std::string_view order, std::span<const int> columns) const {
    const auto begins = [](std::string_view term, std::string_view name) {
        return term.starts_with(name) && (term.size() == name.size() || term[name.size()] == ' ');
    };
    return std::ranges::all_of(split(order, ", "), [&](const std::string& term) {
        return term == table_.quotedKey() ||
               std::ranges::any_of(columns, [&](int column) { return begins(term, table_.quotedColumn(column)); });
    });
}

WindowTable::Question* WindowTable::question(const ServerStatement& where, std::string_view order) {
    std::string name = where.text;
    name.append(1, '\0').append(order);
    const auto known = known_.find(name);
    if (known != known_.end()) return known->second;
    Question* made = nullptr;
    if (std::vector<int> columns = columnsOf(where.text); !columns.empty() && table_.hasKey()) {
        made = &questions_.emplace_back();
        made->where = where.text;
        made->order = order.empty() ? table_.quotedKey() : std::string(order);
        made->columns = std::move(columns);
        made->byKey = ordersById(made->order, made->columns);
    }
    known_.emplace(std::move(name), made);
    return made;
}

/// The place of a key, which is asked for if it has not been.
std::size_t WindowTable::want(Question& question, const std::vector<Value>& key) {
    const auto [place, isNew] = question.places.try_emplace(bytesOf(key), question.keys.size());
    if (isNew) question.keys.push_back(key);
    return place->second;
}

WindowTable::Known WindowTable::rows(const ServerStatement& where, std::string_view order, int limit,
                                     ServerTable::Rows& found) {
    Question* const asked = question(where, order);
    if (asked == nullptr || asked->unsure) return Known::OnlyToTheServer;
    for (std::size_t i = 0; i < where.parameters.size(); ++i) {
        if (!fits(table_.field(asked->columns[i]).type, where.parameters[i])) return Known::OnlyToTheServer;
    }
    const std::size_t place = want(*asked, where.parameters);
    if (place >= asked->asked) {
        found = rowsOf({});
        return Known::NotYet;
    }
    const std::size_t first = asked->same[place];
    if (asked->tooMany[first]) return Known::OnlyToTheServer;
    std::vector<std::int64_t> ids = asked->found[first];
    if (const auto also = asked->alsoFound.find(first); also != asked->alsoFound.end()) {
        ids.insert(ids.end(), also->second.begin(), also->second.end());
    }
    if (limit > 0) ids.resize(std::min(ids.size(), at(limit)));
    found = rowsOf(ids);
    return Known::Yes;
}

bool WindowTable::wants() const {
    return std::ranges::any_of(questions_, [](const Question& q) { return q.asked < q.keys.size(); });
}

void WindowTable::forgetWanted() {
    for (Question& question : questions_) {
        for (; question.keys.size() > question.asked; question.keys.pop_back()) {
            question.places.erase(bytesOf(question.keys.back()));
        }
    }
}

void WindowTable::ask(ServerSession& session) {
    for (Question& question : questions_) {
        if (question.asked < question.keys.size()) ask(session, question);
    }
}

ServerStatement WindowTable::askingFor(const Question& question, std::span<const int> columns) const {
    std::vector<std::string> wanted = table_.quoted(columns);
    wanted.push_back(table_.quotedKey());
    std::vector<std::string> types;
    std::vector<std::string> collations;
    for (const int column : question.columns) {
        const FieldType type = table_.field(column).type;
        const bool asStored = isTextType(type) && dialect().rowsAs == Dialect::RowsAs::Arrays;
        types.push_back(asStored ? table_.stored(column).type : keyType(dialect(), type));
        collations.push_back(isTextType(type) ? table_.stored(column).collation : std::string());
    }
    const std::vector<std::string> names = table_.quoted(question.columns);
    return {keyedSelectText(dialect(), {.table = table_.quotedName(),
                                        .wanted = wanted,
                                        .columns = names,
                                        .types = types,
                                        .collations = collations,
                                        .order = question.order,
                                        .limit = (kMostRowsAtOnce + 1) * kMostRowsOfAKey}),
            rowsParameters(dialect(), question.keys)};
}

/// All keys anew, because the server tells equal ones only among those of one statement.
void WindowTable::ask(ServerSession& session, Question& question) {
    const std::vector<int> columns(table_.learned().begin(), table_.learned().end());
    std::vector<FieldType> types = {FieldType::Long, FieldType::Long};
    for (const FieldType type : table_.types(columns)) types.push_back(type);
    types.push_back(FieldType::Long);
    const ServerStatement statement = askingFor(question, columns);
    const std::vector<std::vector<Value>> answer = session.read(statement, types).rows;

    const std::size_t count = question.keys.size();
    question.same.assign(count, 0);
    question.tooMany.assign(count, answer.size() >= (kMostRowsAtOnce + 1) * kMostRowsOfAKey);
    question.found.assign(count, {});
    for (const std::vector<Value>& row : answer) {
        const auto place = static_cast<std::size_t>(wholeOf(row[0]) - 1);
        const auto first = static_cast<std::size_t>(wholeOf(row[1]) - 1);
        question.same[place] = first;
        if (place != first || isNull(row.back())) continue;
        const std::int64_t id = wholeOf(row.back());
        question.found[place].push_back(id);
        learnRow(id, columns, {row.begin() + 2, row.end() - 1});
    }
    question.asked = count;
}

// Rows.

ServerTable::Rows WindowTable::rowsOf(std::span<const std::int64_t> ids) const {
    ServerTable::Rows rows{.columns = {}, .ids = {}, .values = {}, .version = table_.version()};
    std::vector<View> views;
    for (const std::int64_t id : ids) views.push_back(view(id));
    for (const int column : table_.learned()) {
        if (std::ranges::all_of(views, [&](const View& row) { return value(row, column) != nullptr; })) {
            rows.columns.push_back(column);
        }
    }
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const std::int64_t given = givenId(ids[i]);
        rows.ids.push_back(given != 0 ? given : ids[i]);
        std::vector<Value>& values = rows.values.emplace_back();
        for (const int column : rows.columns) values.push_back(*value(views[i], column));
    }
    return rows;
}

WindowTable::View WindowTable::view(std::int64_t id) const {
    if (const std::int64_t given = givenId(id); given != 0) id = given;
    const auto changed = changed_.find(id);
    const auto added = id < 0 ? given_.find(id) : given_.end();
    const auto row = rows_.find(id);
    return {.changed = changed != changed_.end() ? &changed->second : nullptr,
            .added = added != given_.end() ? &added->second.values : nullptr,
            .row = row != rows_.end() ? &row->second : nullptr};
}

/// nullptr for one that is not known.
const Value* WindowTable::value(const View& view, int column) const {
    const Value* const changed = view.changed != nullptr ? view.changed->find(column) : nullptr;
    if (changed != nullptr) return changed;
    if (view.added == nullptr) return view.row != nullptr ? view.row->find(column) : nullptr;
    const Value* const added = view.added->find(column);
    if (added != nullptr || table_.info().otherDefaults.has(column)) return added;
    return &table_.defaults()[at(column)];
}

bool WindowTable::row(std::int64_t id, ServerTable::Rows& found) const {
    if (!rows_.contains(id) && !given_.contains(id)) return false;
    found = rowsOf(std::span(&id, 1));
    return true;
}

std::optional<std::vector<Value>> WindowTable::whole(std::int64_t id) const {
    const View row = view(id);
    std::vector<Value> values;
    for (const int column : table_.all()) {
        const Value* const known = column == table_.key() ? nullptr : value(row, column);
        if (known == nullptr && column != table_.key()) return std::nullopt;
        values.push_back(known != nullptr ? *known : Value(id));
    }
    return values;
}

void WindowTable::learnRow(std::int64_t id, std::span<const int> columns, const std::vector<Value>& values) {
    SparseRow& row = rows_[id];
    for (std::size_t i = 0; i < columns.size(); ++i) row.set(columns[i], values[i]);
}

void WindowTable::clear() {
    forgetWritten();
    rows_.clear();
    for (Question& question : questions_) {
        question.places.clear();
        question.keys.clear();
        question.asked = 0;
    }
}

void WindowTable::forgetWritten() {
    added_.clear();
    changed_.clear();
    given_.clear();
    for (Question& question : questions_) {
        question.alsoFound.clear();
        question.unsure = false;
    }
}

void WindowTable::forgetAnswers() {
    rows_.clear();
    for (Question& question : questions_) question.asked = 0;
}

// Writing.

void WindowTable::add(std::int64_t id, const ColumnSet& columns, const std::vector<Value>& values, bool mayAsk) {
    given_[id].values.set(columns, values);
    added_.push_back(id);
    const View row = view(id);
    for (Question& question : questions_) {
        if (question.keys.empty()) continue;  // whoever asks is told of the row by the server
        std::vector<Value> key;
        bool unknown = false;  // what the server puts there
        bool null = false;     // equal to nothing
        for (const int column : question.columns) {
            const Value* const its = value(row, column);
            unknown = unknown || its == nullptr;
            null = null || (its != nullptr && isNull(*its));
            if (its != nullptr) key.push_back(*its);
        }
        if (null) continue;
        const auto place = unknown ? question.places.end() : question.places.find(bytesOf(key));
        if (place == question.places.end()) {
            // Which of the keys it is equal to, only the server knows.
            const bool asks =
                mayAsk && !unknown && std::ranges::equal(question.columns, key, [&](int column, const Value& its) {
                    return fits(table_.field(column).type, its);
                });
            if (asks) {
                want(question, key);
            } else {
                question.unsure = true;
            }
        } else if (place->second < question.asked) {
            const std::size_t first = question.same[place->second];
            std::vector<std::int64_t>& also = question.alsoFound[first];
            if (!question.byKey && !(question.found[first].empty() && also.empty())) question.unsure = true;
            also.push_back(id);
        }
    }
}

void WindowTable::change(std::int64_t id, const ColumnSet& columns, const std::vector<Value>& values) {
    const auto waiting = given_.find(id);
    SparseRow& written = waiting != given_.end() ? waiting->second.values : changed_[id];
    written.set(columns, values);
    for (Question& question : questions_) {
        const bool asked = !question.keys.empty();
        if (asked && std::ranges::any_of(question.columns, [&](int column) { return columns.has(column); })) {
            question.unsure = true;
        }
    }
}

void WindowTable::changed(std::int64_t id, const ColumnSet& columns, const std::vector<Value>& values) {
    change(id, columns, values);
    changed_.erase(id);
    rows_[id].set(columns, values);
}

void WindowTable::remove(std::int64_t id) {
    rows_.erase(id);
    for (Question& question : questions_) {
        for (auto& ids : question.found) std::erase(ids, id);
        for (auto& [place, ids] : question.alsoFound) {
            std::erase_if(ids, [&](std::int64_t added) { return givenId(added) == id; });
        }
    }
}

void WindowTable::written() {
    rows_.clear();
    for (Question& question : questions_) question.unsure = true;
}

ServerSession::Hearing WindowTable::added(std::int64_t id, std::int64_t place) const {
    const SparseRow& row = given_.at(id).values;
    std::vector<int> columns;
    std::vector<Value> values;
    row.columns().forEach([&](int column) {
        columns.push_back(column);
        values.push_back(*row.find(column));
    });
    return std::make_shared<HeardAddition>(table_, place, columns, std::vector<std::vector<Value>>{values});
}

std::int64_t WindowTable::givenId(std::int64_t id) const {
    if (id >= 0) return 0;
    const auto added = given_.find(id);
    return added != given_.end() ? added->second.given : 0;
}

/// All rows in one statement, which leaves each the values of those columns that only others are given; where that are
/// too many columns, a statement for each set of them.
bool WindowTable::write(ServerSession& session) {
    bool allThere = true;
    ColumnSet all;
    for (const auto& [id, written] : changed_) all |= written.columns();
    std::size_t count = 0;
    all.forEach([&](int) { ++count; });
    std::vector<std::pair<ColumnSet, std::vector<std::int64_t>>> alike;
    for (const auto& [id, written] : changed_) {
        const ColumnSet& columns = count > kMostMarked ? written.columns() : all;
        auto group = std::ranges::find(alike, columns, &decltype(alike)::value_type::first);
        if (group == alike.end()) group = alike.insert(alike.end(), {columns, {}});
        group->second.push_back(id);
    }
    for (const auto& [columns, ids] : alike) {
        for (std::span<const std::int64_t> rest = ids; !rest.empty();) {
            const std::size_t portion = std::min(rest.size(), kMostRowsAtOnce);
            writeChanged(session, columns, rest.first(portion), allThere);
            rest = rest.subspan(portion);
        }
    }
    writeAdded(session);
    return allThere;
}

void WindowTable::writeChanged(ServerSession& session, const ColumnSet& columns, std::span<const std::int64_t> ids,
                               bool& allThere) {
    std::vector<int> list;
    std::vector<WrittenColumn> written;
    columns.forEach([&](int column) {
        const FieldType type = table_.field(column).type;
        const ServerColumnType& stored = table_.stored(column);
        list.push_back(column);
        written.push_back({.name = table_.quotedColumn(column),
                           .type = writtenType(dialect(), type, stored),
                           .collation = isTextType(type) ? stored.collation : std::string(),
                           .decimal = type == FieldType::Currency});
    });
    const bool marked = std::ranges::any_of(ids, [&](std::int64_t id) { return changed_.at(id).columns() != columns; });
    std::vector<std::vector<Value>> rows;
    for (const std::int64_t id : ids) {
        std::vector<Value>& row = rows.emplace_back();
        row.emplace_back(id);
        if (marked) row.emplace_back(std::int64_t{0});
        const SparseRow& changed = changed_.at(id);
        SparseRow& known = rows_[id];
        std::int64_t marks = 0;
        for (std::size_t i = 0; i < list.size(); ++i) {
            const Value* const value = changed.find(list[i]);
            row.push_back(value != nullptr ? *value : Value(Null{}));
            if (value == nullptr) continue;
            if (marked) marks |= std::int64_t{1} << i;
            known.set(list[i], *value);
        }
        if (marked) row[1] = marks;
        changed_.erase(id);
    }
    const ServerStatement statement{updateRowsText(dialect(), table_.quotedName(), table_.quotedKey(), written, marked),
                                    rowsParameters(dialect(), rows)};
    const std::int64_t touched = session.write(statement).touched;
    // Some servers count a row that has those values already as not touched.
    if (touched < static_cast<std::int64_t>(ids.size()) && !areThere(session, ids)) allThere = false;
}

bool WindowTable::areThere(ServerSession& session, std::span<const std::int64_t> ids) const {
    std::vector<std::vector<Value>> rows;
    for (const std::int64_t id : ids) rows.push_back({id});
    const std::string types[] = {keyType(dialect(), FieldType::Long)};
    constexpr FieldType kCount[] = {FieldType::Long};
    const ServerStatement count{fmt::format("SELECT count(*) FROM {} JOIN {} AS t ON t.{} = r.r1",
                                            rowsTable(dialect(), types), table_.quotedName(), table_.quotedKey()),
                                rowsParameters(dialect(), rows)};
    const StatementResult result = session.read(count, kCount);
    return wholeOf(result.rows.front().front()) == static_cast<std::int64_t>(ids.size());
}

/// Rows that come one after the other go together, with the columns that any of them has; the others are given what
/// the server would give them.
void WindowTable::writeAdded(ServerSession& session) {
    std::vector<std::int64_t> ids;
    ColumnSet columns;
    const auto writeThem = [&] {
        if (!ids.empty()) writeAdded(session, ids, columns);
        ids.clear();
        columns.clear();
    };
    for (const std::int64_t id : std::exchange(added_, {})) {
        const ColumnSet& its = given_[id].values.columns();
        bool alike = true;
        for (const int column : table_.all()) {
            const bool told = its.has(column) == columns.has(column);
            if (!told && table_.info().otherDefaults.has(column)) alike = false;
        }
        if (!alike || ids.size() >= mostAdded(columns)) writeThem();
        ids.push_back(id);
        columns |= its;
    }
    writeThem();
}

std::size_t WindowTable::mostAdded(const ColumnSet& columns) const {
    std::size_t count = 1;
    columns.forEach([&](int) { ++count; });
    return dialect().rowsAs == Dialect::RowsAs::Arrays ? kMostRowsAtOnce : dialect().mostParameters / (count + 20);
}

void WindowTable::writeAdded(ServerSession& session, std::span<const std::int64_t> ids, const ColumnSet& columns) {
    std::vector<int> list;
    columns.forEach([&](int column) { list.push_back(column); });
    std::vector<std::string> types;
    for (const int column : list) {
        types.push_back(writtenType(dialect(), table_.field(column).type, table_.stored(column)));
    }
    std::vector<std::vector<Value>> rows;
    for (const std::int64_t id : ids) {
        std::vector<Value>& row = rows.emplace_back();
        const View its = view(id);
        for (const int column : list) row.push_back(*value(its, column));
    }
    constexpr FieldType kIds[] = {FieldType::Long};
    const std::vector<std::string> names = table_.quoted(list);
    ServerStatement statement;
    const bool arrays = dialect().rowsAs == Dialect::RowsAs::Arrays && !list.empty();
    if (arrays) {
        statement = {insertArraysText(dialect(), table_.quotedName(), names, types, table_.quotedKey()),
                     rowsParameters(dialect(), rows)};
    } else {
        // IDs without gaps come only with a list of values.
        statement.text = fmt::format(
            "{} RETURNING {}", insertRowsText(dialect(), table_.quotedName(), names, rows.size()), table_.quotedKey());
        for (std::vector<Value>& row : rows) std::ranges::move(row, std::back_inserter(statement.parameters));
    }
    const StatementResult result = arrays ? session.write(statement, kIds) : session.writeOnce(statement);
    if (result.rows.size() != ids.size())
        throw PlatformError(errors::kInternal, "the database server gave new records no IDs");
    for (std::size_t i = 0; i < ids.size(); ++i) {
        Added& added = given_[ids[i]];
        const View row = view(ids[i]);
        added.given = wholeOf(result.rows[i].front());
        SparseRow& known = rows_[added.given];
        for (const int column : table_.all()) {
            const Value* const told = column == table_.key() ? nullptr : value(row, column);
            if (told != nullptr) known.set(column, *told);
        }
    }
}

}  // namespace kolmera
