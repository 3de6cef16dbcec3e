#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/world.h"

namespace kolmera::test {
namespace {

using ::testing::IsEmpty;

TEST(MaskRun, ChangesKnownProductsAndCreatesNewOnes) {
    World world;
    world.add("Produkt", {{"Nummer", "4711"}, {"Benämning", "Gammal"}, {"Inpris", 1.0}});
    world.mask({.relations = {{1, "Nummer", 'S'}, {2, "Benämning"}, {3, "Inpris"}}});
    world.priceFile("4711\tSpik\t10,50\r\n4712\tSkruv\t7\r\n");
    const RunSummary summary = world.run();
    EXPECT_EQ(world.rows("Produkt", "Nummer, Benämning, Inpris, Vägtinpris, Förändringsdatum"),
              "4711 Spik 10.5 0 2026-11-22\n4712 Skruv 7 7 2026-11-22\n");
    EXPECT_EQ(summary.records, 2);
    EXPECT_EQ(summary.newProducts, 1);
    EXPECT_EQ(summary.changed, 1);
    EXPECT_EQ(summary.skipped, 0);
    EXPECT_TRUE(summary.completed);
    EXPECT_FALSE(summary.cancelled);
    EXPECT_THAT(world.port.passedOver, IsEmpty());
}

}  // namespace
}  // namespace kolmera::test
