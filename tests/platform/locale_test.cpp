#include "platform/locale.h"

#include <gtest/gtest.h>

#include <charconv>
#include <clocale>
#include <cstdlib>
#include <limits>
#include <random>

namespace kolmera {
namespace {

const Locale kSwedish(Locale::Kind::Swedish);
const Locale kEnglish(Locale::Kind::English);

TEST(LocaleNumbers, ReadsWholeTextsOnly) {
    const struct {
        const char *fault, *text;
        std::optional<double> swedish, english;
    } cases[] = {
        {"decimal comma", "12,5", 12.5, std::nullopt},
        {"decimal point", "12.5", std::nullopt, 12.5},
        {"sign and blanks around", " -3,5\t", -3.5, std::nullopt},
        {"nothing before the sign", ",5", 0.5, std::nullopt},
        {"nothing behind the sign", "5,", 5, std::nullopt},
        {"groups behind blanks", "1 234 567,89", 1234567.89, std::nullopt},
        {"groups behind no-break spaces", "1\u00a0234", 1234, std::nullopt},
        {"groups behind commas", "1,234,567.89", std::nullopt, 1234567.89},
        {"a comma read as decimal sign and as group", "1,234", 1.234, 1234},
        {"a short last group", "1 23", std::nullopt, std::nullopt},
        {"a long first group", "1234 567", std::nullopt, std::nullopt},
        {"a group sign at the start", ",234", 0.234, std::nullopt},
        {"a group sign before the decimal sign", "1 ,5", std::nullopt, std::nullopt},
        {"two group signs", "1  234", std::nullopt, std::nullopt},
        {"negative exponents", "25e-1", 2.5, 2.5},
        {"an exponent without digits", "1E", std::nullopt, std::nullopt},
        {"text behind", "12abc", std::nullopt, std::nullopt},
        {"infinity", "inf", std::nullopt, std::nullopt},
        {"hexadecimal", "0x1F", std::nullopt, std::nullopt},
        {"two decimal signs", "1,2,3", std::nullopt, std::nullopt},
        {"only a sign", "-", std::nullopt, std::nullopt},
        {"too large for a double", "1E999", std::nullopt, std::nullopt},
        {"an exponent that overflows an int", "1E4294967296", std::nullopt, std::nullopt},
        {"zero of any size", "0E999", 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(kSwedish.parseNumber(c.text), c.swedish);
        EXPECT_EQ(kEnglish.parseNumber(c.text), c.english);
    }
    EXPECT_FALSE(kSwedish.parseNumber(std::string_view("5\0", 2))) << "NUL taken for the end";
    EXPECT_FALSE(std::signbit(*kSwedish.parseNumber("-0"))) << "a negative zero in the database";
}

TEST(LocaleNumbers, RoundsLikeTheSystemsReader) {
    std::mt19937_64 random(1);
    const auto below = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    for (int i = 0; i < 200'000; ++i) {
        std::string text;
        for (int digits = 1 + below(24); digits > 0; --digits) text += static_cast<char>('0' + below(10));
        text.insert(static_cast<std::size_t>(below(static_cast<int>(text.size()) + 1)), 1, '.');
        if (below(3) == 0) text.append("e").append(std::to_string(below(60) - 30));
        double expected = 0;
        std::from_chars(text.data(), text.data() + text.size(), expected);
        ASSERT_EQ(kEnglish.parseNumber(text), expected) << text;
    }
}

TEST(LocaleNumbers, Writes) {
    const struct {
        const char* fault;
        double value;
        const char *general, *fixed;
    } cases[] = {
        {"decimal sign", 13.5, "13,5", "13,50"},
        {"digits beyond the fifteenth shown", 0.1 + 0.2, "0,3", "0,30"},
        {"negative zero", -0.0, "0", "0,00"},
        {"an exponent too early", 123456789012345, "123456789012345", "123456789012345,00"},
        {"small e", 1e15, "1E+15", "1000000000000000,00"},
        {"halves of the binary value", 2.675, "2,675", "2,67"},
        {"exact halves away from even", 0.125, "0,125", "0,12"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(kSwedish.formatNumber(c.value), c.general);
        EXPECT_EQ(kSwedish.formatFixed(c.value, 2), c.fixed);
    }
    EXPECT_EQ(kEnglish.formatNumber(13.5), "13.5");
    EXPECT_EQ(kSwedish.formatSingle(33.3F), "33,3");
    EXPECT_EQ(kSwedish.formatFixed(-0.001, 2), "0,00");
    EXPECT_EQ(kSwedish.formatFixed(1e300, 15).size(), 317U);
}

TEST(LocaleNumbers, LeadingNumber) {
    const struct {
        const char *fault, *text;
        double expected;
    } cases[] = {
        {"a comma taken for the decimal point", "12,5 kr", 12},
        {"blanks before and within", "  1 234kr", 1234},
        {"plus", "+3", 3},
        {"two signs", "--3", 0},
        {"plus before minus", "+-3", 0},
        {"words", "inf", 0},
        {"an e without a number", "e5", 0},
        {"an e behind a number", "5 e", 5},
        {"nothing", "", 0},
        {"out of range", "1e999", 0},
        {"a second point", "1.2.3", 1.2},
    };
    for (const auto& c : cases) EXPECT_EQ(leadingNumber(c.text), c.expected) << c.fault;
}

TEST(Rounding, HalvesGoToTheEvenNeighbour) {
    const struct {
        const char* fault;
        double value;
        int decimals;
        double expected;
    } cases[] = {
        {"half down", 3.5, 0, 4},
        {"negative half", -2.5, 0, -2},
        {"an exact half of a hundredth", 0.125, 2, 0.12},
        {"corrected: 1.005 is less", 1.005, 2, 1.0},
        {"corrected: the product is a half", 2.675, 2, 2.68},
        {"fifteen decimals", 1e-15, 15, 1e-15},
        {"overflow to infinity", 1e300, 15, 1e300},
    };
    for (const auto& c : cases) EXPECT_EQ(roundDecimals(c.value, c.decimals), c.expected) << c.fault;
}

TEST(LocaleDates, SpellingsOfUsers) {
    const struct {
        const char *fault, *text;
        const char *swedish, *english;  ///< "" for no date
    } cases[] = {
        {"ISO", "2026-11-22", "2026-11-22", "2026-11-22"},
        {"slashes behind a year", "2026/11/22", "2026-11-22", "2026-11-22"},
        {"day and month of Swedish letters", "22/11 2026", "2026-11-22", "2026-11-22"},
        {"an ambiguous day", "2/11/2026", "2026-11-02", "2026-02-11"},
        {"points", "22.11.2026", "2026-11-22", "2026-11-22"},
        {"short year first", "26-11-22", "2026-11-22", "2022-11-26"},
        {"short year of the last century", "99-12-31", "1999-12-31", "1999-12-31"},
        {"the border of short years", "29-01-01", "2029-01-01", "2001-01-29"},
        {"short year last", "11/12/26", "2026-12-11", "2026-11-12"},
        {"month names", "22 november 2026", "2026-11-22", "2026-11-22"},
        {"a point behind the name", "22 okt. 2026", "2026-10-22", "2026-10-22"},
        {"a leading article", "den 22 november 2026", "2026-11-22", "2026-11-22"},
        {"English names", "Oct 22, 2026", "2026-10-22", "2026-10-22"},
        {"May in two languages", "1 maj 2026", "2026-05-01", "2026-05-01"},
        {"a time stamp", "2026-11-22T10:30:00Z", "2026-11-22", "2026-11-22"},
        {"a time stamp without a time", "2026-11-22T", "2026-11-22", "2026-11-22"},
        {"an English time", "11/22/2026 12:00:00 AM", "2026-11-22", "2026-11-22"},
        {"29 February of a common year", "2023-02-29", "", ""},
        {"digits without separators", "20230230", "", ""},
        {"an empty part", "2026--1--2", "", ""},
        {"no year", "22/11", "", ""},
        {"a number", "12.5", "", ""},
        {"a word that begins like no month", "22 novx 2026", "", ""},
        {"text behind", "2026-11-22x", "", ""},
        {"a month's name for the day", "2026 11 nov", "", ""},
        {"nothing", "", "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const auto text = [&c](const Locale& locale) {
            const auto date = locale.parseDate(c.text);
            return date ? date->iso() : std::string();
        };
        EXPECT_EQ(text(kSwedish), c.swedish);
        EXPECT_EQ(text(kEnglish), c.english);
    }
}

TEST(LocaleDates, WritesTheShortDateAndReadsItAgain) {
    const Date date = *Date::fromCivil(2026, 1, 9);
    EXPECT_EQ(kSwedish.formatDate(date), "2026-01-09");
    EXPECT_EQ(kEnglish.formatDate(date), "1/9/2026");
    EXPECT_EQ(kEnglish.parseDate("1/9/2026"), date);
}

TEST(LocaleOfUser, GoesByTheFirstNameThatIsSet) {
    const struct {
        const char* fault;
        const char *all, *numeric, *lang;
        Locale::Kind expected;
    } cases[] = {
        {"Swedish", "", "", "sv_SE.UTF-8", Locale::Kind::Swedish},
        {"LANG before LC_NUMERIC", "", "en_GB.UTF-8", "sv_SE.UTF-8", Locale::Kind::English},
        {"LC_NUMERIC before LC_ALL", "sv_SE", "en_GB", "en_GB", Locale::Kind::Swedish},
        {"the C locale of services hides the user's", "C.UTF-8", "POSIX", "en_US", Locale::Kind::English},
        {"the C locale taken for English", "C", "", "", Locale::Kind::Swedish},
        {"others", "", "", "de_DE", Locale::Kind::Swedish},
        {"none", "", "", "", Locale::Kind::Swedish},
    };
    for (const auto& c : cases) {
        setenv("LC_ALL", c.all, 1);
        setenv("LC_NUMERIC", c.numeric, 1);
        setenv("LANG", c.lang, 1);
        EXPECT_EQ(Locale::ofUser().kind(), c.expected) << c.fault;
    }
}

}  // namespace
}  // namespace kolmera
