#include "import/rows/defaults.h"

#include <gtest/gtest.h>

#include "support/testcompany.h"

namespace kolmera {
namespace {

using test::TestCompany;

class NewProductDefaultsTest : public testing::Test {
  protected:
    NewProductDefaultsTest() {
        company.add("Syinställningar",
                    {{"PGrupp", "10"},     {"PInköpsfaktor", 2}, {"PInköpsenhet", "ST"}, {"PFaktor1", 25},
                     {"PFaktor9", 12.5},   {"PMomsKod", "1"},    {"PLagervärde", "T"},   {"PLagervärdeproc", 80},
                     {"PPrislista", true}, {"PAvgift", "P"},     {"PMomskod1", 1},       {"PMomskod2", 2},
                     {"PMomskod3", 3},     {"PMomsfritt", 4},    {"PUtförselEU", 5},     {"PExport", 6},
                     {"PLagerkonto", 7},   {"PVarukostnad", 8},  {"PInternUttag", 9},    {"PRabattKonto", 10}});
        company.change("Syinställningar", {{"PFörsäljfaktor", 3},
                                           {"PStatistikfaktor", 4},
                                           {"PFörsäljenhet", "M"},
                                           {"PStatistikenhet", "KG"},
                                           {"PFaktor2", 2},
                                           {"PFaktor3", 3},
                                           {"PFaktor4", 4},
                                           {"PFaktor5", 5},
                                           {"PFaktor6", 6},
                                           {"PFaktor7", 7},
                                           {"PFaktor8", 8},
                                           {"PValutakod", "EUR"},
                                           {"PBatchnummer", true},
                                           {"PAvgiftKrProc", "%"},
                                           {"PLagerbokföring", true}});
        company.add("Syinställningar2", {{"PPrisGrupp", "G1"}, {"PWebshop", true}, {"PSpärraRabatt", true}});
    }

    /// Creates a product that has these columns already, and reads what it has then.
    std::string created(const TestCompany::Row& imported, std::string_view columns) {
        const auto settings = company.sql.FtgDB->open("Syinställningar", RecordsetType::Dynaset);
        const auto settings2 = company.sql.FtgDB->open("Syinställningar2", RecordsetType::Dynaset);
        NewProductDefaults defaults(*settings, *settings2, company.sql.locale(), company.passedOver);
        company.sql.FtgDB->execute("DELETE FROM Produkt");
        const auto products = company.sql.FtgDB->open("Produkt", RecordsetType::Table);
        products->addNew();
        for (const auto& [column, value] : imported) products->set(column, value);
        defaults.SättNyProduktStandard(*products);
        products->update();
        return company.select("SELECT " + std::string(columns) + " FROM Produkt");
    }

    TestCompany company;
};

TEST_F(NewProductDefaultsTest, FillsWhatIsUnset) {
    const struct {
        const char* fault;
        TestCompany::Row imported;
        const char *columns, *expected;
    } cases[] = {
        {"a kind of column left out",
         {},
         "Grupp, Inköpsfaktor, InköpsEnhet, Produkttyp, [1Pålägg], [9Pålägg], Momskod",
         "10 2 ST 1 25 12.5 1\n"},
        {"columns found by name left out", {}, "Avgift, Prisgrupp, Webshop, Inaktiv", "P G1 True False\n"},
        {"default of a neighbouring column taken",
         {},
         "Försäljfaktor, Statistikfaktor, Försäljenhet, Statistikenhet, Valutakod, LagerArtikel, Batchnummer, "
         "KostnadProdukt, AvgiftKrProc, Lagerbokföring, Spärrarabatt",
         "3 4 M KG EUR False True False % True True\n"},
        {"default of a neighbouring level taken",
         {},
         "[2Pålägg], [3Pålägg], [4Pålägg], [5Pålägg], [6Pålägg], [7Pålägg], [8Pålägg]",
         "2 3 4 5 6 7 8\n"},
        {"imported values overwritten",
         {{"Grupp", "7"}, {"Inköpsfaktor", 3}, {"InköpsEnhet", "M"}, {"1Pålägg", 30}, {"Prisgrupp", "X"}},
         "Grupp, Inköpsfaktor, InköpsEnhet, [1Pålägg], Prisgrupp",
         "7 3 M 30 X\n"},
        {"imported 0, no and empty text kept",
         {{"Inköpsfaktor", 0}, {"Prislista", false}, {"Grupp", ""}},
         "Inköpsfaktor, Prislista, Grupp",
         "2 True 10\n"},
        {"level not 9, valuation not that of the company, or its percentage missing",
         {},
         "Värderingsnivå, Lagervärde, Lagervärdeproc",
         "9 T 80\n"},
        {"low level does not force the valuation",
         {{"Värderingsnivå", 8}},
         "Värderingsnivå, Lagervärde, Lagervärdeproc",
         "8 I \n"},
        {"high level forces the valuation",
         {{"Värderingsnivå", 12}, {"Lagervärde", "I"}},
         "Värderingsnivå, Lagervärde, Lagervärdeproc",
         "12 I \n"},
        {"imported percentage 0 taken for empty", {{"Lagervärdeproc", 0}}, "Lagervärde, Lagervärdeproc", "T 0\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(created(c.imported, c.columns), c.expected);
    }
    EXPECT_EQ(company.passedOver.notes, std::vector<std::string>{});
}

TEST_F(NewProductDefaultsTest, AMissingDefaultLeavesTheOthers) {
    company.sql.FtgDB->execute("ALTER TABLE Syinställningar DROP COLUMN PInköpsfaktor");
    EXPECT_EQ(created({}, "Inköpsfaktor, InköpsEnhet"), "0 ST\n");
    EXPECT_EQ(company.passedOver.notes.size(), 1U);
}

TEST_F(NewProductDefaultsTest, AccountsOfANewGroup) {
    const auto settings = company.sql.FtgDB->open("Syinställningar", RecordsetType::Dynaset);
    const auto groups = company.sql.FtgDB->open("Prodgrupp", RecordsetType::Table);
    groups->addNew();
    groups->set("Nummer", "G");
    SättGruppKonton(*groups, *settings, company.passedOver);
    groups->update();
    EXPECT_EQ(company.select("SELECT * FROM Prodgrupp"), "1 G   0 0 False 1 2 3 4 5 6 7 0 8 0 0 0 9 10 \n");
    EXPECT_EQ(company.passedOver.notes, std::vector<std::string>{});
}

}  // namespace
}  // namespace kolmera
