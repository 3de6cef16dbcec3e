#include "platform/date.h"

#include <gtest/gtest.h>

namespace kolmera {
namespace {

TEST(Date, DayNumbersOfTheSuite) {
    const struct {
        const char *fault, *iso;
        int day;
    } cases[] = {
        {"day zero moved", "1899-12-30", 0},
        {"1900 taken for a leap year", "1900-03-01", 61},
        {"days before zero", "0100-01-01", -657434},
        {"last day of the range", "9999-12-31", 2958465},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(Date::fromIso(c.iso), Date{c.day});
        EXPECT_EQ(Date{c.day}.iso(), c.iso);
    }
}

TEST(Date, EveryDayComesBackFromItsText) {
    for (int day = 0; day <= 2958465; ++day) {
        const Date date{day};
        const std::string iso = date.iso();
        ASSERT_EQ(Date::fromIso(iso), date) << iso;
        ASSERT_EQ(std::to_string(date.year()), iso.substr(0, 4));
    }
}

TEST(Date, RefusesWhatIsNoDay) {
    const struct {
        const char *fault, *iso;
    } cases[] = {
        {"29 February in a common year", "2023-02-29"},
        {"month 13", "2026-13-01"},
        {"day 0", "2026-01-00"},
        {"year of two digits", "0099-01-01"},
        {"a sign read as a digit", "2026-+1-01"},
        {"text behind the day", "2026-01-01 "},
    };
    for (const auto& c : cases) EXPECT_FALSE(Date::fromIso(c.iso)) << c.fault;
    EXPECT_FALSE(Date::fromCivil(10000, 1, 1));
}

}  // namespace
}  // namespace kolmera
