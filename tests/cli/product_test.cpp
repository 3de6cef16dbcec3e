#include <nlohmann/json.hpp>

#include "cli/climachine.h"
#include "db/sqllayer.h"
#include "products/productfinder.h"

namespace kolmera::test {
namespace {

using Json = nlohmann::json;

/// A company of four products, made by the command line.
class Products : public testing::Test {
  protected:
    Products() {
        EXPECT_EQ(machine.run({"new", machine.data()}), 0) << machine.err();
        set({"suppliers", "100", "Söknamn=ELGROSS", "Namn=Elgross AB"});
        set({"products", "4711", "Söknamn=ÖGLA", "Benämning=Öglebult rostfri M8", "Levartikelnr=E-77", "Leverantör=100",
             "Inpris=10,5", "1Utpris=21"});
        set({"products", "47110", "Benämning=Mutter M8"});
        set({"products", "5000", "Benämning=O'Hara 50%_", "Levartikelnr=E-77"});
        set({"products", "Å1", "Benämning=Bult M8 rostfri"});
        set({"alternatives", "4711", "1", "Alternativnr=7350012345678"});
        set({"supplier-prices", "47110", "100", "Levartikelnr=LEV9", "Inpris=3,25"});
    }
    void set(std::vector<std::string> words) {
        words.insert(words.begin() + 1, "set");
        words.insert(words.begin(), "register");
        words.insert(words.end(), {"--data", machine.data()});
        EXPECT_EQ(machine.run(words), 0) << machine.err();
    }
    int show(const std::string& number, std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"product", number, "--data", machine.data()});
        return machine.run(options);
    }
    Json shown(const std::string& number) {
        EXPECT_EQ(show(number, {"--json"}), 0) << machine.err();
        return Json::parse(machine.out());
    }

    CliMachine machine;
};

TEST_F(Products, AreFoundByAnyNumberAndByWords) {
    SqlLayer sql{Locale(Locale::Kind::Swedish)};
    sql.FtgDB = machine.open();
    ProductFinder finder(sql);
    const struct {
        const char *fault, *typed, *found;
    } cases[] = {{"all products for nothing", " ", ""},
                 {"the number that is meant behind others", "4711", "4711 47110 "},
                 {"a number's beginning not found", "47", "4711 47110 "},
                 {"letter case", "å", "Å1 "},
                 {"search names", "ögla", "4711 "},
                 {"supplier's numbers, of two products", "e-77", "4711 5000 "},
                 {"supplier's numbers of price lists", "lev", "47110 "},
                 {"EAN", "735001", "4711 "},
                 {"words in another order", "rostfri bult", "4711 Å1 "},
                 {"apostrophes", "o'h", "5000 "},
                 {"signs of patterns", "4_", ""},
                 {"signs of patterns in names", "0%", "5000 "}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        std::string found;
        for (const FoundProduct& each : finder.find(c.typed, 100)) found += each.number + " ";
        EXPECT_EQ(found, c.found);
    }
    EXPECT_EQ(finder.find("4", 1).size(), 1U);
    EXPECT_EQ(finder.named("E-77"), (std::vector<std::string>{"4711", "5000"}));
    EXPECT_EQ(finder.named("471"), std::vector<std::string>{});
}

TEST_F(Products, AreShownWithWhatRunsChangedOfThem) {
    set({"products", "4711", "Inpris=11,25"});
    set({"products", "5000", "Inpris=99"});
    set({"price-lists", "2", "KopplaMot=1", "Valuta=SEK"});
    const Json product = shown("7350012345678");
    EXPECT_EQ(product["number"], "4711");
    EXPECT_EQ(product["product"][3], Json({{"Kolumn", "Leverantör"}, {"Värde", "100"}, {"Anmärkning", "Elgross AB"}}))
        << product["product"];
    EXPECT_EQ(product["prices"][0]["Pris"], "21");
    EXPECT_EQ(product["prices"][0]["KopplaMot"], "inpriset");
    EXPECT_EQ(product["prices"][1]["KopplaMot"], "prislista 1");
    EXPECT_EQ(product["alternative_numbers"][0]["Rubrik"], "EAN");
    EXPECT_EQ(product["history"][0]["Före"], "10,5") << product["history"];
    EXPECT_EQ(product["history"][0]["Efter"], "11,25");
    for (const Json& change : product["history"]) EXPECT_NE(change["Efter"], "99") << "another product's change";
    EXPECT_EQ(shown("LEV9")["supplier_prices"][0]["Inpris"], "3,25");
    EXPECT_EQ(show("4711", {"--changes", "0"}), 0);
    EXPECT_EQ(machine.out().find("10,5"), std::string::npos) << machine.out();
    EXPECT_EQ(show("E-77"), cli::exitcode::kStopped) << "one of two was chosen";
    EXPECT_NE(machine.err().find("  5000"), std::string::npos) << machine.err();
    EXPECT_EQ(show("nobody"), cli::exitcode::kStopped);
}

}  // namespace
}  // namespace kolmera::test
