#include "platform/lettercase.h"

#include <gtest/gtest.h>

namespace kolmera {
namespace {

TEST(LetterCase, PairsOfUpperAndLower) {
    const struct {
        const char* fault;
        const char *upper, *lower;
    } cases[] = {
        {"ASCII edges", "AZ@[`{", "az@[`{"},
        {"Latin-1", "ÅÄÖÉÜÀÞ", "åäöéüàþ"},
        {"multiplication and division signs are no pair", "×÷", "×÷"},
        {"the partner of ÿ is outside Latin-1", "Ÿ", "ÿ"},
        {"even upper letters of Extended-A", "ĀĶŊŶ", "āķŋŷ"},
        {"odd upper letters of Extended-A", "ĹŇŹŽ", "ĺňźž"},
        {"letters without a partner", "ßĸŉ", "ßĸŉ"},
        {"the dotted I would change its length", "İı", "İı"},
        {"wider characters stay", "€日😀", "€日😀"},
        {"malformed bytes stay", "\xE5\xC3", "\xE5\xC3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(upperCase(c.lower), c.upper);
        EXPECT_EQ(lowerCase(c.upper), c.lower);
        EXPECT_TRUE(equalNoCase(c.upper, c.lower));
    }
    EXPECT_FALSE(equalNoCase("å", "ä"));
    EXPECT_FALSE(startsWithNoCase("Å", "ÅR"));
    EXPECT_TRUE(startsWithNoCase("årsavtal", "ÅR"));
}

TEST(LetterCase, ProperCase) {
    EXPECT_EQ(properCase("FTG1.MDB"), "Ftg1.Mdb");
    EXPECT_EQ(properCase("åkes ÄRLIGA-öl 2x"), "Åkes Ärliga-Öl 2x");
}

TEST(Text, TrimsBlanksAndNulOnly) {
    const std::string_view text("\0 \tå \0", 7);
    EXPECT_EQ(trimmed(text), "\tå");
    EXPECT_EQ(trimmedRight(text), std::string_view("\0 \tå", 5));
    EXPECT_EQ(trimmed(std::string_view("\0 ", 2)), "");
}

TEST(Text, ReplacesAndSplits) {
    EXPECT_EQ(replaceAll("aaa", "aa", "b"), "ba") << "a replaced text is not searched again";
    EXPECT_EQ(replaceAll("x", "", "y"), "x");
    EXPECT_EQ(split("a||b|", "|"), (std::vector<std::string>{"a", "", "b", ""}));
    EXPECT_EQ(split("", "|"), std::vector<std::string>{""});
}

}  // namespace
}  // namespace kolmera
