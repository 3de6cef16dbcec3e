#include "platform/engine/sqlite/tablerow.h"

#include <sqlite3.h>

#include <utility>

#include "platform/engine/fieldvalue.h"
#include "platform/engine/sqlite/heardwrite.h"
#include "platform/error.h"

namespace kolmera {

TableRow::TableRow(FileTable& table, bool readOnly)
    : table_(table), readOnly_(readOnly), current_(at(table.columns())), edited_(at(table.columns())) {}

TableRow::~TableRow() {
    if (table_.heldBack() != this) return;
    try {
        table_.flush();
    } catch (const PlatformError& error) {
        table_.session().transactions.keepError(error);
    }
}

void TableRow::clear() {
    present_ = false;
    mode_ = Mode::None;
}

bool TableRow::read(std::int64_t id) {
    table_.flush();
    if (!readById_.prepared() || readByIdSize_ != selectionSize()) {
        readById_ = SqliteStatement(table_.session().connection,
                                    "SELECT " + selection_ + " FROM " + table_.quotedName() + " WHERE rowid = ?");
        readByIdSize_ = selectionSize();
    }
    const StatementUse use(readById_);
    readById_.bind(1, id);
    present_ = readById_.step();
    if (present_) take(readById_);
    return present_;
}

void TableRow::take(const SqliteStatement& statement) {
    id_ = statement.integer(0);
    int column = 0;
    for (const int ordinal : selected_) statement.read(++column, table_.field(ordinal).type, current_[at(ordinal)]);
    loaded_ = selectedSet_;
    version_ = table_.version();
    present_ = true;
}

void TableRow::requirePresent() const {
    if (!present_) throw PlatformError(errors::kNoCurrentRecord, "there is no current record");
}

void TableRow::requireWritable() const {
    if (readOnly_) throw PlatformError(errors::kInternal, "the recordset is open for reading only");
}

void TableRow::reload() {
    if (!read(id_)) requirePresent();
}

void TableRow::select(int ordinal) {
    if (selectedSet_.has(ordinal)) return;
    selectedSet_.add(ordinal);
    selected_.push_back(ordinal);
    selection_ += ", " + table_.quotedColumn(ordinal);
}

/// Reads one more column of the current row. What is held back of the row stays so: those columns are loaded.
void TableRow::load(int ordinal) {
    select(ordinal);
    SqliteStatement statement(table_.session().connection, "SELECT " + table_.quotedColumn(ordinal) + " FROM " +
                                                               table_.quotedName() + " WHERE rowid = ?");
    statement.bind(1, id_);
    present_ = statement.step();
    requirePresent();
    statement.read(0, table_.field(ordinal).type, current_[at(ordinal)]);
    loaded_.add(ordinal);
}

const Value& TableRow::value(int ordinal) {
    if (mode_ == Mode::Add) return changed_.has(ordinal) ? edited_[at(ordinal)] : table_.defaults()[at(ordinal)];
    requirePresent();
    if (mode_ == Mode::Edit && changed_.has(ordinal)) return edited_[at(ordinal)];
    if (version_ != table_.version()) reload();
    if (!loaded_.has(ordinal)) load(ordinal);
    return current_[at(ordinal)];
}

void TableRow::startMode(Mode mode) {
    mode_ = mode;
    changed_.clear();
    savedAtHand_ = false;
}

void TableRow::addNew() {
    requireWritable();
    startMode(Mode::Add);
}

void TableRow::edit() {
    requireWritable();
    requirePresent();
    refresh();
    if (version_ != table_.version()) reload();
    startMode(Mode::Edit);
}

void TableRow::set(int ordinal, Value value) {
    if (mode_ == Mode::None) throw PlatformError(errors::kInternal, "the record is not being edited");
    const FieldDef& field = table_.field(ordinal);
    if (field.counter) throw PlatformError(errors::kWrongType, "the field is given by the engine").about(field.name);
    fitToField(field, value, table_.session().locale);
    if (mode_ == Mode::Edit) {
        if (version_ != table_.version()) reload();
        if (!loaded_.has(ordinal)) load(ordinal);
        if (value == current_[at(ordinal)]) return changed_.remove(ordinal);
    }
    edited_[at(ordinal)] = std::move(value);
    changed_.add(ordinal);
}

void TableRow::cancel() { mode_ = Mode::None; }

void TableRow::update() {
    const Mode mode = std::exchange(mode_, Mode::None);
    if (mode == Mode::None) throw PlatformError(errors::kInternal, "the record is not being edited");
    if (mode == Mode::Add) return writeNew();
    if (!changed_.empty()) writeChanged();
    lastSaved_ = id_;
}

bool TableRow::mayHoldBack() const {
    return table_.session().transactions.open() && !table_.hasRules() && !changed_.intersects(table_.uniqueColumns());
}

void TableRow::writeChanged() {
    if (table_.heldBack() != this || !mayHoldBack()) table_.flush();
    if (mayHoldBack()) {
        writeLater();
    } else {
        writeAtOnce();
    }
    noteWrite();
    table_.session().transactions.afterPlainWrite();
}

void TableRow::writeAtOnce() {
    HeardWrite write(table_.session(), table_.hasRules() ? HeardWrite::Rows::AsStored : HeardWrite::Rows::ToldByCaller);
    writeColumns(changed_, edited_);
    if (write.heard() && !table_.hasRules()) tell(changed_, current_, edited_, listener()->place());
    write.done();
    keepChanges();
}

void TableRow::writeLater() {
    keepChanges();
    if (listener() != nullptr) {
        if (heldBack_.empty()) heldBackPlace_ = listener()->place();
        before_.resize(current_.size());
        changed_.forEach([&](int column) {
            if (!heldBack_.has(column)) std::swap(before_[at(column)], edited_[at(column)]);
        });
    }
    heldBack_ |= changed_;
    heldBackEpoch_ = table_.session().connection.epoch();
    table_.holdBack(this);
}

void TableRow::keepChanges() {
    changed_.forEach([&](int column) { std::swap(current_[at(column)], edited_[at(column)]); });
}

void TableRow::writeColumns(const ColumnSet& columns, const std::vector<Value>& values) {
    SqliteStatement& statement = table_.updateStatement(columns);
    const StatementUse use(statement);
    int parameter = 0;
    columns.forEach([&](int column) { statement.bind(++parameter, values[at(column)]); });
    statement.bind(++parameter, id_);
    statement.step();
    if (sqlite3_changes(table_.session().connection.handle()) == 0) {
        present_ = false;
        throw PlatformError(errors::kNoCurrentRecord, "the record has been deleted");
    }
}

/// What was held back in a transaction that was rolled back, by the program or by SQLite itself, is gone with it.
void TableRow::writeHeldBack() {
    const ColumnSet columns = std::exchange(heldBack_, ColumnSet());
    if (heldBackEpoch_ != table_.session().connection.epoch()) return;
    writeColumns(columns, current_);
    if (listener() != nullptr) tell(columns, before_, current_, heldBackPlace_);
}

void TableRow::tell(const ColumnSet& columns, const std::vector<Value>& before, const std::vector<Value>& after,
                    std::int64_t place) const {
    std::vector<ChangedCell>& cells = table_.session().cells;
    cells.clear();
    columns.forEach([&](int column) {
        if (before[at(column)] == after[at(column)]) return;
        cells.push_back({.column = column, .before = &before[at(column)], .after = &after[at(column)]});
    });
    if (cells.empty()) return;
    std::vector<const Value*>& known = table_.session().known;
    known.assign(current_.size(), nullptr);
    loaded_.forEach([&](int column) {
        if (!columns.has(column)) known[at(column)] = &current_[at(column)];
    });
    listener()->changed({.table = table_.definition(), .id = id_, .cells = cells, .known = known, .place = place});
}

void TableRow::writeNew() {
    table_.flush();
    HeardWrite write(table_.session(), HeardWrite::Rows::AsStored);
    SqliteStatement& statement = table_.insertStatement(changed_);
    const StatementUse use(statement);
    int parameter = 0;
    changed_.forEach([&](int column) { statement.bind(++parameter, edited_[at(column)]); });
    statement.step();
    write.done();
    lastSaved_ = sqlite3_last_insert_rowid(table_.session().connection.handle());
    noteWrite();
    savedAtHand_ = true;
    savedVersion_ = table_.version();
    table_.session().transactions.afterPlainWrite();
}

/// Our own write does not make our copy of the row old.
void TableRow::noteWrite() {
    const bool upToDate = version_ == table_.version();
    table_.noteWrite();
    if (upToDate) version_ = table_.version();
}

bool TableRow::readLastSaved() {
    if (lastSaved_ == 0) return false;
    if (savedAtHand_ && savedVersion_ == table_.version()) {
        takeSaved();
        return true;
    }
    if (present_ && id_ == lastSaved_) return true;
    return read(lastSaved_);
}

/// The row added last, from what was set and from the defaults. Columns outside the selection are read when asked for.
void TableRow::takeSaved() {
    ColumnSet known = selectedSet_;
    known |= changed_;
    known.forEach([&](int column) {
        if (changed_.has(column)) {
            std::swap(current_[at(column)], edited_[at(column)]);
        } else if (table_.field(column).counter) {
            current_[at(column)] = lastSaved_;
        } else {
            current_[at(column)] = table_.defaults()[at(column)];
        }
    });
    loaded_ = known;
    id_ = lastSaved_;
    version_ = table_.version();
    present_ = true;
    savedAtHand_ = false;
    mode_ = Mode::None;
}

void TableRow::remove() {
    requireWritable();
    requirePresent();
    table_.flush();
    HeardWrite write(table_.session(), HeardWrite::Rows::AsStored);
    SqliteStatement& statement = table_.deleteStatement();
    const StatementUse use(statement);
    statement.bind(1, id_);
    statement.step();
    write.done();
    clear();
    noteWrite();
    table_.session().transactions.afterPlainWrite();
}

}  // namespace kolmera
