#include "db/conversions.h"

#include <gtest/gtest.h>

#include <limits>

namespace kolmera::test {
namespace {

const Locale kSwedish(Locale::Kind::Swedish);
const Locale kEnglish(Locale::Kind::English);
const Date kDay = Date::fromCivil(2026, 11, 22).value();

TEST(Conversions, WholeNumbersAreReadFromTheText) {
    const struct {
        const char* fault;
        Value value;
        std::int32_t swedish, english;
    } cases[] = {
        {"Null not 0", Null(), 0, 0},
        {"decimal comma does not end the number", 13.5, 13, 14},
        {"half not to even", 12.5, 12, 12},
        {"text behind the number not passed over", std::string("12,5 kr"), 12, 12},
        {"text with a point cut in Swedish", std::string("12.6"), 13, 13},
        {"no number at the start", std::string("kr 12"), 0, 0},
        {"too large wraps round", 3e9, 0, 0},
        {"largest whole number lost", std::int64_t{2147483647}, 2147483647, 2147483647},
        {"negative lost", std::int64_t{-5}, -5, -5},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(TillLng(c.value, kSwedish), c.swedish) << c.fault;
        EXPECT_EQ(TillLng(c.value, kEnglish), c.english) << c.fault;
    }
}

TEST(Conversions, NumbersAreReadWhole) {
    const struct {
        const char* fault;
        Value value;
        double swedish, english;
    } cases[] = {
        {"Null not 0", Null(), 0, 0},
        {"stored decimals lost", 13.5, 13.5, 13.5},
        {"text by the wrong decimal sign", std::string("12,5"), 12.5, 0},
        {"text with something behind counts", std::string("12,5 kr"), 0, 0},
        {"date is no number", kDay, 0, 0},
        {"Boolean not as stored", true, 1, 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(TillDbl(c.value, kSwedish), c.swedish) << c.fault;
        EXPECT_EQ(TillSng(c.value, kSwedish), static_cast<float>(c.swedish)) << c.fault;
        EXPECT_EQ(TillDbl(c.value, kEnglish), c.english) << c.fault;
    }
    EXPECT_EQ(TillSng(1e300, kSwedish), 0.0F) << "does not fit 32 bits, yet infinite";
    EXPECT_EQ(TillSng(0.1, kSwedish), 0.1F);
}

TEST(Conversions, Texts) {
    const struct {
        const char* fault;
        Value value;
        std::string swedish, english;
    } cases[] = {
        {"Null not empty", Null(), "", ""},
        {"decimal sign of the other locale", 13.5, "13,5", "13.5"},
        {"whole number with decimals", 4711.0, "4711", "4711"},
        {"date not in the short format", kDay, "2026-11-22", "11/22/2026"},
        {"Boolean as a number", false, "False", "False"},
        {"blanks of a text lost", std::string(" a "), " a ", " a "},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(TillText(c.value, kSwedish), c.swedish) << c.fault;
        EXPECT_EQ(TillText(c.value, kEnglish), c.english) << c.fault;
    }
    const Value tenth = static_cast<double>(0.1F);
    EXPECT_EQ(TillText(tenth, FieldType::Single, kSwedish), "0,1") << "digits that a single does not hold";
    EXPECT_EQ(TillText(tenth, FieldType::Double, kSwedish), "0,100000001490116");
}

TEST(Conversions, Booleans) {
    const struct {
        const char* fault;
        Value value;
        bool expected;
    } cases[] = {
        {"Null true", Null(), false},
        {"stored Boolean lost", true, true},
        {"non-zero false", -0.5, true},
        {"zero true", std::int64_t{0}, false},
        {"letter case counts", std::string("true"), true},
        {"False read as a text that is not empty", std::string("False"), false},
        {"text of a number not read", std::string("0,0"), false},
        {"text of a number not read, 2", std::string("2"), true},
        {"any text true", std::string("ja"), false},
        {"date true", kDay, false},
    };
    for (const auto& c : cases) EXPECT_EQ(TillBool(c.value, kSwedish), c.expected) << c.fault;
}

}  // namespace
}  // namespace kolmera::test
