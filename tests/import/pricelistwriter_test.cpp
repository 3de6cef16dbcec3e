#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/world.h"

namespace kolmera::test {
namespace {

using ::testing::ElementsAre;

/// A world with two suppliers, a discount letter of 10 and 5 % under "G1", and a price-list row with 20 %.
struct SupplierWorld : World {
    SupplierWorld() {
        add("Leverantör", {{"Nummer", "L1"}});
        add("Leverantör", {{"Nummer", "L2"}});
        add("LevrabattBrev", {{"Leverantör", "L1"}, {"Rabattgrupp", "G1"}, {"1Rabatt", 10.0}, {"2Rabatt", 5.0}});
        add("LevrabattBrev", {{"Leverantör", "L1"}, {"Rabattgrupp", ""}, {"1Rabatt", 50.0}});
        add("Levprislista", {{"Produktnr", "OLD"}, {"Leverantör", "L1"}, {"Levartikelnr", "Y"}, {"Rabatt", 20.0}});
        job.supplier = "L1";
    }
};

TEST(PriceList, DiscountsOfARow) {
    constexpr std::string_view kRow = "Rabatt, RabattKod, Inpris, InprisFöreRabatt, Datum";
    const struct {
        const char* fault;
        std::vector<Link> relations;
        const char *file, *expected;
    } cases[] = {
        {"the letter of the code is not applied step by step",
         {{2, "Inpris"}, {3, "0", 'R'}},
         "OLD\t200\tG1\r\n",
         "14.5 G1 171 200 2026-11-22\n"},
        {"letter case of the code counts",
         {{2, "Inpris"}, {3, "0", 'R'}},
         "OLD\t200\tg1\r\n",
         "14.5 g1 171 200 2026-11-22\n"},
        {"a code without letter keeps the old discount",
         {{2, "Inpris"}, {3, "0", 'R'}},
         "OLD\t200,555\tG9\r\n",
         "0 G9 200.56 200.555 2026-11-22\n"},
        {"an empty code has no letter", {{2, "Inpris"}, {3, "0", 'R'}}, "OLD\t200\t\r\n", "50  100 200 2026-11-22\n"},
        {"a code beside a discount column",
         {{2, "Inpris"}, {3, "0", 'R'}, {4, "Rabatt"}},
         "OLD\t200\tG1\t3\r\n",
         "14.5 G1 171 200 2026-11-22\n"},
        {"the discount column is not used",
         {{2, "Inpris"}, {3, "Rabatt"}},
         "OLD\t200\t12,5\r\n",
         "12.5 - 175 200 2026-11-22\n"},
        {"VAT on the discount is lost",
         {{2, "Inpris"}, {3, "Rabatt", 'I', '1'}},
         "OLD\t200\t10\r\n",
         "12.5 - 175 200 2026-11-22\n"},
        {"the discount column counts only when it is written",
         {{2, "Inpris"}, {3, "Rabatt", '1', 'I'}},
         "OLD\t200\t125\r\n",
         "12.5 - 175 200 2026-11-22\n"},
        {"the stored discount is lost", {{2, "Inpris"}}, "OLD\t200\r\n", "20 - 160 200 2026-11-22\n"},
        {"rule I keeps the price from the price list",
         {{2, "Inpris", '2', 'I'}},
         "OLD\t20000\r\n",
         "20 - 160 200 2026-11-22\n"},
        {"the gross price gets VAT", {{2, "Inpris", 'I', '1'}}, "OLD\t200\r\n", "20 - 160 200 2026-11-22\n"},
        {"without a purchase price the discount is written",
         {{2, "1Utpris"}, {3, "0", 'R'}},
         "OLD\t200\tG1\r\n",
         "20 - 0 0 2026-11-22\n"},
        {"the date of the file", {{2, "Prisändrdat"}}, "OLD\t260501\r\n", "20 - 0 0 2026-05-01\n"},
        {"an unreadable date of the file", {{2, "Prisändrdat"}}, "OLD\tsnart\r\n", "20 - 0 0 2026-11-22\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        SupplierWorld world;
        world.setting("1OMomsproc", 25.0);
        MaskSpec spec{.supplierPrices = true, .relations = {{1, "Nummer", 'S'}}};
        spec.relations.insert(spec.relations.end(), c.relations.begin(), c.relations.end());
        world.mask(spec);
        world.priceFile(c.file);
        const RunSummary summary = world.run();
        EXPECT_EQ(world.rows("Levprislista", kRow), c.expected);
        EXPECT_EQ(summary.priceList, 1);
    }
}

TEST(PriceList, LevelPricesAreTheFilesOwn) {
    SupplierWorld world;
    world.setting("1OMomsproc", 25.0);
    world.setting("PPrisAvrund", "\r\n\r\n\r\n\r\n0\r\n1000");
    world.mask({.supplierPrices = true,
                .relations = {{1, "Nummer", 'S'}, {2, "1Utpris", '2', '1'}, {3, "9Utpris", 'I', 'I'}}});
    world.priceFile("OLD\t1040\t7,777\r\n");
    world.run();
    EXPECT_EQ(world.rows("Levprislista", "Utpris1, Utpris2, Utpris9"), "10.4 0 7.777\n");
    EXPECT_EQ(world.rows("Produkt", "1Utpris, 9Utpris"), "13 0\n");
}

TEST(PriceList, WhoseRowItIs) {
    const struct {
        const char *fault, *key;
        const char* file;      // key, supplier, article number
        const char* expected;  // rows behind the first
    } cases[] = {
        {"the supplier column counts for a number key", "Nummer", "P\tL2\tZ\r\n", "P L1 Z\n"},
        {"the supplier column does not count for an article key", "Levartikelnr", "Z\tL2\tP\r\n", "P L2 Z\n"},
        {"an empty supplier column", "Levartikelnr", "Z\t\tP\r\n", "P L1 Z\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        SupplierWorld world;
        const bool byNumber = std::string_view(c.key) == "Nummer";
        world.mask({.supplierPrices = true,
                    .relations = {{1, c.key, 'S'}, {2, "Leverantör"}, {3, byNumber ? "Levartikelnr" : "Nummer"}}});
        world.priceFile(c.file);
        world.run();
        EXPECT_EQ(world.rows("Levprislista", "Produktnr, Leverantör, Levartikelnr"),
                  std::string("OLD L1 Y\n") + c.expected);
    }
}

TEST(PriceList, ALongDiscountCodeIsRefusedNotCut) {
    SupplierWorld world;
    world.mask({.supplierPrices = true, .relations = {{1, "Nummer", 'S'}, {2, "Inpris"}, {3, "0", 'R'}}});
    world.priceFile("OLD\t200\t12345678901\r\n");
    world.run();
    EXPECT_EQ(world.rows("Levprislista", "Rabatt, RabattKod, Inpris"), "0 - 200\n");
    EXPECT_THAT(world.port.passedOver, ElementsAre("Levprislista.RabattKod: 3163"));
}

TEST(PriceList, OnlyForMasksWithSupplierPrices) {
    SupplierWorld world;
    world.mask({.relations = {{1, "Nummer", 'S'}, {2, "Inpris"}}});
    world.priceFile("NEW\t200\r\n");
    world.run();
    EXPECT_EQ(world.rows("Levprislista", "Produktnr"), "OLD\n");
}

}  // namespace
}  // namespace kolmera::test
