#include "import/tradeformats/linelayout.h"

#include <gtest/gtest.h>

#include "import/tradeformats/eio.h"
#include "import/tradeformats/finfo.h"
#include "import/tradeformats/rsk.h"

namespace kolmera {
namespace {

// The trades' sheets say how long their lines are: the last columns that are read end there.
static_assert(columns(kRskArticle, "varugrupp").last == 44);
static_assert(columns(kFinfo, "utpris").last == 336);

constexpr Columns kGap[] = {{"a", 1, 2}, {"b", 5, 6}};
constexpr Columns kBeginning[] = {{"prefix", 3, 4}, {"whole", 3, 9}};
constexpr Columns kOverlap[] = {{"a", 1, 5}, {"b", 5, 6}};
constexpr Columns kBackwards[] = {{"a", 5, 4}};
constexpr Columns kFromZero[] = {{"a", 0, 4}};
constexpr Columns kNamedTwice[] = {{"a", 1, 2}, {"a", 3, 4}};
static_assert(wellFormed(kGap) && wellFormed(kBeginning));
static_assert(!wellFormed(kOverlap) && !wellFormed(kBackwards) && !wellFormed(kFromZero) && !wellFormed(kNamedTwice));

TEST(Cut, CountsFromOneAndIncludesBothEnds) {
    using namespace std::string_view_literals;
    const struct {
        const char* fault;
        std::string_view line;
        int first, last;
        std::string_view expected;
    } cases[] = {
        {"first column lost", "ABCDEF", 1, 2, "AB"},
        {"last column lost", "ABCDEF", 5, 6, "EF"},
        {"beyond a line that ends inside", "ABC", 2, 9, "BC"},
        {"beyond a line that ends before", "ABC", 4, 9, ""},
        {"beyond a line that ends far before", "", 29, 36, ""},
        {"rest of the line cut off", "ABCDEF", 3, kToEndOfLine, "CDEF"},
        {"blanks kept", "A  B  C", 2, 6, "B"},
        {"NUL kept", "A\0B\0C"sv, 2, 4, "B"},
        {"blanks inside lost", "AB CD", 1, 5, "AB CD"},
        {"counted in characters: å has one byte in the file",
         "\xE5\xE4\xF6"
         "123",
         4, 6, "123"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(cut(c.line, {"", c.first, c.last}), c.expected);
    }
}

TEST(CutDigits, TellsZeroFromWhatCannotBeRead) {
    using enum Digits::State;
    const struct {
        const char* fault;
        std::string_view line;
        Digits::State state;
        double number;
    } cases[] = {
        {"hundredths", "2AB00012550 R1", Whole, 125.5},
        {"a price of zero taken for none", "2AB00000000 R1", Whole, 0},
        {"the highest price", "2AB99999999 R1", Whole, 999999.99},
        {"blanks instead of leading zeros", "2AB   12550 R1", Whole, 125.5},
        {"left-aligned", "2AB12550    R1", Whole, 125.5},
        {"letter O for zero", "2AB0001255O R1", Unreadable, 0},
        {"decimal comma", "2AB00125,50 R1", Unreadable, 0},
        {"minus sign", "2AB-0012550 R1", Unreadable, 0},
        {"blank among the digits", "2AB0001 550 R1", Unreadable, 0},
        {"last digits missing: another price", "2AB0001255", Unreadable, 0},
        {"nothing but blanks", "2AB         R1", Absent, 0},
        {"line ends before", "2AB", Absent, 0},
        {"0x1A for a digit", "2AB0001255\x1A R1", Unreadable, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const Digits digits = cutDigits(c.line, columns(kEioPrice, "bruttopris"), 100);
        EXPECT_EQ(digits.state, c.state);
        EXPECT_EQ(digits.number, c.number);
    }
    EXPECT_EQ(cutDigits("00012000000", {"", 1, 11}, 1'000'000).number, 12);
}

}  // namespace
}  // namespace kolmera
