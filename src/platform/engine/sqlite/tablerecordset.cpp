#include "platform/engine/sqlite/tablerecordset.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "platform/engine/fieldlookup.h"
#include "platform/engine/fieldvalue.h"
#include "platform/error.h"

namespace kolmera {

using Direction = IndexWalk::Direction;

TableRecordset::TableRecordset(FileTable& table, std::string_view source, bool readOnly)
    : table_(table), name_(source), row_(table, readOnly), walk_(table, row_) {}

int TableRecordset::ordinal(std::string_view field) const { return requiredOrdinal(fields(), field); }

/// A recordset that was just opened, or got another index, is at the first record. It is read when it matters: most
/// tables are sought in at once.
void TableRecordset::resolve() const {
    if (place_ == Place::Unread) settleOn(walk_.first(Direction::Forward), Place::Empty);
}

bool TableRecordset::bof() const {
    resolve();
    return place_ == Place::BeforeFirst || place_ == Place::Empty;
}

bool TableRecordset::eof() const {
    resolve();
    return place_ == Place::BehindLast || place_ == Place::Empty;
}

void TableRecordset::moveToEnd(Direction direction) {
    row_.cancel();
    settleOn(walk_.first(direction), Place::Empty);
    if (place_ == Place::Record) return;
    row_.clear();
    throw PlatformError(errors::kNoCurrentRecord, "there is no record in " + name_);
}

void TableRecordset::moveFirst() { moveToEnd(Direction::Forward); }

void TableRecordset::moveLast() { moveToEnd(Direction::Backward); }

void TableRecordset::move(Direction direction) {
    resolve();
    row_.cancel();
    const bool forward = direction == Direction::Forward;
    if (place_ == (forward ? Place::BeforeFirst : Place::BehindLast)) return moveToEnd(direction);
    settleOn(moveFromHere(direction), forward ? Place::BehindLast : Place::BeforeFirst);
    if (place_ != Place::Record) row_.clear();
}

bool TableRecordset::moveFromHere(Direction direction) {
    if (place_ == Place::Removed) return walk_.next(removedKeys_, removedId_, direction);
    if (place_ == Place::Record && row_.present()) return walk_.next(currentKeys(), row_.id(), direction);
    throw PlatformError(errors::kNoCurrentRecord, "there is no current record");
}

std::vector<Value> TableRecordset::currentKeys() {
    std::vector<Value> keys;
    if (walk_.index() == nullptr) return keys;
    for (const KeyColumn& column : walk_.index()->columns) keys.push_back(row_.value(column.ordinal));
    return keys;
}

void TableRecordset::moveToModified() {
    if (!row_.readLastSaved()) throw PlatformError(errors::kNoCurrentRecord, "no record has been saved");
    place_ = Place::Record;
}

std::int32_t TableRecordset::recordCount() {
    const std::int64_t count = table_.session().connection.number("SELECT count(*) FROM " + table_.quotedName());
    return static_cast<std::int32_t>(std::min<std::int64_t>(count, std::numeric_limits<std::int32_t>::max()));
}

void TableRecordset::setIndex(std::string_view index) {
    table_.flush();
    walk_.setIndex(index.empty() ? nullptr : &table_.index(index));
    row_.clear();
    place_ = Place::Unread;
}

std::string TableRecordset::index() const { return walk_.index() != nullptr ? walk_.index()->name : std::string(); }

void TableRecordset::seek(std::string_view comparison, std::span<const Value> keys) {
    if (walk_.index() == nullptr) throw PlatformError(errors::kUnknownField, name_ + " has no index to seek in");
    row_.cancel();
    noMatch_ = true;
    noMatch_ = !search(comparison, fittedKeys(keys));
    settleOn(!noMatch_, Place::Nowhere);
    if (noMatch_) row_.clear();
}

std::span<const Value> TableRecordset::fittedKeys(std::span<const Value> keys) {
    const auto& columns = walk_.index()->columns;
    const std::size_t count = std::min(keys.size(), columns.size());
    keys_.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        keys_[i] = keys[i];
        fitToKey(table_.field(columns[i].ordinal), keys_[i], table_.session().locale);
    }
    return keys_;
}

bool TableRecordset::search(std::string_view comparison, std::span<const Value> keys) {
    if (comparison == "=") return walk_.equal(keys);
    if (comparison == ">=") return walk_.behind(keys, true);
    if (comparison == ">") return walk_.behind(keys, false);
    if (comparison == "<=") return firstBefore(keys, true);
    if (comparison == "<") return firstBefore(keys, false);
    throw PlatformError(errors::kInternal, "unknown comparison " + std::string(comparison));
}

/// The first record of all, when it lies before the keys.
bool TableRecordset::firstBefore(std::span<const Value> keys, bool orEqual) {
    if (!walk_.first(Direction::Forward)) return false;
    const auto& columns = walk_.index()->columns;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        int order = compareValues(row_.value(columns[i].ordinal), keys[i]);
        if (columns[i].descending) order = -order;
        if (order != 0) return order < 0;
    }
    return orEqual;
}

void TableRecordset::findFirst(std::string_view /*criteria*/) {
    throw PlatformError(errors::kInternal, "a table is sought in by its index");
}

const Value& TableRecordset::value(int ordinal) {
    requiredPlace(ordinal, fields().size());
    if (!row_.adding()) resolve();
    return row_.value(ordinal);
}

void TableRecordset::set(int ordinal, Value value) {
    requiredPlace(ordinal, fields().size());
    row_.set(ordinal, std::move(value));
}

void TableRecordset::edit() {
    resolve();
    row_.edit();
}

void TableRecordset::remove() {
    resolve();
    if (row_.present()) {
        removedKeys_ = currentKeys();
        removedId_ = row_.id();
    }
    row_.remove();
    place_ = Place::Removed;
}

}  // namespace kolmera
