#include <gtest/gtest.h>

#include "support/world.h"

namespace kolmera::test {
namespace {

const std::vector<Link> kPurchase{{1, "Nummer", 'S'}, {2, "Inpris"}};
const std::vector<Link> kLevel{{1, "Nummer", 'S'}, {2, "2Utpris"}};

TEST(ProductCoupling, WhichProductsAreRecomputed) {
    const struct {
        const char *fault, *KopplaMot;
        std::vector<Link> relations;
        double markup;
        const char* expected;  // 1Utpris, of 10 before
    } cases[] = {
        {"a markup does not couple", "", kPurchase, 25, "100\n"},
        {"no markup couples", "", kPurchase, 0, "10\n"},
        {"a markup couples without purchase prices", "", kLevel, 25, "10\n"},
        {"a coupling of the company counts only with purchase prices", "9=V", kLevel, 25, "50\n"},
        {"prices are recomputed when none is processed", "9=V", {{1, "Nummer", 'S'}, {2, "Vikt"}}, 25, "10\n"},
        {"a purchase price under rule I recomputes", "9=V", {{1, "Nummer", 'S'}, {2, "Inpris", 'I', 'I'}}, 25, "10\n"},
        {"a discount alone does not recompute", "9=V", {{1, "Nummer", 'S'}, {2, "Rabatt"}}, 25, "50\n"},
        {"an unknown rule does not recompute", "", {{1, "Nummer", 'S'}, {2, "Inpris", 'I', 'Q'}}, 25, "50\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.setting("PAutoUppdatUtpris", true);
        world.setting("PUtprisKopplaMot", c.KopplaMot);
        world.add("Produkt", {{"Nummer", "A"}, {"Inpris", 40.0}, {"1Pålägg", c.markup}, {"1Utpris", 10.0}});
        world.mask({.relations = c.relations});
        world.priceFile("A\t80\r\n");
        world.run();
        EXPECT_EQ(world.rows("Produkt", "1Utpris"), c.expected);
    }
}

TEST(ProductCoupling, NetPriceInHomeCurrency) {
    const struct {
        const char* fault;
        World::Row product;
        const char* expected;  // 1Utpris with a markup of 25 % on a purchase price of 80
    } cases[] = {
        {"percentage of the purchase price", {{"InprisProc", 10.0}}, "90\n"},
        {"purchase factor", {{"Inköpsfaktor", 4.0}}, "25\n"},
        {"rate and factor of the supplier ledger", {{"Valutakod", "EUR"}}, "1000\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.setting("PAutoUppdatUtpris", true);
        world.add("Syvaluta",
                  {{"Kod", "EUR"}, {"Levreskontra", 1000.0}, {"Kundreskontra", 1.0}, {"Faktor", std::int64_t{100}}});
        World::Row product{{"Nummer", "A"}, {"1Pålägg", 25.0}};
        product.insert(product.end(), c.product.begin(), c.product.end());
        world.add("Produkt", product);
        world.mask({.relations = kPurchase});
        world.priceFile("A\t80\r\n");
        world.run();
        EXPECT_EQ(world.rows("Produkt", "1Utpris"), c.expected);
    }
}

TEST(ProductCoupling, ANewProductIsTheOneThatWasSaved) {
    World world;
    world.setting("PAutoUppdatUtpris", true);
    world.setting("PFaktor1", 25.0);
    world.add("Produkt", {{"Nummer", "A"}, {"1Pålägg", 50.0}, {"1Utpris", 1.0}});
    world.mask({.relations = kPurchase});
    world.priceFile("B\t80\r\n");
    world.run();
    EXPECT_EQ(world.rows("Produkt", "Nummer, 1Utpris"), "A 1\nB 100\n");
}

}  // namespace
}  // namespace kolmera::test
