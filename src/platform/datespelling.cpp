#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/digits.h"
#include "platform/lettercase.h"
#include "platform/locale.h"

namespace kolmera {

namespace {

constexpr std::array<std::array<std::string_view, 12>, 2> kMonthNames = {{
    {"januari", "februari", "mars", "april", "maj", "juni", "juli", "augusti", "september", "oktober", "november",
     "december"},
    {"january", "february", "march", "april", "may", "june", "july", "august", "september", "october", "november",
     "december"},
}};

/// The order of the three parts of a date.
enum class Order : std::uint8_t { YearMonthDay, DayMonthYear, MonthDayYear, None };
using Orders = std::array<Order, 3>;

/// One of the three parts: a number or the name of a month.
struct Part {
    int number = 0;
    std::size_t digits = 0;  ///< 0 for a name
};

struct Spelling {
    std::array<Part, 3> parts;
    char separator = ' ';  ///< between the first two parts
};

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

template <typename Predicate>
std::string_view takeWhile(std::string_view& text, Predicate predicate) {
    const auto end = std::ranges::find_if_not(text, predicate);
    const std::string_view taken = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(taken.size());
    return taken;
}

void skipBlanks(std::string_view& text) {
    takeWhile(text, [](char c) { return c == ' '; });
}

/// 1 to 12 for a month's name or its beginning of three letters or more, with or without a point; 0 for other words.
int monthNumber(std::string_view word) {
    if (word.size() < 3) return 0;
    for (const auto& names : kMonthNames) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (startsWithNoCase(names[i], word)) return static_cast<int>(i) + 1;
        }
    }
    return 0;
}

std::optional<Part> takePart(std::string_view& text) {
    if (const std::string_view digits = takeWhile(text, isDigit); !digits.empty()) {
        if (digits.size() > 4) return std::nullopt;
        int number = 0;
        for (const char c : digits) number = number * 10 + (c - '0');
        return Part{number, digits.size()};
    }
    const int month = monthNumber(takeWhile(text, isLetter));
    if (month == 0) return std::nullopt;
    if (text.starts_with('.')) text.remove_prefix(1);
    return Part{month, 0};
}

/// Takes blanks with at most one sign among them; '\0' when nothing separates, as around a name ("22nov2026").
char takeSeparator(std::string_view& text) {
    constexpr std::string_view kSigns = "-/.,";
    const std::size_t before = text.size();
    skipBlanks(text);
    char separator = text.size() < before ? ' ' : '\0';
    if (!text.empty() && kSigns.find(text.front()) != std::string_view::npos) {
        separator = text.front();
        text.remove_prefix(1);
        skipBlanks(text);
    }
    return separator;
}

/// Whether the rest is a time of day ("10:30", "T10:30:00.000", "12:00:00 AM"), which a date leaves out, or nothing.
bool isTimeOrNothing(std::string_view rest) {
    if (rest.empty()) return true;
    if (rest.front() != ' ' && rest.front() != 'T') return false;
    rest.remove_prefix(1);
    skipBlanks(rest);
    if (rest.empty()) return true;
    const bool hours = !takeWhile(rest, isDigit).empty() && rest.starts_with(':');
    return hours && rest.find_first_not_of("0123456789:. +ZAPMapm") == std::string_view::npos;
}

std::optional<Spelling> spellingOf(std::string_view text) {
    Spelling spelling;
    for (std::size_t i = 0; i < spelling.parts.size(); ++i) {
        const char separator = i > 0 ? takeSeparator(text) : ' ';
        if (i == 1) spelling.separator = separator;
        const std::optional<Part> part = takePart(text);
        if (!part) return std::nullopt;
        spelling.parts[i] = *part;
    }
    if (!isTimeOrNothing(text)) return std::nullopt;
    return spelling;
}

/// Four digits are the year itself; two are a year of 1930 to 2029.
int fullYear(const Part& part) {
    if (part.digits == 4) return part.number;
    if (part.digits != 2) return 0;
    return part.number < 30 ? 2000 + part.number : 1900 + part.number;
}

std::optional<Date> dateInOrder(const std::array<Part, 3>& parts, Order order) {
    constexpr struct { std::size_t year, month, day; } kPlaces[] = {{0, 1, 2}, {2, 1, 0}, {2, 0, 1}};
    const auto& place = kPlaces[static_cast<std::size_t>(order)];
    const Part& year = parts[place.year];
    const Part& month = parts[place.month];
    const Part& day = parts[place.day];
    if (day.digits < 1 || day.digits > 2 || month.digits > 2) return std::nullopt;
    return Date::fromCivil(fullYear(year), month.number, day.number);
}

/// The orders in which a date is tried; the first that gives one counts. In Swedish "/" and "." stand in day/month, "-"
/// in year-month-day.
Orders ordersOf(const Spelling& spelling, Locale::Kind kind) {
    using enum Order;
    const auto& parts = spelling.parts;
    if (parts[0].digits == 0) return {MonthDayYear, None, None};
    if (parts[0].digits == 4) return {YearMonthDay, None, None};
    if (parts[1].digits == 0) return {DayMonthYear, YearMonthDay, None};
    if (kind == Locale::Kind::English) return {MonthDayYear, DayMonthYear, YearMonthDay};
    if (spelling.separator == '-') return {YearMonthDay, DayMonthYear, MonthDayYear};
    return {DayMonthYear, YearMonthDay, MonthDayYear};
}

}  // namespace

std::optional<Date> Locale::parseDate(std::string_view text) const {
    text = trimmed(text);
    if (startsWithNoCase(text, "den ")) text.remove_prefix(4);
    const std::optional<Spelling> spelling = spellingOf(text);
    if (!spelling) return std::nullopt;
    for (const Order order : ordersOf(*spelling, kind_)) {
        if (order == Order::None) break;
        if (const std::optional<Date> date = dateInOrder(spelling->parts, order)) return date;
    }
    return std::nullopt;
}

}  // namespace kolmera
