#include "import/rows/fieldconversion.h"

#include <gtest/gtest.h>

namespace kolmera::test {
namespace {

const Locale kSwedish(Locale::Kind::Swedish);
const Locale kEnglish(Locale::Kind::English);

TEST(ParseNumber, TakesTheWholeTextOrNothing) {
    const struct {
        const char *fault, *text;
        char division;
        Locale locale;
        double expected;
    } cases[] = {
        {"the point is no decimal sign in Swedish", "12.50", 'I', kSwedish, 12.5},
        {"the comma is no decimal sign in Swedish", "12,50", 'I', kSwedish, 12.5},
        {"the point is lost in English", "12.50", 'I', kEnglish, 12.5},
        {"one implied decimal", "1250", '1', kSwedish, 125},
        {"two implied decimals", "1250", '2', kSwedish, 12.5},
        {"three implied decimals", "1250", '3', kSwedish, 1.25},
        {"a written decimal switches implied ones off", "12,5", '2', kSwedish, 0.125},
        {"the sign is lost", "-3.5", 'I', kSwedish, -3.5},
        {"a beginning counts as the number", "12abc", 'I', kSwedish, 0},
        {"a unit counts as part of the number", "12,5 kr", 'I', kSwedish, 0},
        {"two decimal signs are read to the second", "1.2.3", 'I', kSwedish, 0},
        {"hexadecimal is read", "0x1F", 'I', kSwedish, 0},
        {"nan gets into the database", "nan", 'I', kSwedish, 0},
        {"inf gets into the database", "inf", '1', kSwedish, 0},
        {"an empty cell is not 0", "", '2', kSwedish, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(parseNumber(c.text, c.division, c.locale), c.expected);
    }
}

TEST(TolkaJaNej, LooksForThreeSigns) {
    const struct {
        const char* text;
        bool expected;
    } cases[] = {{"Ja", true}, {"JA", true}, {"1", true},    {"10", true}, {"Yes", true}, {"ja", false},
                 {"0", false}, {"", false},  {"yes", false}, {"N", false}, {"-1", true}};
    for (const auto& c : cases) EXPECT_EQ(TolkaJaNej(c.text), c.expected) << c.text;
}

TEST(TolkaDatum, ReadsShortAndLongDates) {
    const struct {
        const char *fault, *text;
        const char* expected;  // empty: none
    } cases[] = {
        {"four figures are not the first of a month", "9902", "2099-02-01"},
        {"six figures", "261122", "2026-11-22"},
        {"six figures with leading zeros are 0", "000101", "2000-01-01"},
        {"the last day is not found", "230231", "2023-02-28"},
        {"the last day of a leap year", "240231", "2024-02-29"},
        {"a day far beyond the month", "311299", "2031-12-31"},
        {"day 0 is moved to another day", "230200", ""},
        {"month 13", "231301", ""},
        {"eight figures", "20261122", "2026-11-22"},
        {"the last-day rule reaches eight figures", "20230230", ""},
        {"a spelled date", "2026-11-22", "2026-11-22"},
        {"eight characters that are spelled", "26-11-22", "2026-11-22"},
        {"a text is a date", "snart", ""},
        {"0 is a date", "0", ""},
        {"zeros are a date", "000000", ""},
        {"an empty cell is a date", "", ""},
        {"letters among six figures", "26112x", ""},
        {"a short year that is spelled counts as six figures", "1/2-26", ""},
    };
    const Date Idag = *Date::fromIso("2026-11-22");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const auto date = TolkaDatum(c.text, Idag, kSwedish);
        EXPECT_EQ(date ? date->iso() : "", c.expected);
    }
    EXPECT_EQ(TolkaDatum("991231", *Date::fromIso("1998-05-01"), kSwedish)->iso(), "1999-12-31")
        << "the century is not the current one";
}

TEST(MemoText, TurnsLoneLineFeeds) {
    const struct {
        const char *fault, *text, *expected;
    } cases[] = {
        {"quotes around a text of several lines", "\"rad 1\nrad 2\"", "rad 1\r\nrad 2"},
        {"quotes go although the line ends are right", "\"rad 1\r\nrad 2\"", "\"rad 1\r\nrad 2\""},
        {"quotes go from a single line", "\"rad 1\"", "\"rad 1\""},
        {"more than one quote goes", "\"\"a\nb\"\"", "\"a\r\nb\""},
        {"a lone quote is both ends", "\n\"", "\r\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(memoText(c.text), c.expected);
    }
}

}  // namespace
}  // namespace kolmera::test
