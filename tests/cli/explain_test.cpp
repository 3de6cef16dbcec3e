#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "cli/climachine.h"
#include "platform/engine/recordset.h"
#include "platform/tsv.h"

namespace kolmera::test {
namespace {

struct WrittenPrice {
    std::string table, column, value;
};

/// What a calculation says that is written: "  Table.Column" and, behind its steps, "    Skrivs: value".
std::vector<WrittenPrice> writtenPrices(const std::string& text) {
    std::vector<WrittenPrice> prices;
    std::istringstream lines(text);
    std::string column;
    for (std::string line; std::getline(lines, line);) {
        constexpr std::string_view kWritten = "    Skrivs: ";
        if (line.starts_with("  ") && line[2] != ' ') column = line.substr(2);
        if (!line.starts_with(kWritten)) continue;
        const std::size_t point = column.find('.');
        prices.push_back({column.substr(0, point), column.substr(point + 1), line.substr(kWritten.size())});
    }
    return prices;
}

/// The values of a column in the rows of a product, as the calculation writes numbers.
std::vector<std::string> stored(const CliMachine& machine, const WrittenPrice& price, const std::string& product) {
    const std::string key = price.table == "Produkt" ? "Nummer" : "Produktnr";
    const auto database = machine.open();
    const auto rows =
        database->open("SELECT [" + price.column + "] FROM " + price.table + " WHERE " + key + " = '" + product + "'",
                       RecordsetType::Snapshot);
    std::vector<std::string> values;
    for (; !rows->eof(); rows->moveNext()) {
        values.push_back(Locale(Locale::Kind::Swedish).formatNumber(std::get<double>(rows->value(0))));
    }
    return values;
}

}  // namespace

TEST(Explain, SaysWhatTheRunThenWrites) {
    const struct {
        const char* job;
        const char* product;
        std::size_t prices;
    } cases[] = {
        {"(EIO)", "4800103", 8},
        {"(RSK)", "4300204", 3},
        {"(FINFO)", "150101010", 5},
        {"Bruknäs skruv och beslag", "SK20060", 7},
        {"Lindåsby färg", "F30005", 8},
        {"Direktimport", "DI60940", 9},
        {"Fjordhamna prisjustering", "DI60940", 7},
    };
    DemoMachine machine;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.job);
        const std::string before = readWholeFile(machine.company());
        EXPECT_EQ(machine.run({"explain", c.job, c.product, "--data", machine.data()}), 0) << machine.err();
        EXPECT_EQ(readWholeFile(machine.company()), before) << "the company was changed";
        const std::vector<WrittenPrice> prices = writtenPrices(machine.out());
        EXPECT_EQ(prices.size(), c.prices) << machine.out();
        machine.runJob(c.job);
        for (const WrittenPrice& price : prices) {
            const auto values = stored(machine, price, c.product);
            EXPECT_NE(std::ranges::find(values, price.value), values.end())
                << price.table << '.' << price.column << ' ' << price.value;
        }
    }
    EXPECT_EQ(machine.run({"explain", "(EIO)", "4800104", "--data", machine.data()}), cli::exitcode::kStopped);
    EXPECT_NE(machine.err().find("4800104"), std::string::npos) << "nothing was told of a product without record";
}

