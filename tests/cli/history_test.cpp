#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "cli/climachine.h"
#include "history/presentrows.h"
#include "history/runfolder.h"
#include "history/runrecord.h"
#include "platform/spreadsheet/workbook.h"
#include "support/companyrows.h"

namespace kolmera::test {
namespace {

using ::testing::HasSubstr;
using Json = nlohmann::json;

/// A company whose products a recorded run has made dearer.
class History : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(machine.run({"new", machine.data()}), 0) << machine.err();
        const auto database = machine.open();
        for (const char* number : {"A", "B"}) {
            database->execute(fmt::format("INSERT INTO Produkt (Nummer, Inpris) VALUES ('{}', 10)", number));
        }
        before = companyRowsWithIds(*database);
    }

    void record(const std::vector<std::string>& statements, const std::vector<std::string>& keys = {}) {
        const auto database = machine.open();
        RunHeader head;
        head.job = "Grossisten";
        head.companyFile = "FTG1.mdb";
        head.counts = R"({"records": 3, "new": 1, "changed": 2})";
        head.lastIds = readLastIds(*database);
        RunRecord run(runs().path(), head);
        database->listen(&run);
        for (const std::string& statement : statements) database->execute(statement);
        for (const std::string& key : keys) run.key(key);
        database->listen(nullptr);
        run.change([](RunHeader& header) { header.ended = "2026-11-23T08:15:00", header.outcome = "completed"; });
        run.close();
    }
    int command(std::vector<std::string> words) {
        words.insert(words.end(), {"--data", machine.data()});
        return machine.run(words);
    }
    [[nodiscard]] RunFolder runs() const { return RunFolder(machine.data()); }
    [[nodiscard]] std::string rows() const { return companyRowsWithIds(*machine.open()); }

    CliMachine machine;
    std::string before;
};

TEST_F(History, ARunIsListedShownTakenBackAndThatTakenBack) {
    EXPECT_EQ(command({"history"}), 0);
    record({"UPDATE Produkt SET Inpris = 12", "INSERT INTO Produkt (Nummer, Benämning) VALUES ('C', '=1+1')"});
    const std::string after = rows();
    EXPECT_EQ(command({"history"}), 0);
    EXPECT_THAT(machine.out(), HasSubstr("Grossisten"));
    EXPECT_EQ(command({"show", "last"}), 0);
    EXPECT_THAT(machine.out(), HasSubstr("+20,0 %"));
    EXPECT_EQ(command({"show", "last", "--json"}), 0);
    EXPECT_EQ(Json::parse(machine.out()).at("changes").at(0).at("after"), 12.0);

    EXPECT_EQ(command({"undo", "last", "--dry-run"}), 0);
    EXPECT_EQ(rows(), after) << "a dry run has changed something";
    EXPECT_EQ(runs().list().size(), 1U) << "a dry run has left a record";
    EXPECT_EQ(command({"undo", runs().list()[0].id.substr(0, 12)}), 0) << machine.err();
    EXPECT_EQ(rows(), before);
    ASSERT_EQ(command({"history", "--json"}), 0);
    const Json list = Json::parse(machine.out());
    ASSERT_EQ(list.size(), 2U);
    const auto undone = std::ranges::find(list, "undo", [](const Json& run) { return run.at("kind"); });
    ASSERT_NE(undone, list.end());
    EXPECT_EQ(undone->at("counts").at("removed"), 1);
    EXPECT_NE(undone->at("host"), "");
    EXPECT_EQ(command({"undo", undone->at("run"), "--json"}), 0) << machine.err();
    EXPECT_EQ(Json::parse(machine.out()).at("brought_back"), 1);
    EXPECT_EQ(rows(), after);
}

TEST_F(History, WhatStaysIsToldWithItsValues) {
    record({"UPDATE Produkt SET Inpris = 12"});
    machine.open()->execute("UPDATE Produkt SET Inpris = 15 WHERE Nummer = 'A'");
    EXPECT_EQ(command({"undo", "last"}), 3);
    EXPECT_THAT(machine.err(), HasSubstr("\"10\" > \"12\" > \"15\""));
    const auto database = machine.open();
    EXPECT_EQ(database->open("SELECT Inpris FROM Produkt WHERE Nummer = 'B'", RecordsetType::Snapshot)->value(0),
              Value(10.0));
}

