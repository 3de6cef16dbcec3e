#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "db/conversions.h"
#include "history/references.h"
#include "platform/lettercase.h"
#include "pricing/listsetting.h"
#include "registers/registerstore.h"

namespace kolmera {
namespace {

constexpr std::string_view kLineEnd = "\r\n";

/// The settings are the first row of each of two tables.
class SettingStore final : public RegisterStore {
  public:
    SettingStore(const RegisterDefinition& definition, SqlLayer& sql, LanguageTexts& texts)
        : definition_(definition), sql_(sql), texts_(texts), rows_(definition.rows()) {}

    [[nodiscard]] std::vector<RegisterColumn> columns() const override {
        std::vector<RegisterColumn> columns;
        for (std::size_t i = 0; i < definition_.columns.size(); ++i) {
            columns.emplace_back().field = definition_.columns[i].field;
            if (i > 0) refineBy(rows_.front().cells[i - 1], columns.back());
        }
        columns.front().key = true;
        columns.front().type = rows_.front().number > 0 ? FieldType::Integer : FieldType::Text;
        // Where every row has a type of its own, the column takes all.
        if (rows_.front().number == 0) {
            columns.pop_back();
            columns.emplace_back().field = definition_.columns.back().field;
        }
        return columns;
    }
    [[nodiscard]] int keys() const override { return 1; }
    void refine(const RegisterRow& row, int column, RegisterColumn& cell) const override {
        if (row.setting < 0 || column == 0) return;
        refineBy(rowAt(row.setting).cells[static_cast<std::size_t>(column - 1)], cell);
    }

    std::function<bool(RegisterRow&)> rows() override {
        return [this, place = 0](RegisterRow& row) mutable {
            if (place >= static_cast<int>(rows_.size())) return false;
            row = read(place++);
            return true;
        };
    }
    [[nodiscard]] std::optional<RegisterRow> find(std::span<const Value> key) override;
    void add(const RegisterValues& /*values*/) override { refuse(); }
    void remove(const RegisterRow& /*row*/) override { refuse(); }
    void change(const RegisterRow& row, const RegisterValues& values) override;

  private:
    [[noreturn]] static void refuse() {
        throw PlatformError(errors::kReadOnly, "rows of the settings are neither added nor removed");
    }
    [[nodiscard]] const SettingRow& rowAt(int place) const { return rows_[static_cast<std::size_t>(place)]; }
    void refineBy(const SettingCell& cell, RegisterColumn& column) const;
    [[nodiscard]] std::string caption(const SettingRow& row) const;
    [[nodiscard]] RegisterRow read(int place);
    [[nodiscard]] Value read(const SettingCell& cell);
    void write(const SettingCell& cell, const Value& value, Recordset& records);
    Recordset& records(std::string_view table, std::unique_ptr<Recordset>& records);

