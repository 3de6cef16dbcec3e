#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/lettercase.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

using ::testing::IsEmpty;

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
