#include "platform/engine/odbc/serverrow.h"

#include <utility>

#include "platform/engine/fieldvalue.h"
#include "platform/error.h"

namespace kolmera {

ServerRow::ServerRow(ServerTable& table, bool readOnly)
    : table_(table), readOnly_(readOnly), current_(table.takeValues()), edited_(table.takeValues()) {}

ServerRow::~ServerRow() {
    table_.giveBack(std::move(current_));
    table_.giveBack(std::move(edited_));
}

void ServerRow::take(const ServerTable::Rows& rows, std::size_t place) {
    loaded_.clear();
    for (std::size_t i = 0; i < rows.columns.size(); ++i) {
        current_[at(rows.columns[i])] = rows.values[place][i];
        loaded_.add(rows.columns[i]);
    }
    id_ = rows.ids[place];
    version_ = rows.version;
    present_ = true;
}

bool ServerRow::read(std::int64_t id) {
    const ServerTable::Rows found = table_.readRow(id);
    present_ = !found.ids.empty();
    if (present_) take(found, 0);
    return present_;
}

void ServerRow::requirePresent() const {
    if (!present_) throw PlatformError(errors::kNoCurrentRecord, "there is no current record");
}

void ServerRow::requireWritable() const {
    if (readOnly_) throw PlatformError(errors::kInternal, "the recordset is open for reading only");
}

void ServerRow::refresh() {
    if (version_ != table_.version() && !read(id_)) requirePresent();
}

/// Reads a column that was not read with the row: with all the others, because the next one asked for is seldom far.
void ServerRow::load(int ordinal) {
    if (table_.field(ordinal).counter) {
        id_ = table_.realId(id_);
        current_[at(ordinal)] = id_;
        return loaded_.add(ordinal);
    }
    id_ = table_.knownId(id_);
    std::vector<Value> whole = table_.readWhole(id_);
    present_ = !whole.empty();
    requirePresent();
    for (int column = 0; column < table_.columns(); ++column) {
        if (loaded_.has(column)) continue;
        current_[at(column)] = std::move(whole[at(column)]);
        loaded_.add(column);
    }
}

const Value& ServerRow::value(int ordinal) {
    if (mode_ == Mode::Add) return changed_.has(ordinal) ? edited_[at(ordinal)] : table_.defaults()[at(ordinal)];
    requirePresent();
    table_.learn(ordinal);
    if (mode_ == Mode::Edit && changed_.has(ordinal)) return edited_[at(ordinal)];
    refresh();
    if (!loaded_.has(ordinal)) load(ordinal);
    return current_[at(ordinal)];
}

void ServerRow::startMode(Mode mode) {
    mode_ = mode;
    changed_.clear();
    savedAtHand_ = false;
}

void ServerRow::addNew() {
    requireWritable();
    startMode(Mode::Add);
}

void ServerRow::edit() {
    requireWritable();
    requirePresent();
    refresh();
    startMode(Mode::Edit);
}

void ServerRow::set(int ordinal, Value value) {
    if (mode_ == Mode::None) throw PlatformError(errors::kInternal, "the record is not being edited");
    const FieldDef& field = table_.field(ordinal);
    if (field.counter) throw PlatformError(errors::kWrongType, "the field is given by the engine").about(field.name);
    fitToField(field, value, table_.session().locale());
    table_.session().requireStorable(value);
    if (mode_ == Mode::Edit) {
        table_.learn(ordinal);
        refresh();
        if (!loaded_.has(ordinal)) load(ordinal);
        if (value == current_[at(ordinal)]) return changed_.remove(ordinal);
    }
    edited_[at(ordinal)] = std::move(value);
    changed_.add(ordinal);
}

void ServerRow::update() {
    const Mode mode = std::exchange(mode_, Mode::None);
    if (mode == Mode::None) throw PlatformError(errors::kInternal, "the record is not being edited");
    if (mode == Mode::Add) return writeNew();
    if (!changed_.empty()) writeChanged();
    lastSaved_ = id_;
}

void ServerRow::writeChanged() {
    id_ = table_.knownId(id_);
    ServerSession::Hearing hearing;
    if (ChangeListener* const listener = table_.session().listener())
        hearing = std::make_shared<HeardUpdate>(table_, listener->place(), id_, changed_, loaded_, current_, edited_);
    if (!table_.update(id_, changed_, edited_, hearing)) {
        present_ = false;
        throw PlatformError(errors::kNoCurrentRecord, "the record has been deleted");
    }
    changed_.forEach([&](int column) { std::swap(current_[at(column)], edited_[at(column)]); });
    noteWrite();
}

void ServerRow::writeNew() {
    table_.info().missingDefaults.forEach([&](int column) {
        if (!changed_.has(column)) edited_[at(column)] = table_.defaults()[at(column)];
    });
    changed_ |= table_.info().missingDefaults;
    lastSaved_ = table_.insert(changed_, edited_);
    noteWrite();
    savedAtHand_ = true;
    savedVersion_ = table_.version();
}

/// Our own write does not make our copy of the row old.
void ServerRow::noteWrite() {
    const bool upToDate = version_ == table_.version();
    table_.noteWrite();
    if (upToDate) version_ = table_.version();
}

void ServerRow::takeLastSaved() {
    mode_ = Mode::None;
    if (!savedAtHand_ || savedVersion_ != table_.version()) return;
    loaded_.clear();
    for (int column = 0; column < table_.columns(); ++column) {
        if (changed_.has(column)) {
            std::swap(current_[at(column)], edited_[at(column)]);
        } else if (table_.info().otherDefaults.has(column) || table_.field(column).counter) {
            continue;
        } else {
            current_[at(column)] = table_.defaults()[at(column)];
        }
        loaded_.add(column);
    }
    id_ = lastSaved_;
    version_ = table_.version();
    present_ = true;
    savedAtHand_ = false;
}

void ServerRow::remove() {
    requireWritable();
    requirePresent();
    table_.remove(id_);
    present_ = false;
    mode_ = Mode::None;
    noteWrite();
}

}  // namespace kolmera
