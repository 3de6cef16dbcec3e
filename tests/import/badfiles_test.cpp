#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/lettercase.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

using namespace std::string_view_literals;
using ::testing::IsEmpty;

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

// Texts that mean something to a statement, a server, its driver or a pattern; "1" is what TRUE becomes.
const std::vector<std::string> kHostile = split(
    R"(O'Brien|12" rör|5' 12"|'; DROP TABLE X; --|"; DELETE X; --|a\|a\'|\'"|#2024-01-01#|'#'|TRUE'FALSE|TRUE|1|?|?'?|$1)"
    R"(|:a|@a|%|_|[ID]|`ID`|/* x|--|{d '1'}|{fn NOW()}|a;b|''|""|'|"|é'ü|│┤'|ØÙÚÛ x)"
    "|a\vb",
    "|");

std::string priceLines() {
    std::string file;
    for (const std::string& text : kHostile) file += fmt::format("{0}\t{0}\t{0}\r\n", text);
    return file;
}

/// Products and alternative numbers, each text once.
std::string eachOnce() {
    std::string rows;
    for (const std::string& text : kHostile) rows += fmt::format("{0} {0}\n", text);
    return rows;
}

TEST(HostileTexts, AreValuesWhateverTheyLookLike) {
    World world;
    world.mask({.oem = true, .relations = {{1, "Nummer", 'S'}, {2, "Benämning"}, {3, "Alternativ 1"}}});
    world.priceFile(priceLines(), CodePage::Oem850);
    for (const char* reading : {"making them", "finding them again"}) {
        SCOPED_TRACE(reading);
        EXPECT_TRUE(world.run().completed);
        EXPECT_THAT(world.port.passedOver, IsEmpty());
        EXPECT_EQ(world.rows("Produkt", "Nummer, Benämning"), eachOnce());
        EXPECT_EQ(world.rows("Prodaltprodnr", "Produktnr, Alternativnr"), eachOnce());
    }
}

TEST(HostileTexts, ChangeAndDeleteOnlyTheirOwnAlternativeNumbers) {
    World world;
    world.mask({.oem = true, .relations = {{1, "Nummer", 'S'}, {2, "Alternativ 1"}}});
    std::string before;
    std::string emptied;
    std::string texts;
    for (const std::string& text : kHostile) {
        before += fmt::format("{}\tbefore\r\n", text);
        texts += fmt::format("{0}\t{0}\r\n", text);
        emptied += fmt::format("{}\t\r\n", text);
    }
    for (const auto& [file, rows] : {std::pair(before, replaceAll(replaceAll(before, "\t", " "), "\r", "")),
                                     std::pair(texts, eachOnce()), std::pair(emptied, std::string())}) {
        SCOPED_TRACE(file.substr(0, 40));
        world.priceFile(file, CodePage::Oem850);
        EXPECT_TRUE(world.run().completed);
        EXPECT_THAT(world.port.passedOver, IsEmpty());
        EXPECT_EQ(world.rows("Prodaltprodnr", "Produktnr, Alternativnr"), rows);
    }
}

TEST(HostileTexts, FindProductsByEveryKindOfKey) {
    for (const char* key : {"Söknamn", "Levartikelnr", "Alternativ 1"}) {
        SCOPED_TRACE(key);
        World world;
        int number = 0;
        std::string expected;
        for (const std::string& text : kHostile) {
            const std::string product = fmt::format("P{}", ++number);
            world.add("Produkt",
                      {{"Nummer", product}, {"Söknamn", text}, {"Levartikelnr", text}, {"Leverantör", "L'1"}});
            world.add("Prodaltprodnr", {{"Produktnr", product}, {"Nummer", std::int64_t{1}}, {"Alternativnr", text}});
            expected += fmt::format("{} {}\n", product, text);
        }
        world.add("Leverantör", {{"Nummer", "L'1"}});
        world.job.supplier = "L'1";
        world.mask({.oem = true, .createNew = false, .relations = {{1, key, 'S'}, {2, "Benämning"}}});
        world.priceFile(priceLines(), CodePage::Oem850);
        EXPECT_TRUE(world.run().completed);
        EXPECT_THAT(world.port.passedOver, IsEmpty());
        EXPECT_EQ(world.rows("Produkt", "Nummer, Benämning"), expected);
    }
}

}  // namespace
}  // namespace kolmera::test
