#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/world.h"

namespace kolmera::test {
namespace {

/// A table that keeps texts of products by their numbers.
struct ProductTexts {
    const char *table, *target, *column;
    std::int64_t number;
    std::int64_t RunSummary::*written;
};
const ProductTexts kAlternatives{"Prodaltprodnr", "Alternativ 3", "Alternativnr", 3, &RunSummary::alternatives};
const ProductTexts kDocuments{"Proddokument", "Dokument", "Dokument", 1, &RunSummary::documents};

TEST(ProductTexts, ByRule) {
    const std::string longText(210, 'x');
    const struct {
        const char* fault;
        const ProductTexts& kind;
        char rule;
        const char* stored;  // nullptr: no row
        std::string cell, expected;
        int written;
    } cases[] = {
        {"U adds none", kAlternatives, 'U', nullptr, "N", "N\n", 1},
        {"S adds none", kAlternatives, 'S', nullptr, "N", "N\n", 1},
        {"I adds", kAlternatives, 'I', nullptr, "N", "", 0},
        {"U does not change", kAlternatives, 'U', "G", "N", "N\n", 1},
        {"S changes a stored number", kAlternatives, 'S', "G", "N", "G\n", 0},
        {"I changes", kAlternatives, 'I', "G", "N", "G\n", 0},
        {"letter case is no change", kAlternatives, 'U', "g", "G", "G\n", 1},
        {"the same number is written", kAlternatives, 'U', "G", "G", "G\n", 0},
        {"an empty cell does not delete under U", kAlternatives, 'U', "G", "", "", 0},
        {"an empty cell deletes under S", kAlternatives, 'S', "G", "", "G\n", 0},
        {"an empty cell adds", kAlternatives, 'U', nullptr, "", "", 0},
        {"50 characters are not the most", kAlternatives, 'U', nullptr, longText, longText.substr(0, 50) + "\n", 1},
        {"U adds none", kDocuments, 'U', nullptr, "ny.pdf", "ny.pdf 2026-11-22\n", 1},
        {"S adds none", kDocuments, 'S', nullptr, "ny.pdf", "ny.pdf 2026-11-22\n", 1},
        {"I adds", kDocuments, 'I', nullptr, "ny.pdf", "", 0},
        {"U does not change", kDocuments, 'U', "g.pdf", "ny.pdf", "ny.pdf 2026-11-22\n", 1},
        {"S changes or dates a stored document", kDocuments, 'S', "g.pdf", "ny.pdf", "g.pdf -\n", 0},
        {"S does not fill an empty one", kDocuments, 'S', "", "ny.pdf", "ny.pdf 2026-11-22\n", 1},
        {"an empty cell does not delete under U", kDocuments, 'U', "g.pdf", "", "", 0},
        {"an empty cell deletes under S", kDocuments, 'S', "g.pdf", "", "g.pdf -\n", 0},
        {"200 characters are not the most", kDocuments, 'U', nullptr, longText,
         longText.substr(0, 200) + " 2026-11-22\n", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        const auto add = [&](const char* product, std::int64_t number, const char* text) {
            world.add(c.kind.table, {{"Produktnr", product}, {"Nummer", number}, {c.kind.column, text}});
        };
        add("B", c.kind.number, "other product");
        add("A", c.kind.number + 1, "other number");
        if (c.stored != nullptr) add("A", c.kind.number, c.stored);
        world.mask({.relations = {{1, "Nummer", 'S'}, {2, c.kind.target, 'I', c.rule}}});
        world.priceFile("A\t" + c.cell + "\r\n");
        const RunSummary summary = world.run();
        const bool dated = &c.kind == &kDocuments;
        const std::string rest = dated ? "other product -\nother number -\n" : "other product\nother number\n";
        EXPECT_EQ(world.rows(c.kind.table, std::string(c.kind.column) + (dated ? ", Förändringsdatum" : "")),
                  rest + c.expected);
        EXPECT_EQ(summary.*c.kind.written, c.written);
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
