#include <algorithm>
#include <utility>

#include "history/references.h"
#include "import/rows/defaults.h"
#include "platform/lettercase.h"
#include "registers/registerstore.h"

namespace kolmera {
namespace {

/// Numbers of alternative-number headings, which masks name in two digits.
constexpr double kFirstHeading = 1;
constexpr double kLastHeading = 63;

struct Bounds {
    FieldType type;
    double low, high;
};
constexpr Bounds kBounds[] = {
    {FieldType::Byte, 0, 255}, {FieldType::Integer, -32768, 32767}, {FieldType::Long, -2147483648.0, 2147483647.0}};

/// Companies of old do not have all settings; other errors are raised.
class Strictly final : public PassedOver {
  public:
    void note(std::string_view /*what*/, const PlatformError& error) override {
        if (error.number() != errors::kUnknownField) throw error;
    }
};

/// The defaults of new products as they stand.
struct Defaults {
    explicit Defaults(SqlLayer& sql)
        : settings(sql.SQLÖppnaRs("Syinställningar", RecordsetType::Dynaset, options::kReadOnly)),
          settings2(sql.SQLÖppnaRs("Syinställningar2", RecordsetType::Dynaset, options::kReadOnly)),
          fill(*settings, *settings2, sql.locale(), strictly) {}

    std::unique_ptr<Recordset> settings, settings2;
    Strictly strictly;
    NewProductDefaults fill;
};

class TableStore final : public RegisterStore {
  public:
    TableStore(const RegisterDefinition& definition, SqlLayer& sql)
        : definition_(definition), sql_(sql), table_(sql.FtgDB->table(definition.table)) {
        const IndexDef* index = table_.index(definition.index);
        if (index == nullptr) throw PlatformError(errors::kUnknownField, "no such index").about(table_.name);
        for (const std::string& column : index->columns()) ordinals_.push_back(table_.ordinal(column));
        keys_ = static_cast<int>(ordinals_.size());
        for (int ordinal = 0; ordinal < static_cast<int>(table_.fields.size()); ++ordinal) {
            const bool isKey = std::ranges::find(ordinals_, ordinal) != ordinals_.end();
            if (!isKey && !fieldAt(ordinal).counter) ordinals_.push_back(ordinal);
        }
    }

    [[nodiscard]] std::vector<RegisterColumn> columns() const override {
        std::vector<RegisterColumn> columns;
        for (const int ordinal : ordinals_) {
            columns.push_back(columnOf(fieldAt(ordinal)));
            columns.back().key = static_cast<int>(columns.size()) <= keys_;
        }
        return columns;
    }
    [[nodiscard]] int keys() const override { return keys_; }

    std::function<bool(RegisterRow&)> rows() override {
        std::shared_ptr<Recordset> records =
            sql_.SQLÖppnaTabell(definition_.table, definition_.index, options::kReadOnly, true);
        if (!records->bof() || !records->eof()) records->moveFirst();
        return [this, records, first = true](RegisterRow& row) mutable {
            if (!std::exchange(first, false)) records->moveNext();
            if (records->eof()) return false;
            row = rowAt(*records);
            return true;
        };
    }
    [[nodiscard]] std::optional<RegisterRow> find(std::span<const Value> key) override {
        if (!seek(key)) return std::nullopt;
        return rowAt(*records_);
    }
    void add(const RegisterValues& values) override;
    void change(const RegisterRow& row, const RegisterValues& values) override {
        if (!seek(keyOf(row))) throw PlatformError(errors::kNoCurrentRecord, "the row is gone").about(table_.name);
        records_->edit();
        write(values);
        records_->update();
    }
    void remove(const RegisterRow& row) override {
        if (!seek(keyOf(row))) throw PlatformError(errors::kNoCurrentRecord, "the row is gone").about(table_.name);
        records_->remove();
    }

