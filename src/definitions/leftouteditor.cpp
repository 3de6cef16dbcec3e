#include "definitions/leftouteditor.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "lang/keys/leftoutrows.h"
#include "lang/keys/sourcecolumns.h"
#include "source/conversion/rowconversion.h"
#include "source/readers/opensource.h"

namespace kolmera {
namespace {

/// How rows of sums begin.
constexpr std::string_view kSums[] = {"summa*",  "delsumma*", "totalt*", "total *", "total",
                                      "total:*", "subtotal*", "sum",     "sum *",   "grand total*"};

}  // namespace

LeftOutEditor::LeftOutEditor(LanguageTexts& texts, const std::filesystem::path& file, SourceSettings settings)
    : texts_(texts), settings_(std::move(settings)) {
    SourceTable table(openRows(file, settings_.format), settings_.format);
    settings_.headings = table.headings();
    columnsOfFile_ = settings_.headings.size();
    for (Row row; rows_.size() < kRows && table.next(row);) {
        KeptRow kept{.number = row.number, .cells = {}};
        for (const Cell& cell : row.cells) kept.cells.emplace_back(cell.text);
        columnsOfFile_ = std::max(columnsOfFile_, kept.cells.size());
        rows_.push_back(std::move(kept));
    }
    refresh();
}

std::vector<const LeftOutEditor::KeptRow*> LeftOutEditor::leftOutBy(const std::vector<LeftOutRows>& patterns) const {
    const SourceSettings settings{.format = settings_.format, .leaveOut = patterns};
    const RowConversion conversion(settings, {}, settings_.headings);
    std::vector<SourceValue> values;
    std::vector<const KeptRow*> found;
    for (const KeptRow& kept : rows_) {
        Row row{.number = kept.number, .cells = {}};
        for (const std::string& cell : kept.cells) row.cells.push_back({.text = cell});
        if (conversion.read(row, values) == RowConversion::Use::LeftOut) found.push_back(&kept);
    }
    return found;
}

void LeftOutEditor::refresh() {
    leftOut_.clear();
    for (const KeptRow* row : leftOutBy(settings_.leaveOut))
        leftOut_.push_back({row->number, fmt::format("{}", fmt::join(row->cells, "  "))});
}

std::vector<std::string> LeftOutEditor::columns() const {
    std::vector<std::string> names = {texts_.ModulText(text::leftoutrows::kAnyColumn)};
    for (std::size_t place = 0; place < columnsOfFile_; ++place) {
        const std::string heading = place < settings_.headings.size() ? settings_.headings[place] : std::string();
        names.push_back(fmt::format("{}  {}", place + 1, trimmedBlanks(heading)));
    }
    return names;
}

std::vector<std::string> LeftOutEditor::lines() const {
    const std::vector<std::string> names = columns();
    std::vector<std::string> lines;
    for (const LeftOutRows& rows : patterns()) {
        ColumnFinder finder(settings_.headings);
        const auto place = finder.find(rows.column);
        std::string column = texts_.ModulTextMed(text::sourcecolumns::kMissing, rows.column.heading);
        if (rows.column.none()) {
            column = names.front();
        } else if (place) {
            column = *place + 1 < names.size() ? names[*place + 1] : fmt::format("{}", *place + 1);
        }
        lines.push_back(fmt::format("{}: {} ({})", column, rows.pattern, leftOutBy({rows}).size()));
    }
    return lines;
}

bool LeftOutEditor::add(int column, const std::string& pattern) {
    if (trimmedBlanks(pattern).empty() || column < 0) return false;
    LeftOutRows rows;
    rows.column.number = column;
    rows.pattern = std::string(trimmedBlanks(pattern));
    const auto place = static_cast<std::size_t>(column) - 1;
    if (column > 0 && place < settings_.headings.size()) {
        ColumnFinder finder(settings_.headings);
        finder.find({.heading = settings_.headings[place], .number = 0});
        const bool unique = !finder.fault().any() && !trimmedBlanks(settings_.headings[place]).empty();
        if (unique) rows.column.heading = settings_.headings[place];
    }
    if (std::ranges::find(settings_.leaveOut, rows) == settings_.leaveOut.end())
        settings_.leaveOut.push_back(std::move(rows));
    refresh();
    return true;
}

void LeftOutEditor::remove(int place) {
    if (place < 0 || place >= static_cast<int>(settings_.leaveOut.size())) return;
    settings_.leaveOut.erase(settings_.leaveOut.begin() + place);
    refresh();
}

/// In any column: the row of a sum has its word where others have an article.
bool LeftOutEditor::suggest() {
    bool found = false;
    for (const std::string_view sum : kSums) {
        LeftOutRows rows;
        rows.pattern = sum;
        const std::size_t count = leftOutBy({rows}).size();
        // What leaves out most of the rows is a word of the articles.
        if (count == 0 || count * 2 > rows_.size()) continue;
        found = true;
        add(0, rows.pattern);
    }
    return found;
}

std::string LeftOutEditor::summary() const {
    return texts_.ModulTextMed(text::leftoutrows::kLeftOut, fmt::format("{}", leftOut_.size()));
}

}  // namespace kolmera
