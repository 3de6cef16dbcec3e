#include "pricing/clsvaluta.h"

#include <gtest/gtest.h>

#include "support/testcompany.h"

namespace kolmera {
namespace {

using test::TestCompany;

class ClsValutaTest : public testing::Test {
  protected:
    ClsValutaTest() {
        company.add(
            "Syvaluta",
            {{"Kod", "EUR"}, {"Kundreskontra", 11.5}, {"Levreskontra", 11.25}, {"Faktor", 1}, {"Valutakonto", 7}});
        company.add("Syvaluta", {{"Kod", "JPY"}, {"Kundreskontra", 7.5}, {"Levreskontra", 7.25}, {"Faktor", 100}});
        company.add("Syvaluta", {{"Kod", "NIL"}});
    }

    TestCompany company;
};

TEST_F(ClsValutaTest, KursOchFaktor) {
    ClsValuta currency(company.sql, company.passedOver);
    const struct {
        const char *fault, *code;
        std::uint8_t ledger;
        double rate;
        int factor;
    } steps[] = {
        {"unknown before any other is not 1", "XXX", 0, 1, 1},
        {"supplier rate for customers", "JPY", 0, 7.5, 100},
        {"customer rate for suppliers", "JPY", 1, 7.25, 100},
        {"unknown loses the last rate", "XXX", 0, 7.25, 100},
        {"remembered as unknown, and the rate lost", "XXX", 0, 7.25, 100},
        {"letter case counts in the index", "eur", 0, 11.5, 1},
        {"0 not replaced", "NIL", 0, 1, 1},
        {"remembered rate not taken again", "EUR", 1, 11.25, 1},
        {"home currency looked up", "SEK", 0, 1, 1},
        {"home currency of other case not looked up", "sek", 0, 1, 1},
    };
    for (const auto& step : steps) {
        SCOPED_TRACE(step.fault);
        currency.KursOchFaktor(step.code, step.ledger);
        EXPECT_EQ(currency.Kurs, step.rate);
        EXPECT_EQ(currency.Faktor, step.factor);
    }
}

TEST_F(ClsValutaTest, SeesAChangedRate) {
    ClsValuta currency(company.sql, company.passedOver);
    currency.InitSQLCashe();  // does nothing for a company in a file
    currency.KursOchFaktor("EUR", 0);
    company.change("Syvaluta", {{"Kundreskontra", 12}});
    currency.KursOchFaktor("EUR", 0);
    EXPECT_EQ(currency.Kurs, 12);
}

// The copy is for companies on a server; here the flag alone is set, behind an open file.
TEST_F(ClsValutaTest, CopyOfTheTable) {
    ClsValuta currency(company.sql, company.passedOver);
    company.sql.ÄrSQLFöretag = true;
    currency.InitSQLCashe();
    company.sql.ÄrSQLFöretag = false;
    company.change("Syvaluta", {{"Kundreskontra", 12}});
    currency.KursOchFaktor("eur", 0);
    EXPECT_EQ(currency.Kurs, 11.5) << "the copy is not used, or letter case counts";
    currency.KursOchFaktor("jpy", 1);
    EXPECT_EQ(currency.Kurs, 7.25) << "rates of the ledgers confused";
    EXPECT_EQ(currency.Faktor, 100);
}

TEST_F(ClsValutaTest, WithoutTheTableEveryRateIsOne) {
    company.sql.FtgDB.reset();
    ClsValuta currency(company.sql, company.passedOver);
    currency.KursOchFaktor("EUR", 0);
    EXPECT_EQ(currency.Kurs, 1);
    EXPECT_EQ(currency.Faktor, 1);
    EXPECT_EQ(company.passedOver.notes.size(), 1U);
}

}  // namespace
}  // namespace kolmera
