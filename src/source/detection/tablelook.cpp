#include "source/detection/tablelook.h"

#include <algorithm>
#include <array>
#include <set>

#include "platform/lettercase.h"

namespace kolmera {
namespace {

constexpr std::size_t kKeptRows = 60;
constexpr std::size_t kLookedColumns = 1000;
constexpr std::string_view kThousandsSigns[] = {" ", ".", ",", "'", "\u00A0", "\u202F"};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// What a price list's headings are made of, in Swedish and English.
constexpr std::string_view kHeadingWords[] = {
    "artikel",  "artnr",    "art.nr",   "benämning", "beteckning",  "pris",     "ean",       "gtin",   "rabatt",
    "enhet",    "antal",    "valuta",   "datum",     "leverantör",  "kategori", "varugrupp", "grupp",  "moms",
    "article",  "item",     "product",  "produkt",   "description", "name",     "namn",      "price",  "unit",
    "currency", "date",     "discount", "quantity",  "qty",         "vikt",     "weight",    "nummer", "number",
    "rsk",      "e-nummer", "code",     "kod",       "brutto",      "netto",    "text",      "förp",   "supplier"};

bool isHeadingWord(std::string_view cell) {
    const std::string text = lowerCase(cell);
    return std::ranges::any_of(kHeadingWords,
                               [&](std::string_view word) { return text.find(word) != std::string::npos; });
}

/// A text's number without what may stand around it: "SEK 1.250,00 kr" gives "1.250,00". Empty when it is none.
std::string_view numberIn(std::string_view text) {
    const std::size_t first = text.find_first_of("0123456789");
    if (first == std::string_view::npos) return {};
    const std::size_t last = text.find_last_of("0123456789");
    const std::string_view around[] = {text.substr(0, first), text.substr(last + 1)};
    constexpr std::size_t kLongestCurrency = 6;
    for (const std::string_view side : around) {
        if (side.size() > kLongestCurrency) return {};
    }
    const std::string_view number = text.substr(first, last + 1 - first);
    for (std::size_t i = 0; i < number.size(); ++i) {
        if (isDigit(number[i]) ||
            std::string_view("., '\xC2\xA0\xE2\x80\xAF").find(number[i]) != std::string_view::npos)
            continue;
        return {};
    }
    return number;
}

/// A number, or what a workbook or a text means by one.
bool isNumeric(std::string_view text) {
    constexpr std::size_t kLongest = 40;
    return !text.empty() && text.size() <= kLongest && !numberIn(text).empty();
}

struct DatePieces {
    std::array<std::string_view, 3> pieces;
    char separator;
};
std::optional<DatePieces> datePieces(std::string_view text) {
    // A time of day may follow.
    text = text.substr(0, std::min(text.find_first_of(" T"), text.size()));
    const std::size_t first = text.find_first_not_of("0123456789");
    if (first == std::string_view::npos || (first != 1 && first != 2 && first != 4)) return std::nullopt;
    const char separator = text[first];
    if (separator != '-' && separator != '/' && separator != '.') return std::nullopt;
    const std::size_t second = text.find(separator, first + 1);
    if (second == std::string_view::npos) return std::nullopt;
    const DatePieces found{{text.substr(0, first), text.substr(first + 1, second - first - 1), text.substr(second + 1)},
                           separator};
    for (const std::string_view piece : found.pieces) {
        if (piece.empty() || piece.size() > 4 || piece.size() == 3 || !std::ranges::all_of(piece, isDigit))
            return std::nullopt;
    }
    return found;
}

int valueOf(std::string_view digits) {
    int value = 0;
    for (const char digit : digits) value = value * 10 + (digit - '0');
    return value;
}

/// Whether a sign stands in a number, and before three digits each time: "1 250 000,00".
bool groupsBy(std::string_view number, std::string_view sign) {
    std::size_t at = number.find(sign);
    if (at > 3) return false;  // it may not be there at all
    for (; at != std::string_view::npos; at = number.find(sign, at + 1)) {
        const std::string_view behind = number.substr(at + sign.size());
        if (behind.size() < 3 || !std::ranges::all_of(behind.substr(0, 3), isDigit)) return false;
        if (behind.size() > 3 && isDigit(behind[3])) return false;
    }
    return true;
}

bool isDay(int value) { return value >= 1 && value <= 31; }
bool isMonth(int value) { return value >= 1 && value <= 12; }

/// "20261123".
bool isCompactDate(std::string_view text) {
    if (text.size() != 8 || !std::ranges::all_of(text, isDigit)) return false;
    const int year = valueOf(text.substr(0, 4));
    return year >= 1980 && year <= 2060 && isMonth(valueOf(text.substr(4, 2))) && isDay(valueOf(text.substr(6)));
}

}  // namespace

void TableLook::look(std::string_view text, Column& column) const {
    if (const auto date = datePieces(text)) {
        const auto [a, b, c] = std::array{valueOf(date->pieces[0]), valueOf(date->pieces[1]), valueOf(date->pieces[2])};
        const bool fourFirst = date->pieces[0].size() == 4;
        const bool fourLast = date->pieces[2].size() == 4;
        const bool yearFirst = !fourLast && isMonth(b) && isDay(c);
        const bool dayFirst = !fourFirst && isDay(a) && isMonth(b);
        const bool monthFirst = !fourFirst && isMonth(a) && isDay(b);
        if (yearFirst || dayFirst || monthFirst) {
            ++column.dates;
            ++column.numbers;
            // Where two readings are possible, the habit of the sign decides: 26-11-23, 23.11.26, 23/11/26.
            if (yearFirst) column.yearFirst += fourFirst ? 10 : date->separator == '-' ? 1 : 0.2;
            if (dayFirst) column.dayFirst += date->separator == '-' && !fourLast ? 0.4 : 1;
            if (monthFirst) column.monthFirst += date->separator == '/' ? 0.6 : 0.1;
            // A value that rules a reading out.
            if (dayFirst && !monthFirst && !yearFirst) column.dayFirst += 10;
            if (monthFirst && !dayFirst && !yearFirst) column.monthFirst += 10;
            return;
        }
    }
    if (isCompactDate(text)) {
        ++column.dates;
        ++column.numbers;
        column.yearFirst += 1;
        return;
    }
    const std::string_view number = numberIn(text);
    if (number.empty()) return;
    ++column.numbers;
    const std::size_t comma = number.rfind(',');
    const std::size_t point = number.rfind('.');
    constexpr auto kNone = std::string_view::npos;
    for (const std::size_t sign : {0UL, 3UL, 4UL, 5UL}) {
        if (groupsBy(number, kThousandsSigns[sign])) column.groups[sign] += 1;
    }
    if (comma != kNone && point != kNone) {
        const bool isComma = comma > point;
        (isComma ? column.comma : column.point) += 5;
        column.groups[isComma ? 1 : 2] += 3;
        return;
    }
    if (comma == kNone && point == kNone) return;
    const bool isComma = comma != kNone;
    const char sign = isComma ? ',' : '.';
    const std::size_t at = isComma ? comma : point;
    const std::size_t behind = number.size() - at - 1;
    double& asDecimal = isComma ? column.comma : column.point;
    double& asGroups = column.groups[isComma ? 2 : 1];
    if (number.find(sign) != at) {
        if (behind == 3) asGroups += 3;
    } else if (behind != 3 || at > 3 || number.front() == '0') {
        asDecimal += 2;  // no groups of three
    } else {
        asDecimal += 0.2;  // one or the other; the rest of the column tells
        asGroups += 0.1;
    }
}

void TableLook::add(const Row& row) {
    const std::size_t filled =
        static_cast<std::size_t>(std::ranges::count_if(row.cells, [](const Cell& cell) { return !cell.text.empty(); }));
    if (filled == 0) return;
    if (filled >= rowsByCells_.size()) rowsByCells_.resize(filled + 1);
    ++rowsByCells_[filled];
    if (first_.size() < kKeptRows) {
        KeptRow& kept = first_.emplace_back(KeptRow{row.number, {}});
        for (const Cell& cell : row.cells) kept.cells.emplace_back(cell.text);
    }
    const std::size_t count = std::min(row.cells.size(), kLookedColumns);
    if (columns_.size() < count) columns_.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const Cell& cell = row.cells[i];
        if (cell.text.empty()) continue;
        ++columns_[i].filled;
        if (cell.kind == Cell::Kind::Text) {
            look(trimmed(cell.text), columns_[i]);
        } else {
            ++columns_[i].numbers;
        }
    }
}

