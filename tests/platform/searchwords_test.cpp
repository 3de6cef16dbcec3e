#include "platform/searchwords.h"

#include <gtest/gtest.h>

namespace kolmera {
namespace {

TEST(SearchWords, AllOfThemStandInTheText) {
    const struct {
        const char *fault, *typed, *text;
        bool found;
    } cases[] = {
        {"letter case counts", "åker SKRUV", "Skruvar från Åkerby", true},
        {"one word is enough", "skruv spik", "Skruv", false},
        {"blanks are words", "  skruv  ", "skruv", true},
        {"nothing typed hides all", "", "skruv", true},
        {"a copied cell's tab is part of the word", "4711\tskruv", "skruv 4711", true},
    };
    for (const auto& c : cases) EXPECT_EQ(SearchWords(c.typed).in(c.text), c.found) << c.fault;
}

}  // namespace
}  // namespace kolmera