TEST_F(History, RowsThatDoNotTellTheirProductAreNamedByTheCompany) {
    machine.open()->execute("UPDATE Produkt SET Benämning = 'Skruv' WHERE Nummer = 'A'");
    machine.open()->execute("INSERT INTO Levprislista (Produktnr, Leverantör, Inpris) VALUES ('A', '1', 10)");
    record({"UPDATE Levprislista SET Inpris = 12"});
    EXPECT_EQ(command({"show", "last"}), 0);
    EXPECT_THAT(machine.out(), HasSubstr("\nA        Skruv"));
    std::filesystem::remove(machine.data() + "/FTG1.mdb");
    EXPECT_EQ(command({"show", "last"}), 0) << machine.err();
}

TEST_F(History, NamesThatFitNoOrManyRuns) {
    EXPECT_EQ(command({"undo", "last"}), 1) << "there is no run";
    record({"UPDATE Produkt SET Inpris = 12"});
    record({"UPDATE Produkt SET Inpris = 13"});
    EXPECT_EQ(command({"show", "20"}), 1);
    EXPECT_THAT(machine.err(), HasSubstr("Grossisten"));
    EXPECT_EQ(command({"undo", "../../etc"}), 1);
    EXPECT_EQ(command({"undo", ""}), 1);
    std::ofstream(runs().path() / "20991231-000000-zzzz.kmr") << "damaged";
    EXPECT_EQ(command({"undo", "last", "--dry-run"}), 0);
    EXPECT_THAT(machine.err(), HasSubstr("1 körningar")) << "another run is taken for the last one unseen";
}

TEST_F(History, ArticlesThatCameAndWentAreTold) {
    record({}, {"4711", "4712", "4713"});
    EXPECT_EQ(command({"compare", "last"}), 1) << "there is no run before";
    record({}, {"4713", "4711", "4711", "4714"});  // within the same second, most likely
    EXPECT_EQ(command({"compare", "last", "--json", "--save", machine.file("new.txt")}), 0) << machine.err();
    const Json told = Json::parse(machine.out());
    EXPECT_EQ(told.at("new"), Json::array({"4714"}));
    EXPECT_EQ(told.at("gone"), Json::array({"4712"}));
    EXPECT_EQ(std::filesystem::file_size(machine.file("new.txt")),
              std::string("Ny\t4714\r\ninte längre i filen\t4712\r\n").size());
    EXPECT_EQ(command({"compare", "last", "--with", "last"}), 0);
}

TEST_F(History, NothingThatAFileSaysActsOnTheTerminal) {
    record({"INSERT INTO Produkt (Nummer, Benämning) VALUES ('C' || char(27) || '[2J', 'a' || char(10) || 'b')"},
           {"A"});
    record({}, {"B\x1B[2J"});
    for (const char* shown : {"show", "compare"}) {
        const std::string run = std::string_view(shown) == "show" ? runs().list().back().id : "last";
        EXPECT_EQ(command({shown, run}), 0) << machine.err();
        EXPECT_EQ(machine.out().find('\x1B'), std::string::npos) << machine.out();
        EXPECT_EQ(machine.out().find("\nb"), std::string::npos) << machine.out();
    }
}

TEST_F(History, SavedChangesHoldNoFormulas) {
    record({"INSERT INTO Produkt (Nummer, Benämning) VALUES ('-C', '=1+1')"});
    EXPECT_EQ(command({"show", "last", "--save", machine.file("changes.xlsx")}), 0) << machine.err();
    std::vector<std::string> texts;
    readFirstSheet(machine.file("changes.xlsx"), 8, [&](std::span<const Value> row) {
        for (const Value& value : row) texts.emplace_back(textOf(value));
    });
    EXPECT_THAT(texts, ::testing::Contains("=1+1"));  // a formula has no value in a file that nobody has opened
    EXPECT_EQ(command({"show", "last", "--save", machine.file("none/changes.xlsx")}), 1);
}

}  // namespace
}  // namespace kolmera::test
