#include <gtest/gtest.h>

#include "support/world.h"

namespace kolmera::test {
namespace {

constexpr std::int64_t kPurchasePriceBit = 2;
constexpr std::int64_t kLevel2Bit = 8;

struct DatingCase {
    const char* fault;
    Link relation;
    const char* cell;
    std::int64_t PPrisDatumBM;
    double markup = 0;
    const char* expected = "2020-01-01\n";
};

TEST(PriceDating, OfExistingProducts) {
    const Link inpris{2, "Inpris"};
    const Link level2{2, "2Utpris"};
    const DatingCase cases[] = {
        {"a purchase price dates without its bit", inpris, "99", 0},
        {"a purchase price does not date with its bit", inpris, "99", kPurchasePriceBit, 0, "2026-11-22\n"},
        {"an unchanged purchase price does not date", inpris, "10", kPurchasePriceBit, 0, "2026-11-22\n"},
        {"a level dates without its bit", level2, "99", kPurchasePriceBit},
        {"a level does not date with its bit", level2, "99", kLevel2Bit, 0, "2026-11-22\n"},
        {"0 is no bit instead of the nine levels", level2, "99", 0, 0, "2026-11-22\n"},
        {"the same price within 0.001 dates", level2, "10,0005", kLevel2Bit},
        {"a coupled level dates", level2, "99", kLevel2Bit, 25},
        {"rule I dates", {2, "2Utpris", 'I', 'I'}, "99", kLevel2Bit},
        {"rule S does not date, although nothing is written",
         {2, "2Utpris", 'I', 'S'},
         "99",
         kLevel2Bit,
         0,
         "2026-11-22\n"},
        {"an unknown rule does not date", {2, "2Utpris", 'I', 'Q'}, "99", kLevel2Bit, 0, "2026-11-22\n"},
        {"VAT is not compared", {2, "2Utpris", 'I', '1'}, "8", kLevel2Bit},
        {"another number column dates", {2, "Vikt"}, "99", 2046},
    };
    for (const DatingCase& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.setting("PPrisDatumBM", c.PPrisDatumBM);
        world.setting("1OMomsproc", 25.0);
        world.add("Produkt", {{"Nummer", "A"},
                              {"Inpris", 10.0},
                              {"2Utpris", 10.0},
                              {"2Pålägg", c.markup},
                              {"Prisändrdat", *Date::fromIso("2020-01-01")}});
        world.mask({.relations = {{1, "Nummer", 'S'}, c.relation}});
        world.priceFile(std::string("A\t") + c.cell + "\r\n");
        world.run();
        EXPECT_EQ(world.rows("Produkt", "Prisändrdat"), c.expected);
        EXPECT_EQ(world.rows("Produkt", "Förändringsdatum"), "2026-11-22\n");
    }
}

TEST(PriceDating, ComparesTheValueBeforeRounding) {
    World world;
    world.setting("PPrisAvrund", "\r\n\r\n\r\n\r\n0\r\n100");
    world.add("Produkt", {{"Nummer", "A"}, {"1Utpris", 10.0}});
    world.mask({.relations = {{1, "Nummer", 'S'}, {2, "1Utpris"}}});
    world.priceFile("A\t10,4\r\n");
    world.run();
    EXPECT_EQ(world.rows("Produkt", "1Utpris, Prisändrdat"), "10 2026-11-22\n");
}

TEST(PriceDating, OfNewProducts) {
    const struct {
        const char* fault;
        std::vector<Link> relations;
        std::int64_t PPrisDatumBM;
        const char* expected;
    } cases[] = {
        {"a level does not date a new product", {{1, "Nummer", 'S'}, {2, "1Utpris"}}, 0, "2026-11-22\n"},
        {"a price of 0 does not date a new product", {{1, "Nummer", 'S'}, {3, "1Utpris"}}, 0, "2026-11-22\n"},
        {"a purchase price dates without its bit", {{1, "Nummer", 'S'}, {2, "Inpris"}}, 0, "-\n"},
        {"the run dates although the file does",
         {{1, "Nummer", 'S'}, {2, "1Utpris"}, {4, "Prisändrdat"}},
         2046,
         "2026-05-01\n"},
        {"the run dates although the file should",
         {{1, "Nummer", 'S'}, {2, "1Utpris"}, {3, "Prisändrdat"}},
         2046,
         "-\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.setting("PPrisDatumBM", c.PPrisDatumBM);
        world.mask({.columns = 4, .relations = c.relations});
        world.priceFile("A\t10\t\t20260501\r\n");
        world.run();
        EXPECT_EQ(world.rows("Produkt", "Prisändrdat"), c.expected);
    }
}

TEST(PriceDating, CouplingStampsAlsoWhenTheFileBringsADate) {
    World world;
    world.setting("PAutoUppdatUtpris", true);
    world.add("Produkt", {{"Nummer", "A"}, {"1Pålägg", 25.0}, {"1Utpris", 10.0}});
    world.mask({.relations = {{1, "Nummer", 'S'}, {2, "Inpris"}, {3, "Prisändrdat"}}});
    world.priceFile("A\t80\t20200101\r\n");
    world.run();
    EXPECT_EQ(world.rows("Produkt", "1Utpris, Prisändrdat"), "100 2026-11-22\n");
}

}  // namespace
}  // namespace kolmera::test