// By hand from the settings of the demo company: discount letter, weighted price, price lists in other currencies.
TEST(Explain, TellsEveryStep) {
    DemoMachine machine;
    machine.run({"explain", "Bruknäs skruv och beslag", "SK20060", "--data", machine.data()});
    EXPECT_EQ(machine.out(), R"(post 6, SK20060
  Produkt.Inpris
    Prisfilens text, 4: "7336"
    Som tal med 2 underförstådda decimaler: 73,36
    Avrundat till 2 decimaler: 73,36
    Skrivs: 73,36
  Nettoinpris
    Utgår från Produkt.Inpris: 73,36
    Valutakurs SEK 1 / 1: 73,36
    Minus 38,25 %: 45,2998
    Delat med inköpsfaktorn 1: 45,2998
  Produkt.1Utpris
    Utgår från Nettoinpris: 45,2998
    Med pålägget 45 %: 65,68471
    Avrundat enligt intervall 2 (10 - 99,99): 65,5
    Skrivs: 65,5
  Produkt.2Utpris
    Utgår från Produkt.1Utpris: 65,5
    Med pålägget 15 %: 75,325
    Avrundat till 2 decimaler: 75,32
    Skrivs: 75,32
  Produkt.3Utpris
    Utgår från Produkt.1Utpris: 65,5
    Med 25 % moms: 81,875
    Avrundat enligt intervall 2 (10 - 99,99): 82
    Skrivs: 82
  Produkt.4Utpris
    Utgår från Produkt.Vägtinpris: 67,2
    Med pålägget 60 %: 107,52
    Valutakurs EUR 10,92 / 1: 9,84615384615385
    Avrundat till 2 decimaler: 9,85
    Skrivs: 9,85
  Produkt.5Utpris
    Inte uträknat: prislistan är inte kopplad
  Produkt.6Utpris
    Inte uträknat: produkten har varken pålägg eller täckningsgrad för prislistan
  Produkt.7Utpris
    Inte uträknat: produkten har varken pålägg eller täckningsgrad för prislistan
  Produkt.8Utpris
    Inte uträknat: produkten har varken pålägg eller täckningsgrad för prislistan
  Produkt.9Utpris
    Inte uträknat: produkten har varken pålägg eller täckningsgrad för prislistan
  Levprislista.InprisFöreRabatt
    Prisfilens text, 4: "7336"
    Som tal med 2 underförstådda decimaler: 73,36
    Skrivs: 73,36
  LevrabattBrev 3020 SKRUV-FZB
    Minus 35 %: 65
    Minus 5 %: 61,75
  Levprislista.Inpris
    Utgår från Levprislista.InprisFöreRabatt: 73,36
    Minus 38,25 %: 45,2998
    Avrundat till 2 decimaler: 45,3
    Skrivs: 45,3
)");
    machine.run({"explain", "Bruknäs skruv och beslag", "SK20060", "--data", machine.data(), "--json"});
    const auto told = nlohmann::json::parse(machine.out()).at("records").at(0);
    const auto lastStep = [&](const char* column) -> nlohmann::json {
        for (const auto& price : told.at("prices")) {
            if (price.at("column") == column) return price.at("steps").back();
        }
        return {};
    };
    EXPECT_EQ(lastStep("Produkt.1Utpris"), nlohmann::json({{"step", "written"}, {"value", 65.5}}));
    EXPECT_EQ(lastStep("Produkt.5Utpris"), nlohmann::json({{"step", "not_coupled"}}));
    EXPECT_EQ(lastStep("LevrabattBrev 3020 SKRUV-FZB").at("operand"), 5);
}

// Both guides explain the prices of one product of the demo.
TEST(Explain, SaysWhatTheGuidesShow) {
    DemoMachine machine;
    for (const std::string language : {"sv", "en"}) {
        SCOPED_TRACE(language);
        std::ofstream(machine.file("settings.ini")) << "[Start]\nLang=" << (language == "en" ? "EN" : "SE") << '\n';
        std::istringstream guide(readWholeFile(KOLMERA_SOURCE_DIR "/docs/guide." + language + ".md"));
        std::string line;
        const std::string kCommand = "    kolmera-cli explain Direktimport DI60010 ";
        while (std::getline(guide, line) && !line.starts_with(kCommand)) {
        }
        std::string shown;
        std::getline(guide, line);  // blank
        while (std::getline(guide, line) && line.starts_with("    ")) shown += line.substr(4) + '\n';
        ASSERT_NE(shown, "");
        machine.run({"explain", "Direktimport", "DI60010", "--data", machine.data()});
        EXPECT_EQ(machine.out().substr(0, shown.size()), shown);
    }
}

}  // namespace kolmera::test