  private:
    [[nodiscard]] const FieldDef& fieldAt(int ordinal) const {
        return table_.fields[static_cast<std::size_t>(ordinal)];
    }
    [[nodiscard]] RegisterColumn columnOf(const FieldDef& field) const;
    [[nodiscard]] std::vector<Value> keyOf(const RegisterRow& row) const {
        return {row.cells.begin(), row.cells.begin() + keys_};
    }
    bool seek(std::span<const Value> key) {
        if (!records_) records_ = sql_.SQLÖppnaTabell(definition_.table, definition_.index, 0, false);
        return !sql_.SQLSökIngenTräff(records_, "=", key);
    }
    [[nodiscard]] RegisterRow rowAt(Recordset& records) const {
        RegisterRow row;
        for (const int ordinal : ordinals_) row.cells.push_back(records.value(ordinal));
        return row;
    }
    /// Of the record at hand, and the date of its change.
    void write(const RegisterValues& values) {
        for (const auto& [column, value] : values) records_->set(ordinals_[static_cast<std::size_t>(column)], value);
        const int changed = table_.ordinal("Förändringsdatum");
        if (changed >= 0) records_->set(changed, Date::today());
    }
    void setAccounts();
    void setDefaults();

    const RegisterDefinition& definition_;
    SqlLayer& sql_;
    const TableDef& table_;
    std::vector<int> ordinals_;  ///< of the columns, the key's first
    int keys_ = 0;
    std::unique_ptr<Recordset> records_;
    std::unique_ptr<Defaults> defaults_;
    std::pair<std::uint64_t, std::uint64_t> stamps_;  ///< of the settings when `defaults_` were read
};

RegisterColumn TableStore::columnOf(const FieldDef& field) const {
    RegisterColumn column;
    column.field = field.name;
    column.type = field.type;
    column.size = field.size;
    column.mayBeNull = field.defaultNull;
    column.fixed = isKeptByProgram(field.name);
    column.listed = definition_.listed.empty()
                        ? !column.fixed
                        : std::ranges::find(definition_.listed, field.name) != definition_.listed.end();
    for (const Bounds& bounds : kBounds) {
        if (bounds.type != field.type) continue;
        column.low = bounds.low;
        column.high = bounds.high;
    }
    if (equalNoCase(table_.name, "Prodaltrubrik") && equalNoCase(field.name, "Nummer")) {
        column.low = kFirstHeading;
        column.high = kLastHeading;
    }
    column.suggests = suggestedRegister(field.name);
    for (const Reference& reference : kReferences) {
        if (!equalNoCase(reference.table, table_.name) || !equalNoCase(reference.column, field.name)) continue;
        column.refersToTable = reference.named;
    }
    return column;
}

void TableStore::add(const RegisterValues& values) {
    if (!records_) records_ = sql_.SQLÖppnaTabell(definition_.table, definition_.index, 0, false);
    records_->addNew();
    try {
        if (equalNoCase(table_.name, "Prodgrupp")) setAccounts();
        write(values);
        if (equalNoCase(table_.name, "Produkt")) setDefaults();
        records_->update();
    } catch (...) {
        PassedOverSilently passedOver;
        attempt(passedOver, table_.name, [&] { records_->cancelUpdate(); });
        throw;
    }
}

/// Before the values are set, which go before.
void TableStore::setAccounts() {
    Strictly strictly;
    const auto settings = sql_.SQLÖppnaRs("Syinställningar", RecordsetType::Dynaset, options::kReadOnly);
    SättGruppKonton(*records_, *settings, strictly);
}

/// As the import does; what is set stays.
void TableStore::setDefaults() {
    const auto stamps = std::pair(sql_.FtgDB->stamp("Syinställningar"), sql_.FtgDB->stamp("Syinställningar2"));
    if (!defaults_ || stamps != stamps_) defaults_ = std::make_unique<Defaults>(sql_);
    stamps_ = stamps;
    defaults_->fill.SättNyProduktStandard(*records_);
}

}  // namespace

std::unique_ptr<RegisterStore> tableStore(const RegisterDefinition& definition, SqlLayer& sql) {
    return std::make_unique<TableStore>(definition, sql);
}

}  // namespace kolmera
