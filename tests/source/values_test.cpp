#include "source/conversion/values.h"

#include <gtest/gtest.h>

#include "source/conversion/rowconversion.h"

namespace kolmera::test {
namespace {

TEST(SourceValues, Numbers) {
    const NumberSigns swedish{',', "."}, blanks{',', " "}, english{'.', ","}, none{',', ""};
    const struct {
        const char* fault;
        const char* text;
        const NumberSigns& signs;
        const char* number;  ///< nullptr: none
    } cases[] = {
        {"currency behind kept", "1.250,00 kr", swedish, "1250.00"},
        {"currency in front kept", "SEK 12.50", english, "12.50"},
        {"symbol taken for a digit", "€1,250.5", english, "1250.5"},
        {"minus behind lost", "12,50-", swedish, "-12.50"},
        {"typographic minus refused", "\u221212,5", swedish, "-12.5"},
        {"minus before the currency refused", "-kr 5", swedish, "-5"},
        {"whole crowns taken for a negative price", "125:-", swedish, "125"},
        {"comma and dash taken for a negative price", "1 125,-", blanks, "1125"},
        {"no-break blank refused", "1\u00A0250,00 kr", blanks, "1250.00"},
        {"narrow blank refused", "1\u202F250,00", none, "1250.00"},
        {"a blank refused where points are usual", "1 250,50", swedish, "1250.50"},
        {"Swiss sign refused", "1’250.00", {'.', "'"}, "1250.00"},
        {"decimal sign at the end refused", "12,", swedish, "12"},
        {"no digit before the sign refused", ",5", swedish, "0.5"},
        {"decimals cut", "0,12345", swedish, "0.12345"},
        {"decimal point taken for a thousands sign", "12.50", swedish, nullptr},
        {"thousands sign taken for a decimal sign", "1,250", {'.', ""}, nullptr},
        {"groups of two", "1.25.000,00", swedish, nullptr},
        {"four digits before a group", "1250.000", swedish, nullptr},
        {"price per hundred taken for a price", "12,50 kr/100", swedish, nullptr},
        {"a word taken for a currency", "12 st", swedish, nullptr},
        {"nothing taken for 0", "kr", swedish, nullptr},
        {"a dash taken for 0", "-", swedish, nullptr},
        {"two numbers", "12 50,00 13", swedish, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(numberText(c.text, c.signs).value_or("none"), c.number == nullptr ? "none" : c.number);
    }
}

TEST(SourceValues, Dates) {
    using enum DateOrder;
    const struct {
        const char* fault;
        const char* text;
        DateOrder order;
        const char* date;  ///< empty: none
    } cases[] = {
        {"day and month exchanged", "03/04/2026", DayMonthYear, "20260403"},
        {"month and day exchanged", "03/04/2026", MonthDayYear, "20260304"},
        {"short year in the wrong century", "1.2.26", DayMonthYear, "20260201"},
        {"turn of the short years taken for the next century", "1.2.70", DayMonthYear, "19700201"},
        {"year in front read by the order", "2026-04-03", DayMonthYear, "20260403"},
        {"digits without separators", "030426", DayMonthYear, "20260403"},
        {"eight digits read as a day first", "20260403", Unknown, "20260403"},
        {"day first not obeyed in eight digits", "03042026", DayMonthYear, "20260403"},
        {"time of day refused", "2026-04-03T00:00:00", Unknown, "20260403"},
        {"name of a month refused", "3 april 2026", DayMonthYear, "20260403"},
        {"unknown order guessed", "03/04/2026", Unknown, ""},
        {"no such day made the last", "31.2.2026", DayMonthYear, ""},
        {"text behind taken for a time", "2026-04-03 x", Unknown, ""},
        {"year of three digits", "1.2.202", DayMonthYear, ""},
        {"month of three digits", "2026-004-03", Unknown, ""},
        {"a price taken for a date", "12,50", DayMonthYear, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(dateText(c.text, c.order).value_or(""), c.date);
    }
}

TEST(SourceValues, Rules) {
    using enum ValueRule::Zeros;
    using Kind = Cell::Kind;
    const auto rule = [](auto&& change) {
        ValueRule made;
        change(made);
        return made;
    };
    SourceFormat format;
    format.decimalSign = ',';
    format.thousandsSign = ".";
    format.dateOrder = DateOrder::DayMonthYear;
    const struct {
        const char* fault;
        ValueRule rule;
        ColumnUse use;
        Cell cell;
        const char* joined;
        const char* text;
        bool fits;
    } cases[] = {
        {"blanks kept", {}, ColumnUse::Text, {" \u00A04711\t", Kind::Text}, "", "4711", true},
        {"blanks taken unasked",
         rule([](auto& r) { r.trim = false; }),
         ColumnUse::Text,
         {" 4711 ", Kind::Text},
         "",
         " 4711 ",
         true},
        {"a text that looks like a number changed", {}, ColumnUse::Text, {"0047,10", Kind::Text}, "", "0047,10", true},
        {"zeros kept",
         rule([](auto& r) { r.zeros = Dropped; }),
         ColumnUse::Text,
         {"00120", Kind::Text},
         "",
         "120",
         true},
        {"the last zero dropped",
         rule([](auto& r) { r.zeros = Dropped; }),
         ColumnUse::Text,
         {"000", Kind::Text},
         "",
         "0",
         true},
        {"zeros not filled",
         rule([](auto& r) { r.zeros = Filled, r.width = 6; }),
         ColumnUse::Text,
         {"4711", Kind::Number},
         "",
         "004711",
         true},
        {"longer text cut",
         rule([](auto& r) { r.zeros = Filled, r.width = 2; }),
         ColumnUse::Text,
         {"4711", Kind::Text},
         "",
         "4711",
         true},
        {"prefix and suffix kept",
         rule([](auto& r) { r.dropPrefix = "ART-", r.dropSuffix = "X"; }),
         ColumnUse::Text,
         {"ART-12X", Kind::Text},
         "",
         "12",
         true},
        {"prefix added to nothing",
         rule([](auto& r) { r.addPrefix = "A"; }),
         ColumnUse::Text,
         {" ", Kind::Text},
         "",
         "",
         true},
        {"prefix added before zeros are filled",
         rule([](auto& r) { r.addPrefix = "A", r.addSuffix = "B", r.zeros = Filled, r.width = 3; }),
         ColumnUse::Text,
         {"1", Kind::Text},
         "",
         "A001B",
         true},
        {"the cell in place of the fixed text",
         rule([](auto& r) { r.fixed = "ST"; }),
         ColumnUse::Text,
         {"förp", Kind::Text},
         "",
         "ST",
         true},
        {"a part of a text replaced",
         rule([](auto& r) {
             r.replace = {{"st", "ST"}};
         }),
         ColumnUse::Text,
         {"sten", Kind::Text},
         "",
         "sten",
         true},
        {"text not replaced",
         rule([](auto& r) {
             r.replace = {{"styck", "ST"}, {"ST", "X"}};
         }),
         ColumnUse::Text,
         {"styck ", Kind::Text},
         "",
         "ST",
         true},
        {"other column not joined",
         rule([](auto& r) { r.joinedBy = ", "; }),
         ColumnUse::Text,
         {"Skruv", Kind::Text},
         "M6",
         "Skruv, M6",
         true},
        {"separator before nothing",
         rule([](auto& r) { r.joinedBy = ", "; }),
         ColumnUse::Text,
         {"", Kind::Text},
         "M6",
         "M6",
         true},
        {"sheet's number in a text with a point", {}, ColumnUse::Text, {"12.5", Kind::Number}, "", "12,5", true},
        {"sheet's number read by the signs of texts",
         {},
         ColumnUse::Number,
         {"1.250", Kind::Number},
         "",
         "1.250",
         true},
        {"number as text", {}, ColumnUse::Number, {"1.250,50 kr", Kind::Text}, "", "1250.50", true},
        {"own signs not obeyed",
         rule([](auto& r) { r.decimalSign = '.', r.thousandsSign = ","; }),
         ColumnUse::Number,
         {"1,250.50", Kind::Text},
         "",
         "1250.50",
         true},
        {"misread number written", {}, ColumnUse::Number, {"1.25", Kind::Text}, "", "?1.25", false},
        {"text of a price changed", {}, ColumnUse::Number, {"ring oss", Kind::Text}, "", "ring oss", false},
        {"number in a text column lost",
         rule([](auto& r) { r.meaning = ValueRule::Meaning::Number; }),
         ColumnUse::Text,
         {"x1", Kind::Text},
         "",
         "x1",
         false},
        {"sheet's date with its dashes", {}, ColumnUse::Date, {"2026-11-23", Kind::Date}, "", "20261123", true},
        {"misread date written", {}, ColumnUse::Date, {"13/13/2026", Kind::Text}, "", "", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        SourceValue value;
        ValueReader(c.rule, format, c.use, ',').read(c.cell, c.joined, value);
        EXPECT_EQ(value.text, c.text);
        EXPECT_EQ(value.fits, c.fits);
    }
}

TEST(SourceValues, Patterns) {
    const struct {
        const char* fault;
        const char* pattern;
        const char* text;
        bool matches;
    } cases[] = {{"letter case counted", "summa*", "SUMMA sida 1", true},
                 {"star without text refused", "Summa*", "Summa", true},
                 {"found within a text", "Summa", "Delsumma", false},
                 {"question mark steps over a byte", "?rtal", "årtal", true},
                 {"star gives up early", "*sum*kr", "sum sum 5 kr", true},
                 {"bracket special", "[a]", "a", false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(matchesPattern(c.pattern, c.text), c.matches);
    }
}

}  // namespace
}  // namespace kolmera::test
