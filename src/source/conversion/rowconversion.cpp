#include "source/conversion/rowconversion.h"

#include <fmt/format.h>

#include <algorithm>

#include "platform/lettercase.h"

namespace kolmera {
namespace {

const Cell& cellAt(const Row& row, std::optional<std::size_t> place) {
    static constexpr Cell kNone{};
    return place && *place < row.cells.size() ? row.cells[*place] : kNone;
}

bool isBlank(const Cell& cell) { return trimmedBlanks(cell.text).empty(); }

}  // namespace

bool matchesPattern(std::string_view pattern, std::string_view text) {
    // Only * and ? are special. Both step over characters, not bytes.
    std::size_t star = std::string_view::npos, from = 0, p = 0, t = 0;
    const std::string wanted = upperCase(pattern), given = upperCase(text);
    const auto width = [&](std::size_t at) { return firstCharacter(std::string_view(given).substr(at)).length; };
    while (t < given.size()) {
        if (p < wanted.size() && wanted[p] == '*') {
            star = p++;
            from = t;
        } else if (p < wanted.size() && wanted[p] == '?') {
            ++p;
            t += width(t);
        } else if (p < wanted.size() && wanted[p] == given[t]) {
            ++p;
            ++t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = from += width(from);
        } else {
            return false;
        }
    }
    return wanted.find_first_not_of('*', p) == std::string::npos;
}

RowConversion::RowConversion(const SourceSettings& settings, const TargetLayout& layout,
                             const std::vector<std::string>& headings)
    : settings_(settings),
      headings_(headings),
      asItIs_(layout.records == TargetLayout::Records::Whole ||
              (settings.format.kind == SourceKind::Delimited && settings.format.delimiter == '\0')) {
    ColumnFinder finder(headings);
    for (const LeftOutRows& rows : settings.leaveOut)
        patterns_.push_back({.place = finder.find(rows.column), .pattern = rows.pattern});
    plain_.reserve(layout.columns.size());  // the readers refer to them
    for (std::size_t i = 0; i < layout.columns.size() && !asItIs_; ++i) {
        const ColumnUse use = layout.columns[i].use;
        const int number = static_cast<int>(i) + 1;
        const auto named = std::ranges::find(settings.columns, number, &SourceColumn::column);
        const SourceColumn& column =
            named != settings.columns.end()
                ? *named
                : plain_.emplace_back(SourceColumn{.column = number, .from = {.heading = {}, .number = number}});
        columns_.push_back({.place = finder.find(column.from),
                            .joined = finder.find(column.rule.join),
                            .reader = ValueReader(column.rule, settings.format, use, layout.decimalSign)});
        if (use == ColumnUse::Nothing) continue;
        if (columns_.back().place) needed_ = std::max(needed_, *columns_.back().place + 1);
    }
    fault_ = finder.fault();
}

std::string RowConversion::label(std::size_t column) const {
    const std::optional<std::size_t> place = column < columns_.size() ? columns_[column].place : std::nullopt;
    if (!place) return {};
    const bool named = *place < headings_.size() && !trimmedBlanks(headings_[*place]).empty();
    return named ? std::string(trimmedBlanks(headings_[*place])) : fmt::format("{}", *place + 1);
}

bool RowConversion::isShort(const Row& row) const {
    return settings_.format.kind == SourceKind::Delimited && row.cells.size() < needed_;
}

bool RowConversion::isLeftOut(const Row& row) const {
    for (const Pattern& pattern : patterns_) {
        const auto matches = [&](const Cell& cell) {
            return matchesPattern(pattern.pattern, trimmedBlanks(cell.text));
        };
        const bool found =
            pattern.place ? matches(cellAt(row, pattern.place)) : std::ranges::any_of(row.cells, matches);
        if (!found) continue;
        leftOutBy_ = pattern.pattern;
        return true;
    }
    return false;
}

RowConversion::Use RowConversion::read(const Row& row, std::vector<SourceValue>& values) const {
    if (!asItIs_ && std::ranges::all_of(row.cells, isBlank)) return Use::Empty;
    if (isLeftOut(row)) return Use::LeftOut;
    if (asItIs_) {
        readWhole(row, values);
        return Use::Record;
    }
    values.resize(columns_.size());
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        const Column& column = columns_[i];
        column.reader.read(cellAt(row, column.place), cellAt(row, column.joined).text, values[i]);
    }
    return Use::Record;
}

void RowConversion::readWhole(const Row& row, std::vector<SourceValue>& values) const {
    values.resize(1);
    values[0].fits = true;
    values[0].text.clear();
    for (const Cell& cell : row.cells) values[0].text += cell.text;
    values[0].before = values[0].text;
}

}  // namespace kolmera
