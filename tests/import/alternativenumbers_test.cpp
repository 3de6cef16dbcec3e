#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/world.h"

namespace kolmera::test {
namespace {

const std::string kFiftyAndMore(60, 'x');
const std::string kFifty(50, 'x');

TEST(AlternativeNumbers, ByRule) {
    const struct {
        const char* fault;
        char rule;
        const char* stored;  // nullptr: no row
        std::string cell;
        std::string expected;  // Alternativnr of heading 3
        int written;
    } cases[] = {
        {"U adds none", 'U', nullptr, "N", "N\n", 1},
        {"S adds none", 'S', nullptr, "N", "N\n", 1},
        {"I adds", 'I', nullptr, "N", "", 0},
        {"U does not change", 'U', "G", "N", "N\n", 1},
        {"S changes a stored number", 'S', "G", "N", "G\n", 0},
        {"I changes", 'I', "G", "N", "G\n", 0},
        {"letter case is no change", 'U', "g", "G", "G\n", 1},
        {"the same number is written", 'U', "G", "G", "G\n", 0},
        {"an empty cell does not delete under U", 'U', "G", "", "", 0},
        {"an empty cell deletes under S", 'S', "G", "", "G\n", 0},
        {"an empty cell adds", 'U', nullptr, "", "", 0},
        {"fifty characters are not the most", 'U', nullptr, kFiftyAndMore, kFifty + "\n", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        if (c.stored) {
            world.add("Prodaltprodnr",
                      {{"Produktnr", "A"}, {"Nummer", std::int64_t{3}}, {"Alternativnr", std::string(c.stored)}});
        }
        world.mask({.relations = {{1, "Nummer", 'S'}, {2, "Alternativ 3", 'I', c.rule}}});
        world.priceFile("A\t" + c.cell + "\r\n");
        const RunSummary summary = world.run();
        EXPECT_EQ(world.rows("Prodaltprodnr", "Alternativnr"), c.expected);
        EXPECT_EQ(summary.alternatives, c.written);
    }
}

TEST(AlternativeNumbers, EmptyOnesGoAtTheStartAndNullsStay) {
    World world;
    for (const std::int64_t heading : {1, 2}) {
        world.add(
            "Prodaltprodnr",
            {{"Produktnr", "A"}, {"Nummer", heading}, {"Alternativnr", heading == 1 ? Value("") : Value(Null{})}});
    }
    world.mask({.relations = {{1, "Nummer", 'S'}, {2, "Alternativ 2", 'I', 'S'}}});
    world.priceFile("B\tN\r\n");
    world.run();
    EXPECT_EQ(world.rows("Prodaltprodnr", "Produktnr, Nummer, Alternativnr"), "A 2 -\nB 2 N\n");
    world.priceFile("A\tN\r\n");
    world.run();
    EXPECT_EQ(world.rows("Prodaltprodnr", "Produktnr, Nummer, Alternativnr"), "A 2 N\nB 2 N\n")
        << "S does not fill a Null";
}

TEST(AlternativeNumbers, EachHeadingOfTheProductByItself) {
    World world;
    world.add("Prodaltprodnr", {{"Produktnr", "A"}, {"Nummer", std::int64_t{63}}, {"Alternativnr", "G"}});
    world.add("Prodaltprodnr", {{"Produktnr", "B"}, {"Nummer", std::int64_t{1}}, {"Alternativnr", "B1"}});
    world.mask({.relations = {{1, "Nummer", 'S'}, {2, "Alternativ 1"}, {3, "Alternativ 63"}}});
    world.priceFile("A\tN1\tN63\r\n");
    const RunSummary summary = world.run();
    EXPECT_EQ(world.rows("Prodaltprodnr", "Produktnr, Nummer, Alternativnr"), "A 63 N63\nB 1 B1\nA 1 N1\n");
    EXPECT_EQ(summary.alternatives, 2);
}

}  // namespace
}  // namespace kolmera::test