/// How many cells of a row are filled in most rows; wide rows count for more, because what stands above a table is
/// narrow.
std::size_t TableLook::usualCells() const {
    std::size_t usual = 1;
    for (std::size_t cells = 1; cells < rowsByCells_.size(); ++cells) {
        if (rowsByCells_[cells] * cells >= rowsByCells_[usual] * usual) usual = cells;
    }
    return usual;
}

/// The place of the heading among the first rows; their number when there is none, and then `confidence` is of that.
std::size_t TableLook::headingAmong(std::size_t usual, double& confidence) const {
    // Columns of numbers are what tells a heading from a row: a heading has none there.
    std::vector<bool> isNumbers(columns_.size());
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        const auto& [filled, numbers] = std::pair(columns_[i].filled, columns_[i].numbers);
        isNumbers[i] = numbers > 0 && numbers * 10 >= (filled - 1) * 6;
    }
    const bool anyNumbers = std::ranges::find(isNumbers, true) != isNumbers.end();
    std::size_t heading = first_.size();
    std::size_t headingWords = 0;
    for (std::size_t i = 0; i < first_.size(); ++i) {
        const std::vector<std::string>& cells = first_[i].cells;
        std::size_t filled = 0;
        std::size_t numbers = 0;
        std::size_t words = 0;
        std::set<std::string> different;
        for (std::size_t column = 0; column < cells.size(); ++column) {
            if (cells[column].empty()) continue;
            ++filled;
            different.insert(lowerCase(cells[column]));
            if (isHeadingWord(cells[column])) ++words;
            if ((isNumeric(cells[column]) || datePieces(cells[column])) &&
                (column >= isNumbers.size() || isNumbers[column] || !anyNumbers))
                ++numbers;
        }
        if (filled * 2 < usual || (usual > 1 && filled < 2)) continue;  // above the table, or a group's name
        if (numbers > 0 && words < 2) break;                            // the first row of the table
        if (!anyNumbers && i > 0 && words == 0) break;
        if (words >= headingWords && (heading == first_.size() || words > headingWords)) {
            heading = i;
            headingWords = words;
        }
        // Names of columns are different ones.
        if (heading == i && different.size() < filled && headingWords == 0) heading = first_.size();
        if (!anyNumbers && words == 0) break;
        if (headingWords >= 2 && filled >= usual) break;
    }
    if (heading == first_.size()) {
        confidence = anyNumbers ? 0.9 : 0.5;
    } else if (headingWords == 0 && !anyNumbers) {
        heading = first_.size();
        confidence = 0.4;
    } else {
        confidence = headingWords > 1 ? 0.97 : headingWords == 1 ? 0.9 : 0.8;
    }
    return heading;
}

