#include "platform/engine/odbc/serverdynaset.h"

#include <algorithm>
#include <utility>

#include "platform/engine/criteria.h"
#include "platform/engine/fieldlookup.h"
#include "platform/error.h"

namespace kolmera {

namespace {

constexpr int kFirstRows = 8;
constexpr std::size_t kRowsAhead = 64;

}  // namespace

ServerDynaset::Columns::Columns(const ServerTable& table, std::vector<int> itsOrdinals)
    : ordinals(std::move(itsOrdinals)) {
    for (const int column : ordinals) fields.push_back(table.field(column));
}

ServerDynaset::ServerDynaset(ServerTable& table, std::string_view source, std::shared_ptr<const Columns> columns,
                             ServerSelectRest rest, bool readOnly)
    : table_(table), name_(source), columns_(std::move(columns)), rest_(std::move(rest)), row_(table, readOnly) {}

int ServerDynaset::ordinal(std::string_view field) const { return requiredOrdinal(columns_->fields, field); }

int ServerDynaset::tableOrdinal(int ordinal) const {
    return columns_->ordinals[requiredPlace(ordinal, columns_->ordinals.size())];
}

// The list of records.

void ServerDynaset::start() const {
    if (started_) return;
    block_ = table_.readRows(rest_.where, rest_.order, kFirstRows);
    ids_ = block_.ids;
    complete_ = ids_.size() < kFirstRows;
    putAddedLast();
    position_ = ListPosition(ids_.size());
    started_ = true;
}

void ServerDynaset::loadAll() const {
    start();
    if (complete_) return;
    // What has been seen keeps its place, whatever other sessions have done to the table since.
    const std::size_t known = ids_.size();
    const std::vector<std::int64_t> all = table_.readIds(rest_.where, rest_.order);
    for (auto* ids : {&ids_, &added_}) {
        for (std::int64_t& id : *ids) id = table_.knownId(id);
    }
    std::vector<std::int64_t> seen(ids_);
    std::ranges::sort(seen);
    for (const std::int64_t id : all) {
        if (!std::ranges::binary_search(seen, id)) ids_.push_back(id);
    }
    complete_ = true;
    putAddedLast();
    position_.grow(ids_.size() - known);
}

void ServerDynaset::putAddedLast() const {
    if (added_.empty()) return;
    std::erase_if(ids_, [this](std::int64_t id) { return std::ranges::find(added_, id) != added_.end(); });
    if (!complete_) return;
    ids_.insert(ids_.end(), added_.begin(), added_.end());
    added_.clear();
}

/// Makes the current record one of the list's.
void ServerDynaset::place() {
    row_.cancel();
    if (!found_) return start();
    loadAll();
    const std::int64_t id = *std::exchange(found_, std::nullopt);
    const auto place = std::ranges::find(ids_, id);
    if (place == ids_.end()) throw PlatformError(errors::kNoCurrentRecord, "the record has been deleted");
    position_.moveTo(static_cast<std::size_t>(place - ids_.begin()));
}

/// Makes a record current, without reading the list for it.
void ServerDynaset::goTo(std::int64_t id) {
    const auto place = std::find(ids_.rbegin(), ids_.rend(), id);
    found_.reset();
    if (place == ids_.rend()) {
        found_ = id;
    } else {
        position_.moveTo(static_cast<std::size_t>(ids_.rend() - place) - 1);
    }
}

// Position.

bool ServerDynaset::bof() const {
    if (!found_) start();
    return !found_ && position_.bof();
}

bool ServerDynaset::eof() const {
    if (!found_) start();
    return !found_ && position_.eof();
}

void ServerDynaset::moveFirst() {
    row_.cancel();
    start();
    found_.reset();
    position_.moveFirst();
}

void ServerDynaset::moveLast() {
    row_.cancel();
    loadAll();
    found_.reset();
    position_.moveLast();
}

void ServerDynaset::moveNext() {
    place();
    const bool nextIsKnown = position_.onRecord() && position_.current() + 1 < ids_.size();
    if (!nextIsKnown) loadAll();
    position_.moveNext();
}

void ServerDynaset::movePrevious() {
    place();
    if (position_.eof()) loadAll();
    position_.movePrevious();
}

void ServerDynaset::moveToModified() {
    if (row_.lastSaved() == 0) throw PlatformError(errors::kNoCurrentRecord, "no record has been saved");
    row_.takeLastSaved();
    goTo(row_.lastSaved());
}

std::int32_t ServerDynaset::recordCount() {
    if (!found_) start();
    return std::max(position_.count(), found_ ? 1 : 0);
}

// Finding.

void ServerDynaset::setIndex(std::string_view /*index*/) {
    throw PlatformError(errors::kInternal, "a dynaset has no index");
}

void ServerDynaset::seek(std::string_view /*comparison*/, std::span<const Value> /*keys*/) {
    throw PlatformError(errors::kInternal, "a dynaset has no index");
}

ServerStatement ServerDynaset::condition(std::string_view criteria) const {
    const Criteria parsed = Criteria::parse(criteria, columns_->fields, table_.session().locale());
    ServerStatement condition;
    for (const Criteria::Term& term : parsed.terms()) {
        if (!condition.text.empty()) condition.text += " AND ";
        std::string comparison(operatorText(term.comparison));
        if (comparison.ends_with('?')) {
            comparison.pop_back();
            comparison += parameterMark(table_.session().dialect(), term.value);
            condition.parameters.push_back(term.value);
        }
        condition.text += table_.quotedColumn(tableOrdinal(term.field)) + comparison;
    }
    return condition;
}

void ServerDynaset::findFirst(std::string_view criteria) {
    row_.cancel();
    noMatch_ = true;
    const ServerTable::Rows match = table_.readRows(both(rest_.where, condition(criteria)), rest_.order, 1);
    if (match.ids.empty()) return;
    noMatch_ = false;
    row_.take(match, 0);
    goTo(row_.id());
}

// Reading.

std::int64_t ServerDynaset::currentId() const { return found_ ? *found_ : ids_[position_.current()]; }

bool ServerDynaset::takeFromBlock(std::int64_t id) {
    if (block_.version != table_.version() || !table_.hasAllLearned(block_)) return false;
    const auto place = std::ranges::find(block_.ids, id);
    if (place == block_.ids.end()) return false;
    row_.take(block_, static_cast<std::size_t>(place - block_.ids.begin()));
    return true;
}

void ServerDynaset::readBlock(std::size_t first) {
    const std::size_t count = std::min(kRowsAhead, ids_.size() - first);
    block_ = table_.readRows(std::span(ids_).subspan(first, count));
}

/// A list that is walked from record to record is read in blocks.
void ServerDynaset::readCurrent() {
    if (!found_) start();
    const std::int64_t id = currentId();
    if (row_.present() && row_.id() == id) return;
    const bool walked = !found_ && position_.current() == lastRead_ + 1;
    if (!found_) lastRead_ = position_.current();
    if (takeFromBlock(id)) return;
    if (walked) readBlock(position_.current());
    if (walked && takeFromBlock(id)) return;
    if (!row_.read(id)) throw PlatformError(errors::kNoCurrentRecord, "the record has been deleted");
}

const Value& ServerDynaset::value(int ordinal) {
    const int column = tableOrdinal(ordinal);
    if (!row_.adding()) readCurrent();
    return row_.value(column);
}

// Writing.

void ServerDynaset::edit() {
    readCurrent();
    row_.edit();
}

void ServerDynaset::set(int ordinal, Value value) { row_.set(tableOrdinal(ordinal), std::move(value)); }

/// What this recordset writes changes one row: of those read ahead, only that one is old then.
template <typename Write>
void ServerDynaset::writeCurrent(Write&& write) {
    const bool upToDate = block_.version == table_.version();
    const std::int64_t id = row_.adding() ? 0 : row_.id();
    write();
    if (!upToDate) return;
    block_.version = table_.version();
    std::ranges::replace(block_.ids, id, std::int64_t{0});
}

void ServerDynaset::update() {
    const bool adding = row_.adding();
    writeCurrent([this] { row_.update(); });
    if (!adding) return;
    if (started_ && complete_) {
        ids_.push_back(row_.lastSaved());
        position_.append();
    } else {
        added_.push_back(row_.lastSaved());
    }
}

void ServerDynaset::remove() {
    place();
    readCurrent();
    writeCurrent([this] { row_.remove(); });
    position_.remove();
}

}  // namespace kolmera
