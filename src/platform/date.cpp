#include "platform/date.h"

#include <charconv>
#include <chrono>
#include <ctime>

namespace kolmera {

namespace {

constexpr std::chrono::sys_days kDayZero = std::chrono::year{1899} / 12 / 30;

std::chrono::year_month_day civil(Date date) {
    return std::chrono::year_month_day{kDayZero + std::chrono::days{date.day}};
}

/// The number that consists of exactly these digits, or -1.
int digits(std::string_view text) {
    int number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return -1;
        number = number * 10 + (c - '0');
    }
    return number;
}

/// Puts a number of so many digits into a text, from a place on.
void writeDigits(std::string& text, std::size_t at, std::size_t digitCount, unsigned number) {
    for (std::size_t i = digitCount; i-- > 0; number /= 10) text[at + i] = static_cast<char>('0' + number % 10);
}

}  // namespace

std::optional<Date> Date::fromCivil(int year, int month, int day) {
    if (year < 100 || year > 9999 || month < 1 || month > 12 || day < 1 || day > 31) return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                                           std::chrono::day{static_cast<unsigned>(day)}};
    if (!date.ok()) return std::nullopt;
    return Date{static_cast<std::int32_t>((std::chrono::sys_days{date} - kDayZero).count())};
}

std::optional<Date> Date::fromIso(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
    return fromCivil(digits(text.substr(0, 4)), digits(text.substr(5, 2)), digits(text.substr(8, 2)));
}

Date Date::today() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return fromCivil(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday).value_or(Date{});
}

int Date::year() const { return static_cast<int>(civil(*this).year()); }

std::string Date::iso() const {
    const std::chrono::year_month_day date = civil(*this);
    std::string text = "0000-00-00";
    writeDigits(text, 0, 4, static_cast<unsigned>(static_cast<int>(date.year())));
    writeDigits(text, 5, 2, static_cast<unsigned>(date.month()));
    writeDigits(text, 8, 2, static_cast<unsigned>(date.day()));
    return text;
}

}  // namespace kolmera
