#include <gtest/gtest.h>

#include "tradeformats/tradeworld.h"

namespace kolmera::test {
namespace {

/// The texts of a FINFO line, with what is ordinary filled in.
struct FinfoLine {
    std::string_view code = "AB", article = "ART-1", product = "15001234", micronic{}, ean{}, name = "Penna",
                     purchasePrice = "00010000", unit = "ST", date = "20260105", quantity = "00001000000",
                     packageUnit = "KRT", salesPrice = "00015000";
};

std::string finfo(const FinfoLine& texts = {}) {
    return line({{1, texts.code},
                 {11, texts.article},
                 {29, texts.product},
                 {65, texts.micronic},
                 {71, texts.ean},
                 {116, texts.name},
                 {246, texts.purchasePrice},
                 {254, texts.unit},
                 {264, texts.date},
                 {296, texts.quantity},
                 {307, texts.packageUnit},
                 {329, texts.salesPrice}});
}

class FinfoWorld : public TradeWorld {
  public:
    FinfoWorld() : TradeWorld("(FINFO)") {
        job.fromGroup = "1000";
        job.toGroup = "1999";
    }
    /// Lines in Latin letters; the file is stored in code page 850.
    void file(const std::string& lines) { priceFile(toUtf8(lines, CodePage::Windows1252), CodePage::Oem850); }
};

TEST(Finfo, WritesProductAndSupplierPrice) {
    FinfoWorld world;
    world.file(finfo({.name = "Penna bl\xE5"}));
    const RunSummary summary = world.run();
    EXPECT_EQ(
        world.rows("Produkt", "Nummer, Benämning, Leverantör, Levartikelnr, Grupp, Prisändrdat, Förändringsdatum"),
        "15001234 Penna blå 1010 ART-1 15001 2026-01-05 2026-11-22\n");
    EXPECT_EQ(world.rows("Produkt", "InköpsEnhet, Försäljenhet, Statistikenhet, Inpris, 1Utpris, Försäljning"),
              "ST ST ST 100 150 \n");
    // The price list knows the article by the product's number.
    EXPECT_EQ(
        world.rows("Levprislista", "Produktnr, Leverantör, Levartikelnr, Datum, Inpris, InprisFöreRabatt, Utpris1"),
        "15001234 1010 15001234 2026-01-05 100 100 150\n");
    EXPECT_EQ(world.rows("Prodaltprodnr", "Produktnr"), "");
    EXPECT_EQ(summary.records, 1);
    EXPECT_EQ(summary.newProducts, 1);
    EXPECT_EQ(summary.priceList, 1);
    EXPECT_EQ(summary.alternatives, 0);
}

TEST(Finfo, ReadsTheGroupsOfTheJob) {
    const struct {
        const char* fault;
        const char *from, *to, *product;
        bool used;
    } cases[] = {
        {"compared as numbers: 10000000 is above 1999", "1000", "1999", "10000000", true},
        {"upper bound left out", "1000", "1999", "1999", true},
        {"a longer text is not below its beginning", "1000", "1999", "19991", false},
        {"lower bound left out", "1000", "1999", "1000", true},
        {"below the range", "1000", "1999", "0999", false},
        {"above the range", "1000", "1999", "2000", false},
        {"letter case of the file counts", "A", "B", "aa1", true},
        {"letter case of the job counts", "a", "b", "AA1", true},
        {"empty upper bound taken for no bound", "", "", "15001234", false},
        {"more than eight characters compared", "1000", "15001234", "150012345", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        FinfoWorld world;
        world.job.fromGroup = c.from;
        world.job.toGroup = c.to;
        world.file(finfo({.product = c.product}));
        EXPECT_EQ(world.run().skipped, c.used ? 0 : 1);
        EXPECT_EQ(world.rows("Produkt", "Nummer"), c.used ? std::string(c.product) + "\n" : "");
    }
}

TEST(Finfo, WritesPackagesThatAreNotOne) {
    const struct {
        const char *fault, *quantity, *expected;
    } cases[] = {
        {"one written", "00001000000", "5 BNT BNT\n"},        {"millionths", "00012000000", "12 KRT KRT\n"},
        {"fractions of one", "00000500000", "0.5 KRT KRT\n"}, {"zero taken for one", "00000000000", "0 KRT KRT\n"},
        {"blank taken for one", "", "0 KRT KRT\n"},           {"damaged taken for 0", "0000l000000", "5 BNT BNT\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        FinfoWorld world;
        world.add("Produkt", {{"Nummer", "15001234"}, {"Antal1", 5.0}, {"Rubrik0", "BNT"}, {"Rubrik1", "BNT"}});
        world.file(finfo({.quantity = c.quantity}));
        world.run();
        EXPECT_EQ(world.rows("Produkt", "Antal1, Rubrik0, Rubrik1"), c.expected);
    }
}

TEST(Finfo, WorksOutAMissingSalesPrice) {
    const struct {
        const char* fault;
        bool existing;
        const char* salesPrice;
        double InprisProc, Pålägg1;
        const char *product, *priceList;
    } cases[] = {
        {"markup put on a given price", true, "00015000", 10, 40, "150\n", "150\n"},
        {"no markup on an existing product", true, "00000000", 0, 40, "140\n", "0\n"},
        {"percentage forgotten", true, "00000000", 10, 50, "135\n", "0\n"},
        {"markup 0 leaves the old price", true, "00000000", 0, 0, "100\n", "0\n"},
        {"blank is not 0", true, "", 0, 40, "140\n", "0\n"},
        {"damaged costs the line", true, "150,00", 0, 40, "140\n", "0\n"},
        {"markup on a new product", false, "00000000", 0, 40, "0\n", "0\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        FinfoWorld world;
        world.setting("PFaktor1", c.Pålägg1);
        if (c.existing) {
            world.add("Produkt",
                      {{"Nummer", "15001234"}, {"1Utpris", 7.0}, {"InprisProc", c.InprisProc}, {"1Pålägg", c.Pålägg1}});
        }
        world.file(finfo({.salesPrice = c.salesPrice}));
        world.run();
        EXPECT_EQ(world.rows("Produkt", "1Utpris"), c.product);
        EXPECT_EQ(world.rows("Levprislista", "Utpris1"), c.priceList);
    }
}

TEST(Finfo, RoundsAllPrices) {
    FinfoWorld world;
    world.setting("PDecInpris", std::int64_t{0});
    world.setting("PDecUtpris", std::int64_t{1});
    world.file(finfo({.purchasePrice = "00010050", .salesPrice = "00015026"}));
    world.run();
    EXPECT_EQ(world.rows("Produkt", "Inpris, 1Utpris"), "100 150.3\n");
    EXPECT_EQ(world.rows("Levprislista", "Inpris, InprisFöreRabatt, Utpris1"), "100 100 150.3\n");
}

TEST(Finfo, TakesTheDiscountLetterOfTheJobsSupplier) {
    FinfoWorld world;
    world.job.supplier = "5010";
    world.add("LevrabattBrev", {{"Leverantör", "5010"}, {"Rabattgrupp", ""}, {"1Rabatt", 20.0}});
    world.add("LevrabattBrev", {{"Leverantör", "1010"}, {"Rabattgrupp", ""}, {"1Rabatt", 50.0}});
    world.add("Levprislista",
              {{"Produktnr", "15001234"}, {"Leverantör", "1010"}, {"Rabatt", 33.0}, {"RabattKod", "GAMMAL"}});
    world.file(finfo());
    world.run();
    // The percentage stays as it was, the code is emptied.
    EXPECT_EQ(world.rows("Levprislista", "Rabatt, RabattKod, Inpris, InprisFöreRabatt"), "33  80 100\n");
}

TEST(Finfo, StoresAlternativeNumbersUnderTheirHeadings) {
    FinfoWorld world;
    world.job.heading1 = 3;
    world.add("Prodaltprodnr", {{"Produktnr", "15001234"}, {"Nummer", std::int64_t{3}}, {"Alternativnr", "111111"}});
    world.add("Prodaltprodnr", {{"Produktnr", "15001234"}, {"Nummer", std::int64_t{1}}, {"Alternativnr", "old"}});
    world.file(finfo({.micronic = "222222", .ean = "2000000000015"}) + finfo({.product = "15009999"}));
    EXPECT_EQ(world.run().alternatives, 2);
    // Without heading the EAN is not stored; an empty number is.
    EXPECT_EQ(world.rows("Prodaltprodnr", "Produktnr, Nummer, Alternativnr"),
              "15001234 3 222222\n15001234 1 old\n15009999 3 \n");
    world.job.heading1 = 0;
    world.job.heading2 = 1;
    EXPECT_EQ(world.run().alternatives, 2);
    EXPECT_EQ(world.rows("Prodaltprodnr", "Produktnr, Nummer, Alternativnr"),
              "15001234 3 222222\n15001234 1 2000000000015\n15009999 3 \n15009999 1 \n");
}

TEST(Finfo, ShortLineHasNothingBehindItsEnd) {
    FinfoWorld world;
    world.add("Produkt", {{"Nummer", "15001234"}, {"Inpris", 7.0}, {"Prisändrdat", *Date::fromIso("2025-03-01")}});
    world.file(finfo({.name = "Penna"}).substr(0, 130) + "\r\n");
    EXPECT_EQ(world.run().changed, 1);
    EXPECT_EQ(world.rows("Produkt", "Benämning, InköpsEnhet, Inpris, Antal1, Prisändrdat"), "Penna  0 0 2025-03-01\n");
}

TEST(Finfo, PassesOverWhatIsNoArticle) {
    const struct {
        const char* fault;
        std::string line;
    } cases[] = {
        {"letter O in the purchase price gives 0", finfo({.purchasePrice = "0001O000"})},
        {"line that ends within the price gives another price", finfo().substr(0, 250) + "\r\n"},
        {"no product number", finfo({.product = ""})},
        {"code in small letters", finfo({.code = "ab"})},
        {"empty line", "\r\n"},
        {"another kind of file", "101234567Kabel EKK 3G1,5          20260105\r\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        FinfoWorld world;
        world.job.fromGroup.clear();  // takes lines without a group, too
        world.file(finfo() + c.line);
        const RunSummary summary = world.run();
        EXPECT_EQ(summary.skipped, 1);
        EXPECT_EQ(summary.records, 2);
        EXPECT_EQ(world.rows("Produkt", "Nummer, Inpris, 1Utpris"), "15001234 100 150\n");
        EXPECT_EQ(world.rows("Levprislista", "Produktnr, Inpris"), "15001234 100\n");
    }
}

}  // namespace
}  // namespace kolmera::test
