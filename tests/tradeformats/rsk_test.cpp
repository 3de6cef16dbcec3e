#include <gtest/gtest.h>

#include <fstream>

#include "lang/keys/prismain.h"
#include "platform/encodings.h"
#include "tradeformats/tradeworld.h"

namespace kolmera::test {
namespace {

// Columns:                  1 3      10                         37  41
constexpr auto kArticle = "1 1871234Blandare tvättställ åäö    ST  0432\r\n";

class RskWorld : public TradeWorld {
  public:
    RskWorld() : TradeWorld("(RSK)") {}
    void file(const std::string& text) { priceFile(text, CodePage::Oem850); }
    void groups(const std::string& text) {
        std::ofstream(data() / "rkod.dat", std::ios::binary) << fromUtf8(text, CodePage::Oem850);
    }
};

TEST(Rsk, WritesArticleUnitAndGroup) {
    RskWorld world;
    world.add("Produkt", {{"Nummer", "1871234"}, {"1Pålägg", 50.0}, {"1Utpris", 7.0}, {"InköpsEnhet", "M"}});
    world.file(std::string("0260105\r\n") + kArticle + "2AB00012550 R12345\r\n2CD00011000\r\n");
    const RunSummary summary = world.run();
    EXPECT_EQ(world.rows("Produkt", "Nummer, Benämning, InköpsEnhet, Försäljenhet, Statistikenhet, Grupp"),
              "1871234 Blandare tvättställ åäö ST ST ST 0432\n");
    // Sales prices are left to the company here, markup or not.
    EXPECT_EQ(world.rows("Produkt", "Leverantör, Inpris, 1Utpris, Prisändrdat"), "1010 125.5 7 2026-01-05\n");
    EXPECT_EQ(world.rows("Levprislista", "Produktnr, Leverantör, Datum, RabattKod, InprisFöreRabatt"),
              "1871234 1010 2026-01-05 R12345 125.5\n1871234 1020 2026-01-05  110\n");
    EXPECT_EQ(summary.changed, 1);
    EXPECT_EQ(summary.saved, 2);
    EXPECT_EQ(summary.skipped, 0);
}

TEST(Rsk, TakesThePriceDateFromTheLastHeader) {
    const struct {
        const char* fault;
        std::string header;
        const char* date;
        int skipped;
    } cases[] = {
        {"first header kept", "0260105\r\n0260301\r\n", "2026-03-01", 0},
        {"a line without record type is no header", "0260105\r\n*260301\r\n", "2026-03-01", 0},
        {"date kept over a header without a date", "0260105\r\nPRISLISTA\r\n", "-", 1},
        {"date kept over a month that does not exist", "0260105\r\n0261301\r\n", "-", 1},
        {"date kept over an empty line", "0260105\r\n\r\n", "-", 1},
        {"no header at all", "", "-", 0},
        {"other record types change the date", "0260105\r\n7260301\r\n", "2026-01-05", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        RskWorld world;
        world.file(c.header + kArticle + "2AB00012550\r\n");
        EXPECT_EQ(world.run().skipped, c.skipped);
        EXPECT_EQ(world.rows("Levprislista", "Datum"), std::string(c.date) + "\n");
        EXPECT_EQ(world.rows("Produkt", "Prisändrdat"), std::string(c.date) + "\n");
    }
}

TEST(Rsk, ShortArticleOverwritesUnitAndGroupWithNothing) {
    RskWorld world;
    world.setting("PInköpsenhet", "ST");
    world.setting("PGrupp", "110");
    world.file("1 1871234Blandare\r\n2AB00012550\r\n");
    world.run();
    EXPECT_EQ(world.rows("Produkt", "Benämning, InköpsEnhet, Grupp"), "Blandare  \n");
}

TEST(RskGroups, AreReadBesideThePriceFile) {
    RskWorld world;
    world.setting("PMomskod1", std::int64_t{3010});
    world.setting("PRabattKonto", std::int64_t{3730});
    world.add("Prodgrupp", {{"Nummer", "0432"}, {"Benämning", "Gammalt namn"}, {"Momskonto1", std::int64_t{1}}});
    world.groups("0432Blandare tvättställ\r\n0500" + std::string(45, 'x') + "\r\n    utan nummer\r\n19\r\n");
    world.file(kArticle);
    const RunSummary summary = world.run();
    EXPECT_EQ(world.rows("Prodgrupp", "Nummer, Benämning, Momskonto1, Rabattkonto"),
              "0432 Blandare tvättställ 1 0\n0500 " + std::string(40, 'x') + " 3010 3730\n19  3010 3730\n");
    EXPECT_EQ(summary.groups, 3);
    EXPECT_EQ(summary.groupLinesSkipped, 1);
    EXPECT_EQ(summary.records, 1);
    EXPECT_EQ(summary.skipped, 0);
}

TEST(RskGroups, AreLeftAloneByTheOtherFormat) {
    TradeWorld world("(EIO)");
    std::ofstream(world.data() / "RKOD.DAT") << "0432Blandare\r\n";
    world.priceFile("");
    world.run();
    EXPECT_EQ(world.rows("Prodgrupp", "Nummer"), "");
}

TEST(RskGroups, CancelStopsBeforeThePriceFile) {
    RskWorld world;
    std::string groups;
    for (int number = 1001; number <= 1120; ++number) groups += std::to_string(number) + "Grupp\r\n";
    world.groups(groups);
    world.file(std::string(kArticle) + "2AB00012550\r\n");
    world.port.cancelAtStatus = world.text(text::prismain::kGroupsRead) + " 50 ....";
    const RunSummary summary = world.run();
    EXPECT_TRUE(summary.cancelled);
    EXPECT_EQ(summary.records, 0);
    EXPECT_EQ(count(world.rows("Prodgrupp", "Nummer")), 50);
    EXPECT_EQ(world.rows("Produkt", "Nummer"), "");
}

}  // namespace
}  // namespace kolmera::test
