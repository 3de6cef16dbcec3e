#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lang/keys/mask.h"
#include "lang/keys/prismain.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::string_view kColumns =
    "Benämning, Anteckning, Vikt, Bredd, Prislista, SenasteInköp, Leveranstid, Sortering, Webbpris, Garantimånader";

const World::Row kUnset{{"Nummer", "A"}};
const World::Row kMissing{};
const World::Row kSet{{"Nummer", "A"},
                      {"Benämning", "Gammal"},
                      {"Anteckning", "Gammal"},
                      {"Vikt", 1.0},
                      {"Bredd", 1.0},
                      {"Prislista", true},
                      {"SenasteInköp", *Date::fromIso("2020-01-01")},
                      {"Leveranstid", std::int64_t{1}},
                      {"Sortering", std::int64_t{1}},
                      {"Webbpris", 1.0},
                      {"Garantimånader", std::int64_t{1}}};
const char* const kOldTexts = "Gammal Gammal 1 1 True 2020-01-01 1 1 1 1\n";
const char* const kNewTexts = "Ny Ny 2.5 2.5 True 2026-05-01 2 40000 2.5 2\n";

/// Every column type under one update rule, in one record.
MaskSpec everyType(char TypKod) {
    MaskSpec spec{.relations = {{1, "Nummer", 'S'}}};
    int source = 2;
    for (const char* column : {"Benämning", "Anteckning", "Vikt", "Bredd", "Prislista", "SenasteInköp", "Leveranstid",
                               "Sortering", "Webbpris", "Garantimånader"}) {
        spec.relations.push_back({source++, column, 'I', TypKod});
    }
    return spec;
}

TEST(UpdateRules, ByColumnType) {
    const struct {
        const char* fault;
        char rule;
        const World::Row& stored;
        const char* expected;
        Locale::Kind locale = Locale::Kind::Swedish;
    } cases[] = {
        {"U does not write into an unset column", 'U', kUnset, kNewTexts},
        {"U spares what is stored", 'U', kSet, kNewTexts},
        {"numbers are not those of the user's locale", 'U', kSet, kNewTexts, Locale::Kind::English},
        {"S takes a stored 0 of a whole number or an amount of money for unset", 'S', kUnset,
         "Ny Ny 2.5 2.5 True 2026-05-01 0 0 0 0\n"},
        {"S fills the zeros of a new row", 'S', kMissing, "Ny Ny 2.5 2.5 True 2026-05-01 0 0 0 0\n"},
        {"S writes over what is stored", 'S', kSet, kOldTexts},
        {"I writes", 'I', kSet, kOldTexts},
        {"an unknown rule writes", 'Q', kSet, kOldTexts},
        {"a VAT rule writes other columns than numbers", '1', kSet,
         "Gammal Gammal 3.125 3.125 True 2020-01-01 1 1 1 1\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world(c.locale);
        world.setting("1OMomsproc", 25.0);
        if (!c.stored.empty()) world.add("Produkt", c.stored);
        world.mask(everyType(c.rule));
        const std::string record = "A\tNy\tNy\t2,5\t2,5\tJa\t20260501\t2\t40000\t2,5\t2\r\n";
        world.priceFile(c.locale == Locale::Kind::English ? replaceAll(record, ",", ".") : record);
        world.run();
        EXPECT_EQ(world.rows("Produkt", kColumns), c.expected);
        EXPECT_THAT(world.port.passedOver, IsEmpty());
    }
}

TEST(UpdateRules, ARefusedValueLeavesItsColumn) {
    World world;
    world.add("Produkt", kSet);
    world.mask(everyType('U'));
    world.priceFile("A\tNy\tNy\tmycket\tmycket\tnej\tsnart\t99999\ttusen\tdyrt\t300\r\n");
    world.run();
    EXPECT_EQ(world.rows("Produkt", kColumns), "Ny Ny 0 0 False 2020-01-01 1 1 1 1\n");
    EXPECT_THAT(world.port.passedOver,
                ElementsAre("Produkt.SenasteInköp: 3421", "Produkt.Leveranstid: 3421", "Produkt.Sortering: 3421",
                            "Produkt.Webbpris: 3421", "Produkt.Garantimånader: 3421"));
}

TEST(UpdateRules, TextsAreCutToTheColumnInCharacters) {
    const std::string sixty = [] {
        std::string text;
        for (int i = 0; i < 60; ++i) text += "å";
        return text;
    }();
    World world;
    world.mask({.relations = {{1, "Nummer", 'S'}, {2, "Benämning"}}});
    world.priceFile("A\t" + sixty + "X\r\n");
    world.run();
    EXPECT_EQ(world.rows("Produkt", "Benämning"), sixty + "\n");
    EXPECT_THAT(world.port.passedOver, IsEmpty());
}

TEST(UpdateRules, PricesAreRoundedWithVatByTheirLevel) {
    World world;
    world.setting("2OMomsproc", 25.0);
    world.setting("PPrisAvrund", "0\r\n9,99\r\n10\r\n99,99\r\n100\r\n999,99");
    world.mask({.relations = {{1, "Nummer", 'S'},
                              {2, "Inpris"},
                              {2, "1Utpris"},
                              {3, "2Utpris", 'I', '2'},
                              {2, "Rabatt"},
                              {3, "3Utpris", '1'}}});
    world.priceFile("A\t12,345\t100,5\r\n");
    world.run();
    EXPECT_EQ(world.rows("Produkt", "Inpris, 1Utpris, 2Utpris, Rabatt, 3Utpris"), "12.34 12.5 126 12.345 10\n");
}

TEST(UpdateRules, TargetsBehindTheHeadingsAndUnknownOnes) {
    World world;
    world.mask({.relations = {{1, "Nummer", 'S'},
                              {2, "Webshop"},
                              {3, "Frijanej"},
                              {2, "0"},    // no target
                              {2, "219"},  // behind the last column
                              {2, "999"}}});
    world.priceFile("A\t1\t1\r\n");
    world.port.expect(world.texts().ModulTextMed(text::mask::kColumnsMissing, "219, 999"),
                      world.text(text::prismain::kMaskIncompleteTitle));
    const RunSummary summary = world.run();
    EXPECT_EQ(world.rows("Produkt", "Nummer, Webshop, Frijanej"), "A True True\n");
    EXPECT_EQ(summary.newProducts, 1);
    EXPECT_THAT(world.port.passedOver, IsEmpty());
}

TEST(UpdateRules, NewProductsGetDefaultsAndWeightedPrice) {
    const struct {
        const char* fault;
        std::vector<Link> relations;
        const char* expected;
    } cases[] = {
        {"defaults replace what the file brings",
         {{1, "Nummer", 'S'}, {2, "Inpris"}, {3, "Grupp"}, {4, "InköpsEnhet"}},
         "10.5 10.5 G2 st\n"},
        {"a weighted price of the file is replaced",
         {{1, "Nummer", 'S'}, {2, "Inpris"}, {5, "Vägtinpris"}},
         "10.5 9 G1 st\n"},
        {"a weighted price without purchase prices", {{1, "Nummer", 'S'}}, "0 0 G1 st\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.setting("PGrupp", "G1");
        world.setting("PInköpsenhet", "st");
        world.mask({.columns = 5, .relations = c.relations});
        world.priceFile("A\t10,50\tG2\t\t9\r\n");
        world.run();
        EXPECT_EQ(world.rows("Produkt", "Inpris, Vägtinpris, Grupp, InköpsEnhet"), c.expected);
    }
}

}  // namespace
}  // namespace kolmera::test
