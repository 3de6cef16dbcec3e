#include "registers/register.h"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "cli/builtintexts.h"
#include "cli/climachine.h"

namespace kolmera::test {
namespace {

using Json = nlohmann::json;
using Arguments = std::vector<std::string>;

/// A company that was just made, and its registers.
class Registers : public testing::Test {
  protected:
    Registers() {
        EXPECT_EQ(machine.run({"new", machine.data()}), 0) << machine.err();
        done({"suppliers", "set", "100", "Söknamn=ELGROSS"});
        done({"headings", "set", "2", "Rubrik=Hyllkod"});
        done({"products", "set", "4711", "Leverantör=100", "Inpris=10,5"});
    }

    int run(Arguments arguments) {
        arguments.insert(arguments.begin(), "register");
        for (const std::string& each : {std::string("--data"), machine.data()}) arguments.push_back(each);
        return machine.run(arguments);
    }
    void done(const Arguments& arguments) { EXPECT_EQ(run(arguments), 0) << machine.err(); }
    /// A row in the words of the terminal's JSON; null when there is none.
    Json row(Arguments words) {
        words.insert(words.begin() + 1, "show");
        words.emplace_back("--json");
        return run(words) == 0 ? Json::parse(machine.out()) : Json();
    }
    std::string write(const char* name, std::string_view content) {
        std::string file = machine.file(name);
        std::ofstream(file, std::ios::binary) << content;
        return file;
    }
    bool told(std::string_view part) { return machine.err().find(part) != std::string::npos; }

