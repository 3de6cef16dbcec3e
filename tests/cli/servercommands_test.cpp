#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/climachine.h"
#include "db/serverregister.h"

namespace kolmera::test {
namespace {

using ::testing::HasSubstr;

struct DemoFolder : DemoMachine {
    int addServer(const std::string& name, const std::string& connect) {
        return run({"add-server", name, "--connect", connect, "--description", "Åhus", "--data", data()});
    }
};

TEST(AddServer, KeepsOneRecordOfAName) {
    DemoFolder machine;
    EXPECT_EQ(machine.addServer("Åhus", "DSN=a"), 0) << machine.err();
    EXPECT_EQ(machine.addServer("SQL;Malmö", "DSN=m"), 0) << machine.err();
    EXPECT_EQ(machine.addServer("sql;åHUS", "DSN=" + std::string(96, 'x')), 0) << machine.err();
    const auto servers = registeredServers(machine.data());
    ASSERT_EQ(servers.size(), 2U);
    EXPECT_EQ(servers[0].name, "sql;åHUS");
    EXPECT_EQ(servers[0].connectString, "DSN=" + std::string(96, 'x'));
    EXPECT_EQ(servers[1].name, "SQL;Malmö");
    EXPECT_EQ(servers[1].description, "Åhus");
}

TEST(AddServer, RefusesWhatItsRecordCannotHold) {
    DemoFolder machine;
    EXPECT_EQ(machine.addServer("A", "DSN=" + std::string(97, 'x')), 1) << "a cut connect string";
    EXPECT_EQ(machine.addServer("Łódź", "DSN=l"), 1) << "another name";
    EXPECT_TRUE(machine.err().find("Tecken som inte kan sparas: Namn: Łź.") != std::string::npos) << machine.err();
    EXPECT_EQ(machine.addServer("SQL;", "DSN=l"), 1) << "no name";
    EXPECT_EQ(machine.addServer("A", " "), cli::exitcode::kUsage) << "an empty connect string";
    EXPECT_TRUE(registeredServers(machine.data()).empty());
}

TEST(ServerSchemaCommand, PrintsOneServersScript) {
    CliMachine machine;
    EXPECT_EQ(machine.run({"server-schema", "--dialect", "oracle"}), cli::exitcode::kUsage);
    EXPECT_EQ(machine.run({"server-schema", "--dialect", "mariadb", "--company", "Provbolaget"}), 0);
    EXPECT_THAT(machine.out(), HasSubstr("CREATE TABLE `Levprislista`"));
    EXPECT_THAT(machine.out(), HasSubstr("VALUES ('Provbolaget');"));
}

// Servers take their part in tests/servercompany.
TEST(CopyCompanyCommand, CopiesBetweenFiles) {
    DemoFolder machine;
    const auto copy = [&](const char* from, const char* to) {
        return machine.run({"copy-company", from, to, "--data", machine.data()});
    };
    EXPECT_EQ(copy("FTG1.mdb", "ftg1.MDB"), cli::exitcode::kUsage);
    EXPECT_EQ(copy("FTG1.mdb", "SQL"), cli::exitcode::kUsage) << "what the shell leaves of SQL;NAME";
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(machine.data()) / "SQL"));
    EXPECT_EQ(copy("FTG8.mdb", "FTG9.mdb"), cli::exitcode::kStopped);
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(machine.data()) / "FTG9.mdb"))
        << "made without a source";
    EXPECT_EQ(copy("FTG1.mdb", "FTG2.mdb"), 0) << machine.err();
    EXPECT_THAT(machine.out(), HasSubstr("Leverantör: 12\n"));
    machine.cancel = true;
    EXPECT_EQ(copy("FTG1.mdb", "FTG3.mdb"), cli::exitcode::kCancelled);
    machine.cancel = false;
    EXPECT_EQ(copy("FTG1.mdb", "FTG3.mdb"), 0) << machine.err();
    machine.runJob("(EIO)");
    EXPECT_EQ(copy("FTG2.mdb", "FTG1.mdb"), cli::exitcode::kStopped);
    EXPECT_THAT(machine.err(), HasSubstr("Produkt, ID "));
}

}  // namespace
}  // namespace kolmera::test
