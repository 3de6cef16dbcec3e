#include "import/rows/rowwriter.h"

#include "db/conversions.h"

namespace kolmera {

RowWriter::RowWriter(SqlLayer& sql, PassedOver& passedOver, std::string_view table, std::string_view index)
    : RowWriter(sql, passedOver, table, sql.SQLÖppnaTabell(table, index, 0, false)) {}

RowWriter::RowWriter(SqlLayer& sql, PassedOver& passedOver, std::string_view table, std::unique_ptr<Recordset> rows)
    : sql_(sql), passedOver_(passedOver), table_(table), rows_(std::move(rows)) {}

Column RowWriter::column(std::string_view name) const { return columnAt(rows_->ordinal(name)); }

Column RowWriter::columnAt(int ordinal) const {
    return {ordinal, table_ + "." + rows_->fields().at(static_cast<std::size_t>(ordinal)).name};
}

bool RowWriter::find(Keys keys) { return !sql_.SQLSökIngenTräff(rows_, "=", keys); }

void RowWriter::begin(bool exists) {
    if (exists) {
        rows_->edit();
    } else {
        rows_->addNew();
    }
}

void RowWriter::update() {
    rows_->update();
    count();
}

RowWriter::Row RowWriter::editOrAdd(Keys keys) {
    Row row = Row::Unreachable;
    searched_ = keys;
    written_.clear();
    attempt(passedOver_, table_, [&] {
        const bool exists = find(keys) && !looksOnly_;
        if (!looksOnly_) begin(exists);
        row = exists ? Row::Existing : Row::New;
    });
    added_ = row == Row::New;
    return row;
}

bool RowWriter::set(const Column& column, Value value) {
    if (looksOnly_) return true;
    return attempt(passedOver_, column.statement, [&] {
        if (!added_) return rows_->set(column.ordinal, std::move(value));
        rows_->set(column.ordinal, value);
        written_.emplace_back(column.ordinal, std::move(value));
    });
}

void RowWriter::write(const Column& column, const std::optional<Date>& date) {
    set(column, date ? Value(*date) : Value(std::string()));
}

double RowWriter::number(const Column& column) {
    double number = 0;
    if (looksOnly_) return number;
    attempt(passedOver_, column.statement, [&] { number = TillDbl(rows_->value(column.ordinal), sql_.locale()); });
    return number;
}

bool RowWriter::save() {
    if (looksOnly_) return true;
    return attempt(passedOver_, table_, [&] {
        try {
            update();
        } catch (const PlatformError& error) {
            const bool duplicate = added_ && error.number() == errors::kDuplicateKey && !error.endsRun();
            if (!duplicate || !find(searched_)) throw;
            writeIntoExisting();
        }
    });
}

/// Another run has added the row since it was searched for.
void RowWriter::writeIntoExisting() {
    rows_->edit();
    for (const auto& [column, value] : written_) rows_->set(column, value);
    update();
}

}  // namespace kolmera
