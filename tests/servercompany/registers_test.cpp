#include <gtest/gtest.h>

#include <fstream>

#include "cli/climachine.h"
#include "support/companyrows.h"
#include "support/testserver.h"

namespace kolmera::test {
namespace {

/// Exit codes and messages of the same commands.
std::string writeRegisters(CliMachine& machine, const std::string& company) {
    const std::string file = machine.file("suppliers.csv");
    std::ofstream(file) << "Nummer;Ort;Valutakod\n100;Umeå;SEK\n200;Luleå;NOK\n300;Kiruna;\n";
    const std::vector<std::vector<std::string>> commands = {
        {"currencies", "set", "EUR", "Levreskontra=11,3"},
        {"suppliers", "set", "100", "Namn=O'Brien \"X\" AB", "Rabatt=2,5"},
        {"suppliers", "import", file, "--dry-run"},
        {"suppliers", "import", file},
        {"price-lists", "set", "2", "Valuta=EUR", "KopplaMot=M", "MomsMot=1", "Avrundas=nej", "Pålägg=10,5"},
        {"rounding", "set", "1", "Från=0,01"},
        {"headings", "set", "2", "Rubrik=Hyll'kod"},
        {"products", "set", "4711", "Leverantör=100", "Inpris=10,5"},
        {"products", "set", "4711", "Inaktiv=ja", "Inpris=11"},
        {"alternatives", "set", "4711", "2", "Alternativnr=A'1"},
        {"products", "remove", "4711"},
        {"suppliers", "remove", "100"},
        {"suppliers", "remove", "300"},
        {"currencies", "remove", "EUR"},
        {"products", "list"},
        {"price-lists", "list"},
    };
    std::string told;
    for (std::vector<std::string> command : commands) {
        command.insert(command.begin(), "register");
        for (const std::string& each : {std::string("--data"), machine.data(), std::string("--company"), company})
            command.push_back(each);
        const int code = machine.run(command);
        told += std::to_string(code) + "\n" + machine.out() + machine.err();
    }
    return told;
}

TEST(Registers, AreTheSameOnAServerAsInAFile) {
    CliMachine file;
    ASSERT_EQ(file.run({"new", file.data()}), 0) << file.err();
    TestServer& testServer = TestServer::ofProcess();
    testServer.reset();
    ASSERT_EQ(file.run({"add-server", "TEST", "--connect", testServer.connectString(), "--data", file.data()}), 0)
        << file.err();
    ASSERT_EQ(file.run({"copy-company", "FTG1.mdb", "SQL;TEST", "--data", file.data()}), 0) << file.err();
    EXPECT_EQ(writeRegisters(file, "SQL;TEST"), writeRegisters(file, "FTG1.mdb"));
    EXPECT_EQ(firstDifference(companyRows(*file.open()), companyRows(*testServer.open())), "");
}

}  // namespace
}  // namespace kolmera::test
