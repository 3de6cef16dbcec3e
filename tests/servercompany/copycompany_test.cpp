#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/climachine.h"
#include "platform/error.h"
#include "startup/companycopy.h"
#include "support/companyrows.h"
#include "support/testserver.h"

namespace kolmera::test {
namespace {

using ::testing::HasSubstr;

/// A data folder with the demo company in FTG1.mdb, its first job run, and an empty company SQL;TEST on the server.
class CopyCompany : public testing::Test {
  protected:
    void SetUp() override {
        TestServer::ofProcess().reset();
        ASSERT_EQ(machine.run({"demo", machine.data()}), 0) << machine.err();
        machine.run({"run", "(FINFO)", "--data", machine.data()});
        ASSERT_EQ(machine.run({"add-server", "TEST", "--connect", TestServer::ofProcess().connectString(), "--data",
                               machine.data()}),
                  0)
            << machine.err();
    }
    int copy(const char* from, const char* to) {
        return machine.run({"copy-company", from, to, "--data", machine.data()});
    }
    [[nodiscard]] std::string onFile() const { return companyRowsWithIds(*machine.open()); }
    [[nodiscard]] static std::string onServer() { return companyRowsWithIds(*TestServer::ofProcess().open()); }

    CliMachine machine;
};

TEST_F(CopyCompany, ThereAndBackEveryRowIsTheSame) {
    const std::vector<std::vector<Value>> below = {{std::int64_t{-5}, std::string("BELOW")},
                                                   {std::int64_t{0}, std::string("ZERO")}};
    machine.open()->insertRows("Prodgrupp", std::vector<int>{0, 1}, below);
    ASSERT_EQ(copy("FTG1.mdb", "SQL;TEST"), 0) << machine.err();
    EXPECT_THAT(machine.out(), HasSubstr("Leverantör: 12\n"));
    EXPECT_EQ(firstDifference(onFile(), onServer()), "");
    ASSERT_EQ(copy("sql;test", "FTG2.mdb"), 0) << machine.err();
    const auto back = openFileDatabase(std::filesystem::path(machine.data()) / "FTG2.mdb", OpenOptions());
    EXPECT_EQ(firstDifference(onFile(), companyRowsWithIds(*back)), "");
    // What is added afterwards gets an ID of its own, also where the server counts them.
    for (Database* database : {TestServer::ofProcess().open().release(), machine.open().release()}) {
        const std::unique_ptr<Database> closing(database);
        const auto groups = database->open("Prodgrupp", RecordsetType::Dynaset);
        groups->addNew();
        groups->set("Nummer", std::string("NY"));
        groups->update();
        groups->moveToModified();
        EXPECT_EQ(groups->value("Nummer"), Value(std::string("NY")));
    }
}

TEST_F(CopyCompany, TellsWhichRowAServerRefuses) {
    machine.open()->execute("UPDATE Produkt SET Benämning = ? WHERE ID = 7",
                            std::vector<Value>{std::string("a\0b", 3)});
    EXPECT_EQ(copy("FTG1.mdb", "SQL;TEST"), 1);
    EXPECT_THAT(machine.err(), HasSubstr(": Produkt, ID 7."));
    machine.open()->execute("UPDATE Produkt SET Benämning = '', Nummer = 'MM2' WHERE ID = 7");
    machine.open()->execute("UPDATE Produkt SET Nummer = 'MM²' WHERE ID = 9");
    EXPECT_EQ(copy("FTG1.mdb", "SQL;TEST"), 1);
    EXPECT_THAT(machine.err(), HasSubstr(": Produkt, ID 9 / ID 7."));
    machine.open()->execute("UPDATE Produkt SET Nummer = 'MM3' WHERE ID = 9");
    EXPECT_EQ(copy("FTG1.mdb", "SQL;TEST"), 0) << machine.err();
}

TEST_F(CopyCompany, AnInterruptedCopyIsFinishedByTheNext) {
    const auto source = machine.open();
    const auto target = TestServer::ofProcess().open();
    for (const int answers : {1, 2, 6, 9}) {  // the later ones end the comparison with what is there
        int asked = 0;
        const CopyResult result = copyCompany(*source, *target, [&] { return ++asked <= answers; });
        ASSERT_EQ(result.outcome, CopyResult::Outcome::Cancelled) << answers;
    }
    EXPECT_NE(firstDifference(onFile(), onServer()), "") << "nothing was interrupted";
    EXPECT_EQ(copy("FTG1.mdb", "SQL;TEST"), 0) << machine.err();
    EXPECT_EQ(firstDifference(onFile(), onServer()), "");
    EXPECT_EQ(copy("FTG1.mdb", "SQL;TEST"), 0) << "a finished copy cannot be looked at again: " << machine.err();
}

TEST_F(CopyCompany, ALostConnectionIsMendedByTheNextCopy) {
    {
        const auto source = machine.open();
        const auto target = TestServer::ofProcess().open();
        int asked = 0;
        const auto goOn = [&] {
            if (++asked == 3) TestServer::ofProcess().endSessions();
            return true;
        };
        EXPECT_THROW(copyCompany(*source, *target, goOn), PlatformError);
    }
    EXPECT_EQ(copy("FTG1.mdb", "SQL;TEST"), 0) << machine.err();
    EXPECT_EQ(firstDifference(onFile(), onServer()), "");
}

TEST_F(CopyCompany, OtherRowsOfTheTargetAreKept) {
    const struct {
        const char *fault, *table, *column;
    } cases[] = {{"a row that the source lacks", "Prodgrupp", "Benämning"},
                 {"settings of a company in use", "Syinställningar", "Företagsnamn"},
                 {"a row of the source with another value", "Leverantör", "Namn"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        TestServer::ofProcess().reset();
        {
            const auto target = TestServer::ofProcess().open();
            if (std::string_view(c.table) == "Leverantör") target->execute("DELETE FROM Syinställningar");
            const auto rows = target->open(c.table, RecordsetType::Dynaset);
            rows->addNew();
            rows->set(c.column, std::string("Annan"));
            rows->update();
        }
        const std::string before = onServer();
        EXPECT_EQ(copy("FTG1.mdb", "SQL;TEST"), 1);
        EXPECT_THAT(machine.err(), HasSubstr(std::string(c.table) + ", ID "));
        EXPECT_EQ(onServer(), before) << "the target was changed";
    }
}

}  // namespace
}  // namespace kolmera::test