    CliMachine machine;
};

TEST_F(Registers, ANewCompanyCanPrice) {
    EXPECT_EQ(row({"vat", "1"})["Procent"], 25);
    EXPECT_EQ(row({"moms", "3"})["Procent"], 6);
    EXPECT_EQ(row({"rounding", "2"}), Json({{"Intervall", 2}, {"Från", 100}, {"Till", 1000}}));
    EXPECT_EQ(row({"currencies", "SEK"})["Faktor"], 1);
    EXPECT_EQ(row({"headings", "1"})["Rubrik"], "EAN");
    const Json product = row({"products", "4711"});
    EXPECT_EQ(product["Momskod"], "1") << "a new product lacks the defaults";
    EXPECT_EQ(product["Valutakod"], "SEK");
    EXPECT_EQ(product["Inpris"], 10.5);
}

TEST_F(Registers, RefuseWhatDoesNotFit) {
    done({"alternatives", "set", "4711", "1", "Alternativnr=731"});
    done({"currencies", "set", "EUR", "Levreskontra=11"});
    done({"price-lists", "set", "2", "Valuta=EUR", "KopplaMot=1"});
    const struct {
        const char* fault;
        Arguments arguments;
        const char* message;
    } cases[] = {
        {"text as a number", {"suppliers", "set", "100", "Rabatt=2x"}, "Raden 100, Rabatt: \"2x\" är inget tal."},
        {"text cut", {"suppliers", "set", "100", "Valutakod=EURO"}, "högst 3 tecken"},
        {"date guessed", {"supplier-prices", "set", "4711", "100", "Datum=igår"}, "är inget datum"},
        {"truth guessed", {"products", "set", "4711", "Inaktiv=kanske"}, "är varken ja eller nej"},
        {"heading outside the masks", {"headings", "set", "64", "Rubrik=X"}, "ligger utanför 1-63"},
        {"supplier that is not there",
         {"products", "set", "4711", "Leverantör=9"},
         "\"9\" finns inte i registret Leverantörer"},
        {"currency of a price list", {"price-lists", "set", "1", "Valuta=NOK"}, "finns inte i registret Valutor"},
        {"coupling of no kind", {"price-lists", "set", "1", "KopplaMot=Q"}, "är inget av I, V, M"},
        {"supplier in use removed", {"suppliers", "remove", "100"}, "används i Produkter (Leverantör)"},
        {"product in use removed", {"products", "remove", "4711"}, "används i Alternativnummer (Produktnr)"},
        {"heading in use removed", {"headings", "remove", "1"}, "används i Alternativnummer (Nummer)"},
        {"currency of a list removed", {"currencies", "remove", "EUR"}, "används i Prislistor (Valuta)"},
        {"setting removed", {"vat", "remove", "1"}, "varken till eller tas bort"},
        {"fourth VAT rate", {"vat", "set", "4", "Procent=1"}, "Raden 4 finns inte."},
        {"column that others count on", {"products", "set", "4711", "Postversion=1"}, "sköts av programmet"},
        {"unknown column", {"suppliers", "set", "100", "Stad=Umeå"}, "Kolumnen \"Stad\" finns inte"},
        {"half a key", {"alternatives", "show", "4711"}, "Produktnr, Nummer"},
        {"unknown row", {"suppliers", "show", "9"}, "Raden 9 finns inte."},
        {"unknown register", {"supplier", "list"}, "Menade du suppliers"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(run(c.arguments), cli::exitcode::kStopped);
        EXPECT_TRUE(told(c.message)) << machine.err();
    }
    EXPECT_EQ(row({"suppliers", "100"})["Rabatt"], 0);
    EXPECT_EQ(row({"products", "4711"})["Leverantör"], "100");
    EXPECT_EQ(run({"suppliers", "set", "100", "Rabatt"}), cli::exitcode::kUsage);
    EXPECT_EQ(run({"suppliers", "erase"}), cli::exitcode::kUsage);
}

TEST_F(Registers, SettingsKeepTheirForm) {
    done({"currencies", "set", "EUR"});
    done({"price-lists", "set", "3", "Valuta=EUR", "KopplaMot=m", "MomsMot=1", "Avrundas=nej", "Pålägg=12,5"});
    done({"price-lists", "set", "5", "KopplaMot=-"});
    done({"rounding", "set", "1", "Från=0,01"});
    const auto database = machine.open();
    const auto settings = database->open("Syinställningar2", RecordsetType::Table);
    EXPECT_EQ(textOf(settings->value("PUtprisValuta")), "3=EUR");
    EXPECT_EQ(textOf(settings->value("PUtprisKopplaMot")), "3=M;5=-");
    EXPECT_EQ(textOf(settings->value("PUtprisMomsMot")), "3=1");
    EXPECT_EQ(settings->value("PNoAvrundPLBM"), Value(std::int64_t{8}));
    EXPECT_EQ(textOf(settings->value("PPrisAvrund")).substr(0, 14), "0,01\r\n100\r\n100");
    done({"price-lists", "set", "3", "Valuta=", "Avrundas=ja"});
    EXPECT_EQ(row({"price-lists", "3"})["Valuta"], "SEK");
    EXPECT_EQ(row({"price-lists", "3"})["Avrundas"], true);
}

TEST_F(Registers, AreReadFromFilesRowByRow) {
    const std::string file = write("suppliers.csv",
                                   "Nummer;Search name;Ort;Rabatt;Stad\r\n"
                                   "100;;Umeå;2,5;\r\n"
                                   "200;ROR;;;x\r\n"
                                   "300;JARN;;x7;\r\n"
                                   ";NOBODY;;;\r\n");
    EXPECT_EQ(run({"suppliers", "import", file, "--dry-run"}), cli::exitcode::kPassedOver);
    EXPECT_EQ(row({"suppliers", "200"}), Json()) << "tried out, and written";
    EXPECT_EQ(run({"suppliers", "import", file}), cli::exitcode::kPassedOver);
    EXPECT_TRUE(told("Raden 4, Rabatt: \"x7\" är inget tal.")) << machine.err();
    EXPECT_TRUE(told("Raden 5, Nummer: saknas.")) << machine.err();
    EXPECT_NE(machine.out().find("Kolumner som inte lästes: Stad\n"), std::string::npos) << machine.out();
    EXPECT_NE(machine.out().find("Nya rader: 1\nÄndrade rader: 1\n"), std::string::npos) << machine.out();
    EXPECT_EQ(row({"suppliers", "300"}), Json()) << "half a row was written";
    const Json kept = row({"suppliers", "100"});
    EXPECT_EQ(kept["Söknamn"], "ELGROSS") << "an empty cell was written";
    EXPECT_EQ(kept["Rabatt"], 2.5);
    EXPECT_EQ(run({"suppliers", "import", file, "--columns", "Stad=Ort"}), cli::exitcode::kStopped);
    EXPECT_TRUE(told("Flera kolumner i filen är Ort")) << machine.err();
    const std::string other = write("other.csv", "Lev;Stad\r\n200;Luleå\r\n");
    EXPECT_EQ(run({"suppliers", "import", other}), cli::exitcode::kStopped);
    done({"suppliers", "import", other, "--columns", "1=Nummer", "Stad=Ort"});
    EXPECT_EQ(row({"suppliers", "200"})["Ort"], "Luleå");
}

TEST_F(Registers, ComeBackFromTheirOwnFiles) {
    done({"alternatives", "set", "4711", "2", "Alternativnr=00123"});
    done({"suppliers", "set", "100", "Namn=\"El; gross\" AB", "Rabatt=2,5"});
    for (const char* name : {"own.csv", "own.xlsx"}) {
        SCOPED_TRACE(name);
        const std::string file = machine.file(name);
        for (const char* of : {"suppliers", "alternatives", "products", "price-lists", "vat", "defaults"}) {
            SCOPED_TRACE(of);
            done({of, "export", file});
            done({of, "import", file, "--json"});
            const Json told = Json::parse(machine.out());
            EXPECT_EQ(told["same"], told["rows"]) << told;
            EXPECT_GT(told["rows"], 0);
        }
    }
}

TEST_F(Registers, WhatIsWrittenIsARunThatIsTakenBack) {
    done({"suppliers", "set", "100", "Ort=Umeå"});
    done({"suppliers", "set", "100", "Ort=Umeå"});
    ASSERT_EQ(machine.run({"history", "--data", machine.data(), "--json"}), 0);
    const Json runs = Json::parse(machine.out());
    EXPECT_EQ(runs.size(), 4U) << "nothing written is no run";
    ASSERT_EQ(machine.run({"undo", "last", "--data", machine.data()}), 0) << machine.err();
    EXPECT_EQ(row({"suppliers", "100"})["Ort"], Json()) << "the town stayed";
    done({"suppliers", "set", "300"});
    done({"suppliers", "remove", "300"});
    ASSERT_EQ(machine.run({"undo", "last", "--data", machine.data()}), 0) << machine.err();
    EXPECT_EQ(row({"suppliers", "300"})["Nummer"], "300");
}

/// The window shows a row while another program writes it.
TEST_F(Registers, AChangeOfAnotherProgramStays) {
    SqlLayer sql{Locale()};
    sql.FtgDB = machine.open();
    LanguageTexts texts;
    texts.fallBackOn(cli::builtInTexts());
    Register suppliers(*registerNamed("Leverantörer"), sql, texts);
    const std::string key[] = {"100"};
    const auto shown = suppliers.find(key);
    ASSERT_TRUE(shown);
    const RegisterValues town = {{suppliers.columnNamed("Town"), Value(std::string("Kiruna"))}};
    EXPECT_EQ(suppliers.columnNamed("Ort"), suppliers.columnNamed("ort"));
    const auto whyNot = [&](const std::vector<RegisterProblem>& problems) {
        return problems.size() == 1 ? static_cast<int>(problems[0].what) : -1;
    };
    done({"suppliers", "set", "100", "Namn=Elgrossen"});
    EXPECT_EQ(whyNot(suppliers.change(*shown, town)), static_cast<int>(RegisterProblem::What::Changed));
    EXPECT_EQ(whyNot(suppliers.remove(*shown)), static_cast<int>(RegisterProblem::What::Changed));
    EXPECT_EQ(row({"suppliers", "100"})["Ort"], Json()) << "written over what was not shown";
    EXPECT_EQ(whyNot(suppliers.add({{0, std::string("100")}})), static_cast<int>(RegisterProblem::What::Taken));
    EXPECT_TRUE(suppliers.change(*suppliers.find(key), town).empty());
    EXPECT_EQ(row({"suppliers", "100"})["Ort"], "Kiruna");
    done({"products", "set", "4711", "Leverantör="});
    const auto before = suppliers.find(key);
    done({"suppliers", "remove", "100"});
    EXPECT_EQ(whyNot(suppliers.change(*before, town)), static_cast<int>(RegisterProblem::What::NotThere));
}

}  // namespace
}  // namespace kolmera::test
