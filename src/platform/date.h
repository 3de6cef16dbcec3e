#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kolmera {

/// A whole day without time: the number of days since 1899-12-30, the day numbers of the suite.
struct Date {
    std::int32_t day = 0;

    /// The date of a calendar day, or nothing when there is no such day (month 1-12, year 100-9999).
    static std::optional<Date> fromCivil(int year, int month, int day);
    /// Reads exactly "YYYY-MM-DD".
    static std::optional<Date> fromIso(std::string_view text);
    /// Today by the machine's clock and time zone.
    static Date today();

    [[nodiscard]] int year() const;
    [[nodiscard]] std::string iso() const;  ///< "YYYY-MM-DD", as dates are stored

    auto operator<=>(const Date&) const = default;
};

}  // namespace kolmera
