#include <gtest/gtest.h>

#include "support/world.h"

namespace kolmera::test {
namespace {

using namespace std::string_view_literals;

const MaskSpec kTabs{.relations = {{1, "Nummer", 'S'}, {2, "Benämning"}}};
const MaskSpec kLines{.structure = 'F', .lines = 2, .relations = {{1, "Nummer", 'S'}, {2, "Benämning"}}};
const MaskSpec kFixed{
    .structure = 'P', .length = 6, .relations = {{1, "Nummer", 'S', 'U', 1, 2}, {2, "Benämning", 'I', 'U', 3, 4}}};

TEST(BadFiles, GiveWhatCanBeRead) {
    const struct {
        const char* fault;
        const MaskSpec& mask;
        std::string_view file;
        std::string_view expected;  // Nummer, Benämning
        int records;
    } cases[] = {
        {"empty", kTabs, "", "", 0},
        {"only an end of file", kTabs, "\x1A", "", 0},
        {"only a line end: a record without key", kTabs, "\r\n", "", 1},
        {"no final line end", kTabs, "A\tSpik", "A Spik\n", 1},
        {"CR only", kTabs, "A\tSpik\rB\tSkruv\r", "A Spik\nB Skruv\n", 2},
        {"LF only: one line", kTabs, "A\tSpik\nB\tSkruv\n", "A Skruv\n\n", 1},
        {"an end of file within", kTabs, "A\tSpik\x1A\r\nB\tSkruv\r\n\x1A", "A Spik\x1A\nB Skruv\n", 2},
        {"ends within a record of lines", kLines, "A\r\nSpik\r\nB\r\n", "A Spik\nB Spik\n", 2},
        {"ends within a fixed record", kFixed, "A Spik\nB Sk", "A Spik\nB Sk\n", 2},
        {"bytes that are no characters", kTabs, "A\t\x81\x8D\r\n", "A \xC2\x81\xC2\x8D\n", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.mask(c.mask);
        world.rawPriceFile(c.file);
        const RunSummary summary = world.run();
        EXPECT_EQ(summary.records, c.records);
        EXPECT_EQ(summary.records, summary.used + summary.skipped);
        EXPECT_TRUE(summary.completed);
        EXPECT_EQ(world.rows("Produkt", "Nummer, Benämning"), c.expected);
    }
}

TEST(BadFiles, NulWithinTextsIsKeptOrItsColumnPassedOver) {
    World world;
    world.mask(kTabs);
    world.rawPriceFile("A\0\tSpi\0k\0\r\nB\tSkruv\r\n"sv);
    EXPECT_TRUE(world.run().completed);
    // Servers, or their drivers, would cut the text at NUL.
    EXPECT_EQ(world.rows("Produkt", "Nummer, Benämning"),
              world.onServer() ? "A -\nB Skruv\n" : "A Spi\0k\nB Skruv\n"sv);
    EXPECT_EQ(world.port.passedOver.size(), world.onServer() ? 1U : 0U);
}

}  // namespace
}  // namespace kolmera::test
