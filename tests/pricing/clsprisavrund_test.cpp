#include "pricing/clsprisavrund.h"

#include <gtest/gtest.h>

#include <map>

#include "support/testcompany.h"

namespace kolmera {
namespace {

using test::PassedOverNotes;
using test::TestCompany;

constexpr std::string_view kRanges =
    "0\r\n9,99\r\n10\r\n99,99\r\n100\r\n999,99\r\n1000\r\n9999,99\r\n10000\r\n99999,99";

/// Rounding needs no company.
struct RoundingOnly {
    SqlLayer sql{Locale(Locale::Kind::Swedish)};
    PassedOverNotes passedOver;
    ClsPrisAvrund prices{sql, passedOver};

    explicit RoundingOnly(std::string_view ranges) {
        prices.StrInställning(ranges);
        prices.UppdateraNumValues();
    }
};

TEST(ClsPrisAvrund, RoundsByTheFirstRangeThatContainsThePrice) {
    RoundingOnly standard(kRanges);
    RoundingOnly overlapping("0\r\n100\r\n0\r\n1000");
    RoundingOnly points("0\r\n9.99");
    RoundingOnly empty("");
    RoundingOnly narrow("12,34\r\n20");
    RoundingOnly negative("\r\n\r\n-10\r\n-1");
    const struct {
        const char* fault;
        const ClsPrisAvrund& prices;
        double price, expected;
    } cases[] = {
        {"range 1 rounded to two decimals", standard.prices, 4.567, 4.6},
        {"range 1 halves away from even", standard.prices, 4.25, 4.2},
        {"upper bound left out", standard.prices, 9.99, 10},
        {"lower bound left out", narrow.prices, 12.34, 12.3},
        {"gap between ranges taken by a range", standard.prices, 9.994, 9.99},
        {"0.25 sent down", standard.prices, 12.25, 12.5},
        {"below 0.25 sent up", standard.prices, 12.2499, 12},
        {"0.75 kept at the half", standard.prices, 12.75, 13},
        {"below 0.75 sent up", standard.prices, 12.74, 12.5},
        {"negative halves counted from zero", negative.prices, -1.2, -1},
        {"negative half sent to the whole", negative.prices, -1.5, -1.5},
        {"negative quarter counted downwards", negative.prices, -1.75, -1.5},
        {"half rounded away from even", standard.prices, 450.5, 450},
        {"tens sent up", standard.prices, 1234, 1230},
        {"123.5 tens rounded to odd", standard.prices, 1235, 1240},
        {"hundreds rounded as tens", standard.prices, 45678, 45700},
        {"no standard decimals above the last range", standard.prices, 123456.789, 123456.79},
        {"negative price taken by a range", standard.prices, -4.567, -4.57},
        {"second range wins over the first", overlapping.prices, 50.26, 50.3},
        {"decimal point read in a locale with comma", points.prices, 9.876, 9.88},
        {"empty range taken for all prices", empty.prices, 4.567, 4.57},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(c.prices.UtförAvrundning(c.price, 2, 1), c.expected);
    }
    EXPECT_EQ(standard.prices.UtförAvrundning(4.567, 2, 0), 4.6) << "no price list";
    EXPECT_EQ(standard.prices.UtförAvrundning(4.567, 2, 10), 4.6) << "no price list";
}

/// A company with currencies and VAT, and prices as they stand before coupling: 100, 200 ... 900, VAT code 1.
class CoupledCompany : public TestCompany {
  public:
    CoupledCompany() {
        add("Syinställningar", {{"1OMomsproc", 25}, {"2OMomsproc", 12}, {"3OMomsproc", 6}});
        add("Syvaluta", {{"Kod", "EUR"}, {"Kundreskontra", 10}, {"Levreskontra", 9}, {"Faktor", 1}});
        add("Syvaluta", {{"Kod", "JPY"}, {"Kundreskontra", 7.5}, {"Levreskontra", 7}, {"Faktor", 100}});
        add("Syinställningar2", {});
    }

