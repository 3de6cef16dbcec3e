#include <gtest/gtest.h>

#include "tradeformats/tradeworld.h"

namespace kolmera::test {
namespace {

// Columns:                  1       9                        34      42
constexpr auto kArticle = "101234567Kabel EKK 3G1,5          20260105\r\n";

TEST(Eio, MainSupplierSetsThePricesOfTheProduct) {
    TradeWorld world("(EIO)");
    world.add("Produkt", {{"Nummer", "1234567"},
                          {"InprisProc", 10.0},
                          {"1Pålägg", 25.0},
                          {"2Utpris", 77.0},
                          {"9Pålägg", 100.0},
                          {"Grupp", "110"}});
    world.priceFile(std::string(kArticle) + "2AB00010000 R1  \r\n");
    const RunSummary summary = world.run();
    EXPECT_EQ(
        world.rows("Produkt", "Nummer, Benämning, Leverantör, Levartikelnr, Prisändrdat, Förändringsdatum, Grupp"),
        "1234567 Kabel EKK 3G1,5 1010 1234567 2026-01-05 2026-11-22 110\n");
    // Level 2 has no markup and keeps its price; levels 1 and 9 come from 90, the price less the product's 10 per cent.
    EXPECT_EQ(world.rows("Produkt", "Inpris, 1Utpris, 2Utpris, 9Utpris"), "100 112.5 77 180\n");
    EXPECT_EQ(world.rows("Levprislista", "Produktnr, Leverantör, Levartikelnr, Datum, Inpris"),
              "1234567 1010 1234567 2026-01-05 100\n");
    EXPECT_EQ(summary.records, 2);
    EXPECT_EQ(summary.changed, 1);
    EXPECT_EQ(summary.newProducts, 0);
    EXPECT_EQ(summary.priceList, 1);
    EXPECT_EQ(summary.skipped, 0);
    EXPECT_TRUE(summary.completed);
}

TEST(Eio, OtherSuppliersLeaveThePricesOfTheProduct) {
    TradeWorld world("(EIO)");
    world.add("LevrabattBrev", {{"Leverantör", "1020"}, {"Rabattgrupp", "R1"}, {"1Rabatt", 10.0}, {"2Rabatt", 5.0}});
    world.add("Produkt", {{"Nummer", "1234567"}, {"Inpris", 99.0}, {"Leverantör", "1010"}, {"1Pålägg", 25.0}});
    world.add("Levprislista", {{"Produktnr", "1234567"}, {"Leverantör", "1020"}, {"Levartikelnr", "LY-7"}});
    world.priceFile(std::string(kArticle) + "2CD00012550 R1  \r\n");
    EXPECT_EQ(world.run().changed, 1);
    EXPECT_EQ(world.rows("Produkt", "Nummer, Benämning, Inpris, Leverantör, 1Utpris, Prisändrdat"),
              "1234567 Kabel EKK 3G1,5 99 1010 0 -\n");
    EXPECT_EQ(
        world.rows("Levprislista", "Leverantör, Levartikelnr, Datum, Rabatt, RabattKod, Inpris, InprisFöreRabatt"),
        "1020 LY-7 2026-01-05 14.5 R1 107.3 125.5\n");
}

TEST(Eio, GrossPriceIsKeptUnrounded) {
    TradeWorld world("(EIO)");
    world.setting("PDecInpris", std::int64_t{0});
    world.priceFile(std::string(kArticle) + "2AB00012550\r\n");
    world.run();
    EXPECT_EQ(world.rows("Produkt", "Inpris"), "126\n");
    EXPECT_EQ(world.rows("Levprislista", "Rabatt, RabattKod, Inpris, InprisFöreRabatt"), "0  126 125.5\n");
}

TEST(Eio, DefaultMarkupCountsForTheFirstPrice) {
    TradeWorld world("(EIO)");
    world.setting("PFaktor1", 45.0);
    world.setting("PGrupp", "110");
    world.priceFile(std::string(kArticle) + "2AB00010000\r\n");
    EXPECT_EQ(world.run().newProducts, 1);
    EXPECT_EQ(world.rows("Produkt", "Nummer, Grupp, 1Pålägg, 1Utpris, 2Utpris"), "1234567 110 45 145 0\n");
}

TEST(Eio, TakesArticleNumbersAsTheTradePadsThem) {
    const struct {
        const char *fault, *field, *expected;
    } cases[] = {
        {"padding zero kept", "01234567", "1234567"},
        {"more than one zero dropped", "00234567", "0234567"},
        {"digit dropped without a zero", "12345678", "12345678"},
        {"letters refused", "E1234567", "E1234567"},
        {"blanks kept", "0123    ", "123"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        TradeWorld world("(EIO)");
        world.priceFile(std::string("1") + c.field + "Kabel\r\n2AB00010000\r\n");
        world.run();
        EXPECT_EQ(world.rows("Produkt", "Nummer"), std::string(c.expected) + "\n");
    }
}

TEST(Eio, ReadsWindowsLetters) {
    TradeWorld world("(EIO)");
    world.coupling("ÅÖ", "1020");
    world.priceFile("1E1234567Förgreningsdåsa ÅÄÖ éü   260105\r\n2ÅÖ00000100 Ä1\r\n");
    world.run();
    EXPECT_EQ(world.rows("Produkt", "Benämning"), "Förgreningsdåsa ÅÄÖ éü\n");
    EXPECT_EQ(world.rows("Levprislista", "Leverantör, RabattKod, Datum"), "1020 Ä1 2026-01-05\n");
}

TEST(Eio, PassesOverWhatIsNoPrice) {
    const struct {
        const char* fault;
        std::string file;
        const char* prices;  ///< of the supplier price list
        int skipped;
    } cases[] = {
        {"price before the first article", "2AB00010000\r\n" + std::string(kArticle) + "2AB00020000\r\n", "200\n", 1},
        {"price of an article without number booked on the one before",
         kArticle + std::string("2AB00010000\r\n1\r\n2AB00020000\r\n"), "100\n", 1},
        {"type 0 taken for a header", "0991231\r\n" + std::string(kArticle) + "2AB00010000\r\n", "100\n", 1},
        {"other record types", kArticle + std::string("3AB00020000\r\n9\r\n2AB00010000\r\n"), "100\n", 2},
        {"empty line", kArticle + std::string("\r\n2AB00010000\r\n"), "100\n", 1},
        {"letters among the digits give price 0", kArticle + std::string("2AB00010000\r\n2AB0001O000\r\n"), "100\n", 1},
        {"short line gives another price", kArticle + std::string("2AB00010000\r\n2AB00020\r\n"), "100\n", 1},
        {"blank price left out", kArticle + std::string("2AB00010000\r\n2AB           R1\r\n"), "0\n", 0},
        {"line that ends before the price left out", kArticle + std::string("2AB00010000\r\n2AB\r\n"), "0\n", 0},
        {"code in small letters", kArticle + std::string("2ab00010000\r\n"), "", 1},
        {"blank code", kArticle + std::string("2  00010000\r\n"), "", 1},
        {"supplier remembered for another code", kArticle + std::string("2AB00010000\r\n2XX00020000\r\n"), "100\n", 1},
        {"the same article again", kArticle + std::string("2AB00010000\r\n") + kArticle + "2AB00020000\r\n", "200\n",
         0},
        {"text of another kind", "PK\x03\x04 not a price file\r\nat all\r\n", "", 2},
        {"empty file", "", "", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        TradeWorld world("(EIO)");
        world.priceFile(c.file);
        EXPECT_EQ(world.run().skipped, c.skipped);
        EXPECT_EQ(world.rows("Levprislista", "Inpris"), c.prices);
        EXPECT_EQ(world.rows("Produkt", "Inpris"), c.prices);
    }
}

TEST(Eio, KeepsTheOldDatesWithoutAPriceDate) {
    for (const char* date : {"", "20260931", "i morgon"}) {
        SCOPED_TRACE(date);
        TradeWorld world("(EIO)");
        world.add("Produkt", {{"Nummer", "1234567"}, {"Prisändrdat", *Date::fromIso("2025-03-01")}});
        world.priceFile("101234567Kabel                    " + std::string(date) + "\r\n2AB00010000\r\n");
        world.run();
        EXPECT_EQ(world.rows("Produkt", "Prisändrdat, Inpris"), "2025-03-01 100\n");
        EXPECT_EQ(world.rows("Levprislista", "Datum"), "-\n");
        EXPECT_EQ(world.port.passedOver,
                  (std::vector<std::string>{"Produkt.Prisändrdat: 3421", "Levprislista.Datum: 3421"}));
    }
}

}  // namespace
}  // namespace kolmera::test
