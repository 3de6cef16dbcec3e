#include "import/rows/fieldconversion.h"

#include <algorithm>

#include "platform/digits.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

bool allDigits(std::string_view text) { return std::ranges::all_of(text, isDigit); }

int digits(std::string_view text) {
    int number = 0;
    for (const char c : text) number = number * 10 + (c - '0');
    return number;
}

std::optional<Date> fromYearMonthDay(std::string_view text) {
    if (!allDigits(text)) return std::nullopt;
    return Date::fromCivil(digits(text.substr(0, 4)), digits(text.substr(4, 2)), digits(text.substr(6, 2)));
}

/// YYMMDD in the century of `Idag`. A day beyond the month's last, up to 99, means the last.
std::optional<Date> fromShortYear(std::string_view text, Date Idag) {
    constexpr int kEveryMonthHas = 28;
    if (!allDigits(text)) return std::nullopt;
    const int year = Idag.year() / 100 * 100 + digits(text.substr(0, 2));
    const int month = digits(text.substr(2, 2));
    int day = digits(text.substr(4, 2));
    std::optional<Date> date = Date::fromCivil(year, month, day);
    while (!date && day > kEveryMonthHas) date = Date::fromCivil(year, month, --day);
    return date;
}

}  // namespace

std::optional<double> readNumber(std::string_view text, char division, const Locale& locale) {
    const char sign = locale.decimalSign();
    std::optional<double> number;
    if (sign == '.' || text.find('.') == std::string_view::npos) {
        number = locale.parseNumber(text);
    } else {
        number = locale.parseNumber(replaceAll(text, ".", std::string_view(&sign, 1)));
    }
    if (!number) return std::nullopt;
    switch (division) {
        case '1':
            return *number / 10;
        case '2':
            return *number / 100;
        case '3':
            return *number / 1000;
        default:
            return *number;
    }
}

double parseNumber(std::string_view text, char division, const Locale& locale) {
    return readNumber(text, division, locale).value_or(0);
}

bool TolkaJaNej(std::string_view text) { return text.find_first_of("J1Y") != std::string_view::npos; }

std::optional<Date> TolkaDatum(std::string_view text, Date Idag, const Locale& locale) {
    if (leadingNumber(text) == 0) return std::nullopt;
    if (text.size() == 4) return fromShortYear(std::string(text) + "01", Idag);
    if (text.size() == 6) return fromShortYear(text, Idag);
    if (text.size() == 8) {
        if (const auto date = fromYearMonthDay(text)) return date;
    }
    return locale.parseDate(text);
}

std::string memoText(std::string_view text) {
    if (text.find('\n') == std::string_view::npos || text.find("\r\n") != std::string_view::npos) {
        return std::string(text);
    }
    std::string memo = replaceAll(text, "\n", "\r\n");
    if (memo.starts_with('"')) memo.erase(0, 1);
    if (memo.ends_with('"')) memo.pop_back();
    return memo;
}

}  // namespace kolmera
