#include "discounts/rabattbrev.h"

#include <gtest/gtest.h>

#include <array>

#include "support/testcompany.h"

namespace kolmera {
namespace {

using test::TestCompany;

TEST(TotalRabatt, ChainsTheSteps) {
    const Locale swedish;
    const struct {
        const char* fault;
        std::array<float, 5> discounts;
        const char* expected;
    } cases[] = {
        {"added up instead of chained", {10, 5, 2, 0, 0}, "16,21"},
        {"0 ends the chain", {10, 0, 5, 0, 0}, "14,50"},
        {"surcharge cancels the discount", {10, -10, 0, 0, 0}, "1,00"},
        {"nothing is not 0", {}, "0,00"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(swedish.formatFixed(TotalRabatt(c.discounts), 2), c.expected);
    }
}

class RabattbrevTest : public testing::Test {
  protected:
    RabattbrevTest() {
        company.add("LevrabattBrev",
                    {{"Leverantör", "7"}, {"Rabattgrupp", "A1"}, {"1Rabatt", 10}, {"2Rabatt", 5}, {"3Rabatt", 0}});
        company.add("LevrabattBrev", {{"Leverantör", "7"}, {"Rabattgrupp", "NONE"}});
        company.add("LevrabattBrev", {{"Leverantör", "71"}, {"Rabattgrupp", ""}, {"5Rabatt", 50}});
    }

    TestCompany company;
};

TEST_F(RabattbrevTest, FindsTheLetterOfSupplierAndCode) {
    Rabattbrev letters(company.sql, company.passedOver);
    const struct {
        const char *fault, *supplier, *code;
        double expected;
    } cases[] = {
        {"first look-up", "7", "A1", 1 - 0.95 * 0.9},
        {"remembered fraction lost", "7", "A1", 1 - 0.95 * 0.9},
        {"letter case counts", "7", "a1", 1 - 0.95 * 0.9},
        {"unknown code keeps the last fraction", "7", "A2", 0},
        {"empty steps are no steps", "7", "NONE", 0},
        {"empty code finds nothing", "71", "", 0.5},
        {"supplier and code run together in the memory", "7", "1", 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(letters.BeräknaRabattbrev(c.supplier, c.code), c.expected);
    }
}

TEST_F(RabattbrevTest, SeesAChangedLetter) {
    Rabattbrev letters(company.sql, company.passedOver);
    letters.BeräknaRabattbrev("7", "A1");
    company.change("LevrabattBrev", {{"1Rabatt", 0}});
    EXPECT_EQ(letters.BeräknaRabattbrev("7", "A1"), 1 - 0.95);
}

TEST_F(RabattbrevTest, WithoutTheTableThereAreNoDiscounts) {
    company.sql.FtgDB.reset();
    Rabattbrev letters(company.sql, company.passedOver);
    EXPECT_EQ(letters.BeräknaRabattbrev("7", "A1"), 0);
    EXPECT_EQ(company.passedOver.notes.size(), 1U);
}

}  // namespace
}  // namespace kolmera