void TableLook::detectHeadings(Detection& detection) const {
    const std::size_t usual = usualCells();
    const std::size_t heading = headingAmong(usual, detection.confidence.headings);
    detection.format.headings = heading < first_.size();
    std::size_t begin = heading;
    if (!detection.format.headings) {
        const auto isRow = [usual](const KeptRow& row) {
            const auto filled = std::ranges::count_if(row.cells, [](const std::string& cell) { return !cell.empty(); });
            return static_cast<std::size_t>(filled) * 2 >= usual;
        };
        begin = static_cast<std::size_t>(std::ranges::find_if(first_, isRow) - first_.begin());
    }
    // Rows that are empty need no leaving out.
    detection.format.skip = begin == 0 || begin == first_.size() ? 0 : first_[begin].number - 1;
}

void TableLook::detectSigns(Detection& detection) const {
    double comma = 0;
    double point = 0;
    std::array<double, 6> groups{};
    std::array<double, 3> orders{};
    bool anyDates = false;
    for (const Column& column : columns_) {
        if (column.numbers == 0 || column.numbers * 10 < (column.filled - 1) * 6) continue;  // one is the heading
        // Article numbers of eight digits may look like dates; a column of dates has nothing else.
        if (column.dates * 10 >= column.numbers * 9) {
            anyDates = true;
            orders[0] += column.yearFirst;
            orders[1] += column.dayFirst;
            orders[2] += column.monthFirst;
            continue;
        }
        comma += column.comma;
        point += column.point;
        for (std::size_t i = 0; i < groups.size(); ++i) groups[i] += column.groups[i];
    }
    SourceFormat& format = detection.format;
    SourceConfidence& confidence = detection.confidence;
    const double both = comma + point;
    // Where nothing tells, what goes with the delimiter.
    const bool byHabit = both == 0;
    const bool isComma =
        byHabit ? format.kind == SourceKind::Fixed ||
                      (format.kind == SourceKind::Delimited && format.delimiter != ',' && format.delimiter != '|')
                : comma > point;
    format.decimalSign = isComma ? ',' : '.';
    const bool knowsNumbers =
        format.kind == SourceKind::Xlsx || format.kind == SourceKind::Xls || format.kind == SourceKind::Ods;
    confidence.decimalSign = !byHabit ? std::max(comma, point) / (both + 0.3) : knowsNumbers ? 1 : 0.5;

    groups[isComma ? 2 : 1] = 0;
    const auto most = std::ranges::max_element(groups);
    format.thousandsSign = *most >= 1 ? kThousandsSigns[most - groups.begin()] : "";
    confidence.thousandsSign = *most >= 1 ? *most / (*most + 0.3) : 0.9;

    const double allOrders = orders[0] + orders[1] + orders[2];
    const auto order = std::ranges::max_element(orders);
    format.dateOrder =
        !anyDates || allOrders == 0 ? DateOrder::Unknown : static_cast<DateOrder>(order - orders.begin() + 1);
    confidence.dateOrder = format.dateOrder == DateOrder::Unknown ? 1 : *order / allOrders;
}

}  // namespace kolmera