    ClsPrisAvrund prices(const Row& settings) {
        change("Syinställningar2", settings);
        ClsPrisAvrund prices(sql, passedOver);
        prices.InitInstRS(*sql.SQLÖppnaRs("Syinställningar2", RecordsetType::Dynaset, options::kReadOnly));
        for (int list = 1; list <= kPriceLists; ++list) prices.Utpris(list, 100 * list);
        prices.DblIPEfterRabatt = 80;
        prices.DblVägtIP = 50;
        prices.ByteDecimaler = 2;
        prices.IntProdMomskod = 1;
        return prices;
    }
};

/// The recomputed lists with their prices, and any other list whose price has moved.
std::map<int, double> changed(const ClsPrisAvrund& prices) {
    std::map<int, double> changed;
    for (int list = 1; list <= kPriceLists; ++list) {
        if (prices.Ändrad(list) || prices.Utpris(list) != 100 * list) changed[list] = prices.Utpris(list);
    }
    return changed;
}

TEST(ClsPrisAvrund, RecomputesCoupledLists) {
    CoupledCompany company;
    const struct {
        const char *fault, *kopplaMot, *valuta, *momsMot;
        bool margins;
        std::map<int, float> markups;
        std::map<int, double> expected;
    } cases[] = {
        {"list does not see the new price of a lower one, or \"-\" is coupled",
         "2=-;3=1",
         "",
         "",
         false,
         {{1, 25}, {2, 25}, {3, 25}},
         {{1, 100}, {3, 125}}},
        {"list sees the new price of a higher one", "1=2", "", "", false, {{1, 10}, {2, 25}}, {{1, 220}, {2, 100}}},
        {"weighted in price not taken", "1=V", "", "", false, {{1, 25}}, {{1, 62.5}}},
        {"unknown code not taken as the in price",
         "1=10;2=;3=v",
         "",
         "",
         false,
         {{1, 25}, {2, 25}, {3, 25}},
         {{1, 100}, {2, 100}, {3, 100}}},
        {"margin computed as markup", "", "", "", true, {{1, 25}}, {{1, 106.67}}},
        {"margin of 100 or more used", "", "", "", true, {{1, 100}, {2, 99.5F}, {3, -99.5F}}, {}},
        {"unusable margin used in a foreign list", "", "1=EUR", "", true, {{1, 100}}, {{1, 8}}},
        {"negative margin refused", "", "", "", true, {{1, -99}}, {{1, 40.2}}},
        {"markup beyond 99 refused as if it were a margin", "", "", "", false, {{1, 150}}, {{1, 200}}},
        {"home list without markup recomputed", "", "", "", false, {}, {}},
        {"foreign list without markup not recomputed", "", "1=EUR", "", false, {}, {{1, 8}}},
        {"rate for 100 units taken for one", "", "1=JPY", "", false, {{1, 25}}, {{1, 1333.33}}},
        {"foreign base not brought home", "1=-;2=1", "1=JPY", "", false, {{2, 25}}, {{2, 9.38}}},
        {"unknown currency loses the last rate", "", "1=EUR;2=XXX", "", false, {{1, 25}, {2, 25}}, {{1, 10}, {2, 10}}},
        {"VAT not added, or a markup demanded", "2=M", "", "2=1", false, {{2, 0}}, {{2, 125}}},
        {"markup added to VAT", "2=M", "", "2=1", false, {{2, 50}}, {{2, 125}}},
        {"foreign list plus VAT not brought home", "1=-;2=M", "1=EUR", "2=1", false, {}, {{2, 1250}}},
        {"VAT list that is none taken", "2=M;3=M", "", "2=0;3=10", false, {}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        ClsPrisAvrund prices = company.prices({{"PUtprisKopplaMot", c.kopplaMot},
                                               {"PUtprisValuta", c.valuta},
                                               {"PUtprisMomsMot", c.momsMot},
                                               {"PUtprisFaktorTG", c.margins}});
        for (const auto& [list, markup] : c.markups) prices.Pålägg(list, markup);
        prices.UtförPriskoppling(0, false);
        EXPECT_EQ(changed(prices), c.expected);
    }
    EXPECT_EQ(company.passedOver.notes, std::vector<std::string>{});
}

TEST(ClsPrisAvrund, CouplingHeedsSettingsAndProduct) {
    CoupledCompany company;
    const struct {
        const char* fault;
        TestCompany::Row settings;
        void (*arrange)(ClsPrisAvrund&);
        std::map<int, double> expected;
    } cases[] = {
        {"foreign list without markup recomputed against PFaktorValuta",
         {{"PUtprisValuta", "1=EUR"}, {"PFaktorValuta", true}},
         [](ClsPrisAvrund& prices) { prices.Pålägg(2, 25); },
         {{2, 100}}},
        {"base 0 written",
         {{"PUtprisKopplaMot", "1=V"}},
         [](ClsPrisAvrund& prices) {
             prices.Pålägg(1, 25);
             prices.DblVägtIP = 0;
         },
         {}},
        {"VAT of another code added",
         {{"PUtprisKopplaMot", "2=M"}, {"PUtprisMomsMot", "2=1"}},
         [](ClsPrisAvrund& prices) { prices.IntProdMomskod = 2; },
         {{2, 112}}},
        {"third VAT code unknown",
         {{"PUtprisKopplaMot", "2=M"}, {"PUtprisMomsMot", "2=1"}},
         [](ClsPrisAvrund& prices) { prices.IntProdMomskod = 3; },
         {{2, 106}}},
        {"VAT added without a code",
         {{"PUtprisKopplaMot", "2=M"}, {"PUtprisMomsMot", "2=1"}},
         [](ClsPrisAvrund& prices) { prices.IntProdMomskod = 4; },
         {{2, 100}}},
        {"coupled price not rounded by range, or list 2 in spite of its flag",
         {{"PPrisAvrund", "\r\n\r\n\r\n\r\n1\r\n999"}, {"PNoAvrundPLBM", 4}},
         [](ClsPrisAvrund& prices) {
             prices.Pålägg(1, 5.5F);
             prices.Pålägg(2, 5.5F);
         },
         {{1, 84}, {2, 84.4}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        company.change("Syinställningar2", {{"PUtprisKopplaMot", ""},
                                            {"PUtprisValuta", ""},
                                            {"PUtprisMomsMot", ""},
                                            {"PFaktorValuta", false},
                                            {"PNoAvrundPLBM", 0},
                                            {"PPrisAvrund", Null{}}});
        ClsPrisAvrund prices = company.prices(c.settings);
        c.arrange(prices);
        prices.UtförPriskoppling(0, false);
        EXPECT_EQ(changed(prices), c.expected);
    }
}

TEST(ClsPrisAvrund, CouplingFromAListOn) {
    CoupledCompany company;
    ClsPrisAvrund prices = company.prices({});
    for (int list = 1; list <= kPriceLists; ++list) prices.Pålägg(list, 25);
    prices.UtförPriskoppling(8, true);
    EXPECT_EQ(changed(prices), (std::map<int, double>{{8, 100}, {9, 100}}));
    prices.Utpris(8, 800);
    prices.UtförPriskoppling(8, false);
    EXPECT_EQ(changed(prices), (std::map<int, double>{{9, 100}}));
}

TEST(ClsPrisAvrund, KnowsWhetherAListIsCoupled) {
    const struct {
        const char *fault, *setting;
        bool expected;
    } cases[] = {
        {"nothing set", "", false},
        {"uncoupled and in price count", "1=-;2=I", false},
        {"last list passed over", "9=V", true},
        {"unknown code does not count", "3=?", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        RoundingOnly none("");
        none.prices.StrPUtprisKopplaMot("1=V");
        none.prices.StrPUtprisKopplaMot(c.setting);
        EXPECT_EQ(none.prices.BoolKopplaMotFinns, c.expected);
    }
}

}  // namespace
}  // namespace kolmera
