#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/world.h"

namespace kolmera::test {
namespace {

using ::testing::IsEmpty;

/// A product as the matching sees it.
void addProduct(World& world, const char* number, const char* searchName, const char* supplier, const char* article) {
    world.add("Produkt",
              {{"Nummer", number}, {"Söknamn", searchName}, {"Leverantör", supplier}, {"Levartikelnr", article}});
}

TEST(ProductMatching, ByNumberAndSearchName) {
    const struct {
        const char* fault;
        const char* key;  // the column
        bool createNew;
        const char* cell;
        const char* expected;  // Nummer and Vikt of all products
    } cases[] = {
        {"a known number is not found", "Nummer", true, "A1", "A1 5\nB2 0\n"},
        {"letter case of the number counts", "Nummer", true, "a1", "a1 5\nB2 0\n"},
        {"an unknown number makes no product", "Nummer", true, "C3", "A1 0\nB2 0\nC3 5\n"},
        {"an unknown number makes a product", "Nummer", false, "C3", "A1 0\nB2 0\n"},
        {"an empty number makes a product", "Nummer", true, "", "A1 0\nB2 0\n"},
        {"a search name is not found", "Söknamn", true, "skruv", "A1 0\nB2 5\n"},
        {"an unknown search name makes no product", "Söknamn", true, "mutter", "A1 0\nB2 0\n- 5\n"},
        {"an unknown search name makes a product", "Söknamn", false, "mutter", "A1 0\nB2 0\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        addProduct(world, "A1", "SPIK", "", "");
        addProduct(world, "B2", "SKRUV", "", "");
        world.mask({.createNew = c.createNew, .relations = {{1, c.key, 'S'}, {2, "Vikt"}}});
        world.priceFile(std::string(c.cell) + "\t5\r\n");
        const RunSummary summary = world.run();
        EXPECT_EQ(world.rows("Produkt", "Nummer, Vikt"), c.expected);
        EXPECT_EQ(summary.records, 1);
        EXPECT_EQ(summary.newProducts + summary.changed + summary.skipped, 1);
        EXPECT_THAT(world.port.passedOver, IsEmpty());
    }
}

TEST(ProductMatching, ByArticleNumber) {
    const struct {
        const char* fault;
        bool createNew;
        const char* article;
        const char* supplier;  // the record's own
        const char* expected;  // Vikt of 1 to 4, and a new one
    } cases[] = {
        {"only the first product with the article number is tried", false, "X", "L2", "0 5 0 0"},
        {"letter case of the article number or supplier counts", false, "x", "l2", "0 5 0 0"},
        {"the walk does not end with the article number", false, "X", "L9", "0 0 0 0"},
        {"no product is made for another supplier's article", true, "X", "L9", "0 0 0 0 5"},
        {"the job's supplier does not stand in", false, "X", "", "5 0 0 0"},
        {"the walk goes on behind the last product", false, "Y", "L9", "0 0 0 0"},
        {"an unknown article makes no product", true, "Z", "L1", "0 0 0 0 5"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        addProduct(world, "1", "", "L1", "X");
        addProduct(world, "2", "", "L2", "X");
        addProduct(world, "3", "", "L3", "X");
        addProduct(world, "4", "", "L1", "Y");
        world.job.supplier = "L1";
        world.mask({.createNew = c.createNew,
                    .relations = {{1, "Levartikelnr", 'S'}, {2, "Leverantör", 'I', 'I'}, {3, "Vikt"}}});
        world.priceFile(std::string(c.article) + "\t" + c.supplier + "\t5\r\n");
        world.run();
        std::string weights = world.rows("Produkt", "Vikt");
        std::replace(weights.begin(), weights.end(), '\n', ' ');
        EXPECT_EQ(weights, c.expected + std::string(" "));
    }
}

/// Records of one file that are about the same products. On a server an open recordset does not show what was written
/// since.
TEST(ProductMatching, WhatTheRunHasWrittenIsFoundAgain) {
    const struct {
        const char *fault, *key;
        const char* file;  // key, supplier, weight
        const char* expected;
    } cases[] = {
        {"the product of a later supplier is made twice", "Levartikelnr",
         "B1\tS1\t1\r\nC9\tS1\t2\r\nB1\tS2\t3\r\nB1\tS2\t4\r\n", "B1 S1 1\nC9 S1 2\nB1 S2 4\n"},
        {"a product that has changed its supplier is found under the old one", "Nummer",
         "N\tS1\t1\r\nn\tS2\t2\r\nN\tS1\t3\r\n", "- S1 3\n"},
        {"a search name of this run is unknown", "Söknamn", "A\tS1\t1\r\nB\tS1\t2\r\na\tS2\t3\r\n", "- S2 3\n- S1 2\n"},
        {"an alternative number of this run is unknown", "Alternativ 1", "M\tS1\t1\r\nM-2\tS2\t2\r\nM\tS3\t3\r\n",
         "- S3 3\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        const bool byAlternative = std::string_view(c.key).starts_with("Alternativ");
        if (byAlternative) {
            world.add("Produkt", {{"Nummer", "P"}});
            world.add("Prodaltprodnr", {{"Produktnr", "P"}, {"Nummer", std::int64_t{1}}, {"Alternativnr", "M"}});
        }
        world.mask({.relations = {{1, c.key, 'S'}, {2, "Leverantör"}, {3, "Vikt"}}});
        world.priceFile(c.file);
        world.run();
        EXPECT_EQ(world.rows("Produkt", "Levartikelnr, Leverantör, Vikt"), c.expected);
        EXPECT_THAT(world.port.passedOver, IsEmpty());
    }
}

TEST(ProductMatching, ByAlternativeNumber) {
    const struct {
        const char *fault, *cell, *expected;
    } cases[] = {{"an alternative number is not found", "m-1", "A 5\n"},
                 {"an unknown alternative makes a product", "M-9", "A 0\n"},
                 {"an empty cell finds what has no number", "", "A 0\n"},
                 {"a product that is gone is made again, or another one is changed", "M-2", "A 0\n"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        addProduct(world, "A", "", "", "");
        world.add("Prodaltprodnr", {{"Produktnr", "A"}, {"Nummer", std::int64_t{1}}, {"Alternativnr", "M-1"}});
        world.add("Prodaltprodnr", {{"Produktnr", "GONE"}, {"Nummer", std::int64_t{1}}, {"Alternativnr", "M-2"}});
        world.add("Prodaltprodnr", {{"Produktnr", "A"}, {"Nummer", std::int64_t{2}}, {"Alternativnr", ""}});
        world.mask({.relations = {{1, "Alternativ 1", 'S', 'I'}, {2, "Vikt"}}});
        world.priceFile(std::string(c.cell) + "\t5\r\n");
        world.run();
        EXPECT_EQ(world.rows("Produkt", "Nummer, Vikt"), c.expected);
    }
}

TEST(ProductMatching, ThroughThePriceList) {
    const struct {
        const char* fault;
        bool createNew;
        const char* article;
        const char* products;   // Nummer, Vikt
        const char* priceList;  // Inpris of the row of L1
    } cases[] = {
        {"a product of another supplier is changed, or the price list is not tried", false, "X", "B 0\n", "A L1 7\n"},
        {"without any product the price list is not tried", false, "Y", "B 0\n", "A L1 1\nC L1 7\n"},
        {"a mask that makes products tries the price list", true, "X", "B 0\n- 5\n", "A L1 1\n L1 7\n"},
        {"an article that nobody knows is written", false, "Z", "B 0\n", "A L1 1\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.add("Leverantör", {{"Nummer", "L1"}});
        addProduct(world, "B", "", "L2", "X");
        world.add("Levprislista", {{"Produktnr", "A"}, {"Leverantör", "L1"}, {"Levartikelnr", "X"}, {"Inpris", 1.0}});
        if (std::string_view(c.article) == "Y") {
            world.add("Levprislista", {{"Produktnr", "C"}, {"Leverantör", "L1"}, {"Levartikelnr", "Y"}});
        }
        world.job.supplier = "L1";
        world.mask({.createNew = c.createNew,
                    .supplierPrices = true,
                    .relations = {
                        {1, "Levartikelnr", 'S'}, {2, "Vikt"}, {3, "Inpris"}, {4, "Dokument"}, {4, "Alternativ 1"}}});
        world.priceFile(std::string(c.article) + "\t5\t7\tblad.pdf\r\n");
        world.run();
        EXPECT_EQ(world.rows("Produkt", "Nummer, Vikt"), c.products);
        EXPECT_EQ(world.rows("Levprislista", "Produktnr, Leverantör, Inpris"), c.priceList);
        if (!c.createNew) {
            EXPECT_EQ(world.rows("Proddokument", "Dokument"), "");
            EXPECT_EQ(world.rows("Prodaltprodnr", "Alternativnr"), "");
        }
    }
}

TEST(ProductMatching, AFailedSaveLeavesTheRecord) {
    World world;
    world.setting("PAutoUppdatUtpris", true);
    addProduct(world, "A", "SPIK", "", "");
    addProduct(world, "B", "SKRUV", "", "");
    world.mask({.relations = {{1, "Söknamn", 'S', 'I'}, {2, "Nummer"}, {3, "Inpris"}, {4, "Alternativ 1"}}});
    // The first record would give B the number of A.
    world.priceFile("SKRUV\tA\t5\tM-1\r\nSPIK\tC\t6\tM-2\r\n");
    const RunSummary summary = world.run();
    EXPECT_EQ(world.rows("Produkt", "Nummer, Inpris"), "C 6\nB 0\n");
    EXPECT_EQ(world.rows("Prodaltprodnr", "Produktnr, Alternativnr"), "C M-2\n");
    EXPECT_EQ(summary.changed, 1);
    EXPECT_EQ(summary.skipped, 1);
    EXPECT_THAT(world.port.passedOver, ::testing::ElementsAre("Produkt: 3022"));
}

TEST(ProductMatching, AShortLineReusesTheKey) {
    World world;
    world.mask({.columns = 3, .relations = {{1, "Nummer", 'S'}, {3, "Vikt"}}});
    world.priceFile("A\tx\t1\r\n7\r\n");
    world.run();
    EXPECT_EQ(world.rows("Produkt", "Nummer, Vikt"), "A 7\n");
}

}  // namespace
}  // namespace kolmera::test
