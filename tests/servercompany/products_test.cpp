#include <gtest/gtest.h>

#include "cli/climachine.h"
#include "products/productfinder.h"
#include "support/testserver.h"

namespace kolmera::test {
namespace {

std::string found(SqlLayer& sql, const char* typed) {
    std::string numbers;
    ProductFinder finder(sql);
    for (const FoundProduct& each : finder.find(typed, 30)) numbers += each.number + " ";
    for (const std::string& number : finder.named(typed)) numbers += "=" + number;
    return numbers;
}

TEST(Products, AreFoundOnAServerAsInAFile) {
    DemoMachine machine;
    const std::string data = machine.data();
    for (const char* number : {"ÅÄÖ-1", "åäö-2", "O'H\"1", "100%_"})
        ASSERT_EQ(machine.run({"register", "products", "set", number, "--data", data}), 0) << machine.err();
    TestServer& testServer = TestServer::ofProcess();
    testServer.reset();
    ASSERT_EQ(machine.run({"add-server", "TEST", "--connect", testServer.connectString(), "--data", data}), 0);
    ASSERT_EQ(machine.run({"copy-company", "FTG1.mdb", "SQL;TEST", "--data", data}), 0) << machine.err();
    SqlLayer file{Locale(Locale::Kind::Swedish)}, server{Locale(Locale::Kind::Swedish)};
    file.FtgDB = machine.open();
    server.FtgDB = testServer.open();
    server.ÄrSQLFöretag = true;
    for (const char* typed :
         {"0400203", "04", "åä", "Ö", "o'h\"", "100%", "ekk", "2000001161692", "färg 5", "F3", "z"}) {
        SCOPED_TRACE(typed);
        EXPECT_EQ(found(server, typed), found(file, typed));
    }
    const auto shown = [&](const char* company) {
        EXPECT_EQ(machine.run({"product", "0400203", "--data", data, "--company", company}), 0) << machine.err();
        return machine.out();
    };
    EXPECT_EQ(shown("SQL;TEST"), shown("FTG1.mdb"));
}

}  // namespace
}  // namespace kolmera::test