    const RegisterDefinition& definition_;
    SqlLayer& sql_;
    LanguageTexts& texts_;
    std::vector<SettingRow> rows_;
};

void SettingStore::refineBy(const SettingCell& cell, RegisterColumn& column) const {
    column.choices = cell.choices;
    column.size = cell.size;
    column.refersToTable = cell.refersTo;
    column.type = cell.form == SettingForm::BitUnset ? FieldType::Boolean
                  : cell.form == SettingForm::Line   ? FieldType::Double
                                                     : FieldType::Text;
    column.mayBeNull = cell.form == SettingForm::Line;
    if (cell.form != SettingForm::Whole) return;
    const TableDef& table = sql_.FtgDB->table(cell.table);
    const int ordinal = table.ordinal(cell.column);
    if (ordinal < 0) return;
    const FieldDef& field = table.fields[static_cast<std::size_t>(ordinal)];
    column.type = field.type;
    column.size = field.size;
    column.mayBeNull = field.defaultNull;
    column.suggests = suggestedRegister(cell.column);
    for (const Reference& reference : kReferences) {
        if (equalNoCase(reference.table, cell.table) && equalNoCase(reference.column, cell.column))
            column.refersToTable = reference.named;
    }
}

/// The name of a row without a number: its own, or the name of the column that it is for.
std::string SettingStore::caption(const SettingRow& row) const {
    if (row.table.empty()) return texts_.FormulärSträng(row.caption);
    const int ordinal = sql_.FtgDB->table(row.table).ordinal(row.column);
    const std::string caption = ordinal < 0 ? std::string() : texts_.RegisterText(row.table, ordinal);
    return caption.empty() ? std::string(row.column) : caption;
}

RegisterRow SettingStore::read(int place) {
    const SettingRow& setting = rowAt(place);
    RegisterRow row;
    row.setting = place;
    row.cells.push_back(setting.number > 0 ? Value(std::int64_t{setting.number}) : Value(caption(setting)));
    for (const SettingCell& cell : setting.cells) row.cells.push_back(read(cell));
    return row;
}

/// By number, by column, or by caption in the user's language.
std::optional<RegisterRow> SettingStore::find(std::span<const Value> key) {
    for (int place = 0; place < static_cast<int>(rows_.size()); ++place) {
        const SettingRow& row = rowAt(place);
        const bool found = row.number > 0
                               ? key[0] == Value(std::int64_t{row.number})
                               : equalNoCase(textOf(key[0]), row.column) || equalNoCase(textOf(key[0]), caption(row));
        if (found) return read(place);
    }
    return std::nullopt;
}

Recordset& SettingStore::records(std::string_view table, std::unique_ptr<Recordset>& records) {
    records = sql_.SQLÖppnaRs(table, RecordsetType::Dynaset);
    if (records->eof()) throw PlatformError(errors::kNoCurrentRecord, "no settings").about(std::string(table));
    return *records;
}

Value SettingStore::read(const SettingCell& cell) {
    std::unique_ptr<Recordset> opened;
    const Value& stored = records(cell.table, opened).value(cell.column);
    switch (cell.form) {
        case SettingForm::Whole:
            return stored;
        case SettingForm::ListText: {
            ListSetting lists(cell.standard);
            lists.read(TillText(stored, sql_.locale()));
            return lists.of(cell.place);
        }
        case SettingForm::Line: {
            const std::vector<std::string> lines = split(TillText(stored, sql_.locale()), kLineEnd);
            const auto place = static_cast<std::size_t>(cell.place);
            if (place >= lines.size() || trimmed(lines[place]).empty()) return Null{};
            if (const auto number = sql_.locale().parseNumber(lines[place])) return *number;
            return lines[place];
        }
        case SettingForm::BitUnset:
            return (TillLng(stored, sql_.locale()) >> cell.place & 1) == 0;
    }
    return Null{};
}

void SettingStore::change(const RegisterRow& row, const RegisterValues& values) {
    for (const auto& [column, value] : values) {
        if (column == 0) continue;
        const SettingCell& cell = rowAt(row.setting).cells[static_cast<std::size_t>(column - 1)];
        std::unique_ptr<Recordset> opened;
        Recordset& settings = records(cell.table, opened);
        settings.edit();
        write(cell, value, settings);
        settings.update();
    }
}

void SettingStore::write(const SettingCell& cell, const Value& value, Recordset& settings) {
    const std::string stored = TillText(settings.value(cell.column), sql_.locale());
    switch (cell.form) {
        case SettingForm::Whole:
            return settings.set(cell.column, value);
        case SettingForm::ListText: {
            ListSetting lists(cell.standard);
            lists.read(stored);
            lists.set(cell.place, textOf(value).empty() ? cell.standard : textOf(value));
            std::string text;
            for (int list = 1; list <= kPriceLists; ++list) {
                if (lists.of(list).empty() || lists.of(list) == cell.standard) continue;
                text += fmt::format("{}{}={}", text.empty() ? "" : ";", list, lists.of(list));
            }
            return settings.set(cell.column, text);
        }
        case SettingForm::Line: {
            std::vector<std::string> lines = split(stored, kLineEnd);
            const auto place = static_cast<std::size_t>(cell.place);
            constexpr std::size_t kLines = 10;
            lines.resize(std::max(lines.size(), kLines));
            lines[place] = TillText(value, sql_.locale());
            return settings.set(cell.column, fmt::format("{}", fmt::join(lines, kLineEnd)));
        }
        case SettingForm::BitUnset: {
            const std::int32_t bits = TillLng(settings.value(cell.column), sql_.locale());
            const std::int32_t bit = 1 << cell.place;
            const bool wanted = TillBool(value, sql_.locale());
            return settings.set(cell.column, std::int64_t{wanted ? bits & ~bit : bits | bit});
        }
    }
}

}  // namespace

std::unique_ptr<RegisterStore> settingStore(const RegisterDefinition& definition, SqlLayer& sql, LanguageTexts& texts) {
    return std::make_unique<SettingStore>(definition, sql, texts);
}

}  // namespace kolmera
