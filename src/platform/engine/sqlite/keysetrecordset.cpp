#include "platform/engine/sqlite/keysetrecordset.h"

#include <algorithm>
#include <utility>

#include "platform/engine/criteria.h"
#include "platform/engine/fieldlookup.h"
#include "platform/error.h"

namespace kolmera {

KeysetRecordset::KeysetRecordset(FileTable& table, std::string_view source, std::vector<int> columns,
                                 std::vector<std::int64_t> ids, bool readOnly)
    : table_(table),
      name_(source),
      columns_(std::move(columns)),
      ids_(std::move(ids)),
      position_(ids_.size()),
      row_(table, readOnly) {
    for (const int column : columns_) fields_.push_back(table.field(column));
}

int KeysetRecordset::ordinal(std::string_view field) const { return requiredOrdinal(fields_, field); }

int KeysetRecordset::tableOrdinal(int ordinal) const { return columns_[requiredPlace(ordinal, columns_.size())]; }

void KeysetRecordset::moveFirst() {
    row_.cancel();
    position_.moveFirst();
}

void KeysetRecordset::moveLast() {
    row_.cancel();
    position_.moveLast();
}

void KeysetRecordset::moveNext() {
    row_.cancel();
    position_.moveNext();
}

void KeysetRecordset::movePrevious() {
    row_.cancel();
    position_.movePrevious();
}

void KeysetRecordset::moveToModified() {
    const auto found = std::find(ids_.rbegin(), ids_.rend(), row_.lastSaved());
    if (row_.lastSaved() == 0 || found == ids_.rend()) {
        throw PlatformError(errors::kNoCurrentRecord, "no record has been saved");
    }
    row_.cancel();
    position_.moveTo(static_cast<std::size_t>(ids_.rend() - found) - 1);
}

void KeysetRecordset::setIndex(std::string_view /*index*/) {
    throw PlatformError(errors::kInternal, "a dynaset has no index");
}

void KeysetRecordset::seek(std::string_view /*comparison*/, std::span<const Value> /*keys*/) {
    throw PlatformError(errors::kInternal, "a dynaset has no index");
}

/// IDs of all records of the table that meet the criteria, sorted.
std::vector<std::int64_t> KeysetRecordset::matches(std::string_view criteria) {
    table_.flush();
    const Criteria parsed = Criteria::parse(criteria, fields_, table_.session().locale);
    std::string text = "SELECT rowid FROM " + table_.quotedName();
    std::string_view joint = " WHERE ";
    for (const Criteria::Term& term : parsed.terms()) {
        text += std::string(joint) + table_.quotedColumn(tableOrdinal(term.field));
        text += operatorText(term.comparison);
        joint = " AND ";
    }
    SqliteStatement query(table_.session().connection, text);
    int parameter = 0;
    for (const Criteria::Term& term : parsed.terms()) {
        if (parameter < query.parameters() && operatorText(term.comparison).ends_with('?')) {
            query.bind(++parameter, term.value);
        }
    }
    std::vector<std::int64_t> found;
    while (query.step()) found.push_back(query.integer(0));
    std::sort(found.begin(), found.end());
    return found;
}

void KeysetRecordset::findFirst(std::string_view criteria) {
    row_.cancel();
    noMatch_ = true;
    const std::vector<std::int64_t> wanted = matches(criteria);
    for (std::size_t i = 0; i < ids_.size() && noMatch_; ++i) {
        if (position_.isRemoved(i) || !std::binary_search(wanted.begin(), wanted.end(), ids_[i])) continue;
        position_.moveTo(i);
        noMatch_ = false;
    }
}

void KeysetRecordset::readCurrent() {
    const std::int64_t id = ids_[position_.current()];
    if (row_.present() && row_.id() == id) return row_.refresh();
    if (!row_.read(id)) throw PlatformError(errors::kNoCurrentRecord, "the record has been deleted");
}

const Value& KeysetRecordset::value(int ordinal) {
    const int column = tableOrdinal(ordinal);
    if (!row_.adding()) readCurrent();
    return row_.value(column);
}

void KeysetRecordset::edit() {
    readCurrent();
    row_.edit();
}

void KeysetRecordset::set(int ordinal, Value value) { row_.set(tableOrdinal(ordinal), std::move(value)); }

void KeysetRecordset::update() {
    const bool adding = row_.adding();
    row_.update();
    if (!adding) return;
    ids_.push_back(row_.lastSaved());
    position_.append();
}

void KeysetRecordset::remove() {
    readCurrent();
    row_.remove();
    position_.remove();
}

}  // namespace kolmera
