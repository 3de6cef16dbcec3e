#include "pricing/prisclsroundinprisoutpris.h"

#include <gtest/gtest.h>

#include "support/testcompany.h"

namespace kolmera {
namespace {

using test::TestCompany;

const Date kToday = Date::fromCivil(2026, 11, 22).value();
const Date kEarlier = Date::fromCivil(2020, 1, 1).value();

class PriceFacade : public testing::Test {
  protected:
    PriceFacade() {
        company.add("Syinställningar2", {{"PDecInpris", 3}, {"PDecUtpris", 1}, {"PAutoUppdatUtpris", true}});
        company.add("Produkt", {{"Nummer", "A"},
                                {"Inpris", 80},
                                {"Vägtinpris", 50},
                                {"1Utpris", 100},
                                {"2Utpris", 100},
                                {"3Utpris", 7},
                                {"1Pålägg", 25},
                                {"2Pålägg", 50},
                                {"Prisändrdat", kEarlier},
                                {"Förändringsdatum", kEarlier}});
    }

    PrisClsRoundInprisOUtpris facade(std::int32_t PPrisDatumBM = kStandardPrisDatumBM) {
        return {company.sql, company.passedOver, kToday, PPrisDatumBM};
    }

    std::string coupled(PrisClsRoundInprisOUtpris& prices, double inpris) {
        prices.Init();
        const auto product = company.find("Produkt", "Nummer", "A");
        prices.Priskoppling(*product, inpris);
        return company.select("SELECT [1Utpris], [2Utpris], [3Utpris], Prisändrdat, Förändringsdatum FROM Produkt");
    }

    TestCompany company;
};

TEST_F(PriceFacade, RoundsByTheColumn) {
    company.change("Syinställningar2", {{"PPrisAvrund", "\r\n\r\n\r\n\r\n10\r\n20"}, {"PNoAvrundPLBM", 512}});
    PrisClsRoundInprisOUtpris prices = facade();
    prices.Init();
    const struct {
        const char* fault;
        int position;
        double amount, expected;
    } cases[] = {
        {"in price rounded by ranges", 21, 12.34567, 12.346},
        {"discount rounded", 22, 12.34567, 12.34567},
        {"weighted in price not rounded", 23, 12.34567, 12.346},
        {"first price list not rounded by range", 24, 12.34567, 12},
        {"ninth price list rounded by range in spite of its flag", 32, 12.34567, 12.3},
        {"markup rounded as a price", 33, 12.34567, 12.34567},
        {"standard decimals of out prices not taken", 24, 21.66, 21.7},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(prices.Avrunda(c.position, c.amount), c.expected);
    }
}

TEST_F(PriceFacade, TwoDecimalsWhenTheSettingsCannotBeRead) {
    const struct {
        const char *fault, *statement;
    } cases[] = {
        {"decimals that are none taken", "UPDATE Syinställningar2 SET PDecUtpris = 300"},
        {"one of the two kept", "UPDATE Syinställningar2 SET PDecUtpris = -1"},
        {"no row", "DELETE FROM Syinställningar2"},
        {"no table", "DROP TABLE Syinställningar2"},
    };
    PrisClsRoundInprisOUtpris prices = facade();
    prices.Init();
    EXPECT_EQ(prices.InprisDec, 3);
    EXPECT_EQ(prices.UtprisDec, 1);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        company.sql.FtgDB->execute(c.statement);
        prices.Init();
        EXPECT_EQ(prices.InprisDec, 2);
        EXPECT_EQ(prices.UtprisDec, 2);
    }
}

TEST_F(PriceFacade, WritesCoupledPricesAndDatesThem) {
    const struct {
        const char* fault;
        std::int32_t mask;
        double inpris;
        const char* expected;
    } cases[] = {
        {"list without markup written, or decimals not those of out prices", 2044, 80.04,
         "100.1 120.1 7 2026-11-22 2026-11-22\n"},
        {"list 1 dates in spite of its bit", 2044 - 4, 40, "50 60 7 2026-11-22 2026-11-22\n"},
        {"only lists without their bit change, and they date", 2044 - 4 - 8, 40, "50 60 7 2020-01-01 2026-11-22\n"},
        {"in price 0 written", 2044, 0, "100 100 7 2020-01-01 2020-01-01\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        company.change("Produkt",
                       {{"1Utpris", 100}, {"2Utpris", 100}, {"Prisändrdat", kEarlier}, {"Förändringsdatum", kEarlier}});
        PrisClsRoundInprisOUtpris prices = facade(c.mask);
        EXPECT_EQ(coupled(prices, c.inpris), c.expected);
    }
    EXPECT_EQ(company.passedOver.notes, std::vector<std::string>{});
}

TEST_F(PriceFacade, TakesPricesMarkupsAndVatCodeOfTheProduct) {
    company.add("Syinställningar", {{"2OMomsproc", 12}});
    company.change("Syinställningar2", {{"PUtprisKopplaMot", "1=9;2=V;3=M"}, {"PUtprisMomsMot", "3=9"}});
    company.change("Produkt", {{"9Utpris", 90}, {"Momskod", "2"}});
    PrisClsRoundInprisOUtpris prices = facade();
    EXPECT_EQ(coupled(prices, 80), "112.5 75 100.8 2026-11-22 2026-11-22\n");
    EXPECT_TRUE(prices.KopplaMotFinns());
}

TEST_F(PriceFacade, NearlyEqualPriceIsWrittenButDoesNotDate) {
    company.change("Syinställningar2", {{"PDecUtpris", 4}});
    const struct {
        const char* fault;
        double list1, list2;
        const char* date;
    } cases[] = {
        {"0.001 dates", 100.001, 119.999, "2020-01-01"},
        {"more does not date", 100.0011, 120, "2026-11-22"},
        {"more on the other side does not date", 100, 119.9989, "2026-11-22"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        company.change("Produkt", {{"1Utpris", c.list1}, {"2Utpris", c.list2}, {"Prisändrdat", kEarlier}});
        PrisClsRoundInprisOUtpris prices = facade();
        EXPECT_EQ(coupled(prices, 80), std::string("100 120 7 ") + c.date + " 2026-11-22\n");
    }
}

TEST_F(PriceFacade, RecomputesOnlyWhenTheCompanyWantsIt) {
    company.change("Syinställningar2", {{"PAutoUppdatUtpris", false}});
    PrisClsRoundInprisOUtpris prices = facade();
    EXPECT_EQ(coupled(prices, 40), "100 100 7 2020-01-01 2020-01-01\n");
}

TEST_F(PriceFacade, RefusedWritingIsPassedOver) {
    PrisClsRoundInprisOUtpris prices = facade();
    prices.Init();
    const auto product = company.sql.FtgDB->open("Produkt", RecordsetType::Dynaset, options::kReadOnly);
    prices.Priskoppling(*product, 40);
    EXPECT_EQ(company.passedOver.notes.size(), 1U);
    const auto nothing = company.find("Produkt", "Nummer", "B");
    prices.Priskoppling(*nothing, 40);
    EXPECT_EQ(company.passedOver.notes.size(), 2U);
    EXPECT_EQ(company.select("SELECT [1Utpris] FROM Produkt"), "100\n");
}

}  // namespace
}  // namespace kolmera
