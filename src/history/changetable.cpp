#include "history/changetable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "lang/keys/changes.h"
#include "platform/lettercase.h"
#include "platform/outputfile.h"
#include "platform/spreadsheet/workbook.h"

namespace kolmera {
namespace {

constexpr std::int64_t kRowsAtOnce = 512;

constexpr struct {
    ModuleKey heading;
    ChangeQuery::Sort sort;
    FieldType type;  ///< in a sheet
    int size;
} kColumnRows[ChangeTable::kColumns] = {
    {text::changes::kProductHeading, ChangeQuery::Sort::Product, FieldType::Text, 20},
    {text::changes::kNameHeading, ChangeQuery::Sort::Name, FieldType::Text, 60},
    {text::changes::kColumnHeading, ChangeQuery::Sort::Column, FieldType::Text, 40},
    {text::changes::kBeforeHeading, ChangeQuery::Sort::Before, FieldType::Double, 0},
    {text::changes::kAfterHeading, ChangeQuery::Sort::After, FieldType::Double, 0},
    {text::changes::kPercentHeading, ChangeQuery::Sort::Percent, FieldType::Double, 0},
    {text::changes::kKindHeading, ChangeQuery::Sort::Kind, FieldType::Text, 10},
    {text::changes::kRecordHeading, ChangeQuery::Sort::File, FieldType::Long, 0},
};

constexpr ModuleKey kKinds[] = {text::changes::kAdded, text::changes::kChanged, text::changes::kRemoved};

/// A line of a text file has no room for line breaks and tabs of its own.
std::string onOneLine(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return c == '\t' || c == '\r' || c == '\n'; }, ' ');
    return text;
}

bool wouldBeFormula(std::string_view cell, const Locale& locale) {
    constexpr std::string_view kSigns = "=+-@";
    if (cell.size() < 2 || kSigns.find(cell.front()) == std::string_view::npos) return false;
    if (cell.ends_with(" %")) cell.remove_suffix(2);
    return !locale.parseNumber(cell);
}

/// A sheet has no place for a text as long as a note can be.
Value forSheet(const Value& value) {
    constexpr std::size_t kMostBytes = 32'000;
    if (textOf(value).size() <= kMostBytes) return value;
    std::size_t end = kMostBytes;
    while (end > 0 && (static_cast<unsigned char>(textOf(value)[end]) & 0xC0) == 0x80) --end;
    return std::string(textOf(value).substr(0, end)) + "...";
}

}  // namespace

std::string grouped(std::int64_t number, const Locale& locale) {
    constexpr std::size_t kGroup = 3;
    std::string text = std::to_string(number);
    const std::size_t start = number < 0 ? 1 : 0;
    const char* const sign = locale.kind() == Locale::Kind::Swedish ? "\u00A0" : ",";
    for (std::size_t end = text.size(); end > start + kGroup;) text.insert(end -= kGroup, sign);
    return text;
}

std::string percentText(double percent, const Locale& locale) {
    const std::string number = locale.formatFixed(percent, std::abs(percent) < 0.95 ? 2 : 1);
    return fmt::format("{}{} %", percent > 0 ? "+" : "", number);
}

std::string tabbedLine(std::span<const std::string> cells, const Locale& locale) {
    std::string line;
    for (const std::string& cell : cells) {
        if (&cell != cells.data()) line += '\t';
        if (wouldBeFormula(cell, locale)) line += '\'';
        line += onOneLine(cell);
    }
    return line;
}

ChangeTable::ChangeTable(ChangeList& list, LanguageTexts& texts, const Locale& locale)
    : list_(list), texts_(texts), locale_(locale), fromZero_(texts.ModulText(text::changes::kFromZero)) {
    for (std::size_t kind = 0; kind < kinds_.size(); ++kind) kinds_.at(kind) = texts.ModulText(kKinds[kind]);
}

ChangeQuery::Sort ChangeTable::sortOf(int column) { return kColumnRows[column].sort; }

ChangeTable::Cells ChangeTable::headings() const {
    Cells cells;
    for (std::size_t column = 0; column < cells.size(); ++column) {
        cells[column] = texts_.ModulText(kColumnRows[column].heading);
    }
    return cells;
}

ChangeTable::Cells ChangeTable::cells(const ChangeRow& row) const {
    if (row.members > 0) {
        const std::string members = texts_.ModulTextMed(text::changes::kMembers, grouped(row.members, locale_));
        return {row.product, row.name, row.caption.empty() ? members : row.caption + ": " + members};
    }
    std::string percent;
    if (row.fromZero) percent = fromZero_;
    if (row.percent) percent = percentText(*row.percent, locale_);
    return {row.product,
            row.name,
            row.caption,
            onOneLine(row.beforeText),
            onOneLine(row.afterText),
            percent,
            kinds_.at(static_cast<std::size_t>(row.kind)),
            row.record > 0 ? std::to_string(row.record) : std::string()};
}

bool ChangeTable::forEach(const std::function<void(const ChangeRow&)>& take, const KeepOn& keepOn) const {
    for (std::int64_t first = 0; first < list_.count(); first += kRowsAtOnce) {
        if (!keepOn(first)) return false;
        for (const ChangeRow& row : list_.rows(first, kRowsAtOnce)) take(row);
    }
    return true;
}

bool ChangeTable::save(const std::filesystem::path& file, const KeepOn& keepOn) const {
    return lowerCase(file.extension().string()) == ".xlsx" ? saveSheet(file, keepOn) : saveText(file, keepOn);
}

bool ChangeTable::saveText(const std::filesystem::path& file, const KeepOn& keepOn) const {
    OutputFile output(file);
    output.write(line(headings()) + "\r\n");
    const bool whole = forEach(
        [&](const ChangeRow& row) {
            if (row.members == 0) output.write(line(cells(row)) + "\r\n");
        },
        keepOn);
    if (whole) output.finish();
    return whole;
}

bool ChangeTable::saveSheet(const std::filesystem::path& file, const KeepOn& keepOn) const {
    struct Stopped {};
    std::vector<SheetColumn> columns;
    const Cells names = headings();
    for (std::size_t column = 0; column < names.size(); ++column) {
        columns.push_back({names[column], kColumnRows[column].type, kColumnRows[column].size});
    }
    std::int64_t place = 0;
    std::vector<ChangeRow> rows;
    std::size_t at = 0;
    const auto next = [&]() -> std::optional<std::vector<Value>> {
        for (;; ++at) {
            if (at == rows.size()) {
                if (!keepOn(place)) throw Stopped();
                rows = list_.rows(place, kRowsAtOnce);
                place += static_cast<std::int64_t>(rows.size());
                at = 0;
                if (rows.empty()) return std::nullopt;
            }
            if (rows[at].members == 0) break;
        }
        const ChangeRow& row = rows[at++];
        const Cells texts = cells(row);
        return std::vector<Value>{row.product,         row.name,
                                  row.caption,         forSheet(row.before),
                                  forSheet(row.after), row.percent ? Value(*row.percent) : Value(),
                                  texts[kKind],        row.record > 0 ? Value(row.record) : Value()};
    };
    try {
        addSheet(file, texts_.ModulText(text::changes::kSheet), columns, next);
    } catch (const Stopped&) {
        return false;
    }
    return true;
}

}  // namespace kolmera
