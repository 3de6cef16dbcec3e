#include "import/run/pricecalculation.h"

#include <gtest/gtest.h>

#include "support/world.h"

namespace kolmera::test {
namespace {

// What no job of the demo has: the demo's calculations are compared with its runs.
TEST(PriceCalculation, KeepsTheRecordsOfOneProduct) {
    PriceCalculation calculation("ärt");
    const auto tell = [&](std::int64_t record, std::string_view product, double price) {
        calculation.record(record);
        tellFileNumber(calculation, "Produkt.Inpris", "4", "1\x1B", price, 0, false);
        calculation.product(product);
        calculation.written("Produkt.Inpris", price);
        calculation.written("Produkt.Vikt", price);  // nobody computed it
    };
    tell(1, "ÄRT", 5);
    startFrom(calculation, "Produkt.1Utpris", PriceTrace::kNetCost, 7.5);
    calculation.step({.step = PriceStep::Margin, .value = 10, .operand = 25});
    calculation.step({.step = PriceStep::Kept, .value = 9});
    calculation.column("Produkt.Inpris");
    calculation.step({.step = PriceStep::Factor, .value = 0.5, .operand = static_cast<double>(7.1F)});
    calculation.step({.step = PriceStep::NotCoupled});  // no news about a price that was computed
    for (const char* column : {"Produkt.2Utpris", "Produkt.3Utpris", "Produkt.4Utpris", "Produkt.5Utpris"}) {
        calculation.column(column);
        calculation.step({.step = PriceStep::NoMarkup});
    }
    tell(2, "Bönor", 6);
    World world;
    world.texts().InitSpråkOrd("EN");
    EXPECT_EQ(calculation.text(world.texts(), Locale(Locale::Kind::English)), R"(record 1, ärt
  Produkt.Inpris
    Text of the price file, 4: "1\x1B"
    No number, taken as: 5
    Written: 5
    Divided by the purchase factor 7.1: 0.5
  Produkt.1Utpris
    Starts from Net purchase price: 7.5
    With the margin of 25 %: 10
    Kept, because the field is filled in already: 9
  Produkt.2Utpris
    Not computed: the product has neither markup nor margin for the price list
  Produkt.3Utpris
    Not computed: the product has neither markup nor margin for the price list
  Produkt.4Utpris
    Not computed: the product has neither markup nor margin for the price list
  Produkt.5Utpris
    Not computed: the product has neither markup nor margin for the price list
  Not written by the import: Produkt.6Utpris, Produkt.7Utpris, Produkt.8Utpris, Produkt.9Utpris
)");
    EXPECT_EQ(PriceCalculation("Linser").text(world.texts(), Locale()), "");
}

}  // namespace
}  // namespace kolmera::test
