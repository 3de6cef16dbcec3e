#include "db/companyschema.h"
#include "engine/enginetest.h"
#include "support/statementcases.h"

namespace kolmera::test {
namespace {

class Queries : public EngineTest {
  protected:
    Queries() {
        for (const char* number : {"B1", "A2", "a1", "Å1"}) add(*database, number, std::string(number) + "'s");
    }

    std::unique_ptr<Database> database = open();

    std::unique_ptr<Recordset> dynaset(std::string_view source) const {
        return database->open(source, RecordsetType::Dynaset);
    }
};

TEST_F(Queries, StatementsAreUnderstoodAsTheProgramsWriteThem) {
    createFileDatabase(folder / "whole.mdb", companySchema());
    const auto company = openFileDatabase(folder / "whole.mdb", OpenOptions());
    addProducts(*company);
    expectStatements(*company);
    EXPECT_EQ(select(*company, "SELECT 1.5e1, 2E2, .5, 7, 5e-1, 1.5E+1"), "15 200 0.5 7 0.5 15");
    EXPECT_EQ(select(*company, "SELECT ID AS 1rade FROM Produkt WHERE ID = 2"), "2")
        << "taken for a number with a power";
}

TEST_F(Queries, ADynasetShowsAndWritesTheRowsOfItsStatement) {
    const auto records = dynaset("SELECT Nummer, 1Pris FROM artikel WHERE Nummer < 'b' ORDER BY Nummer DESC");
    EXPECT_EQ(records->recordCount(), 1) << "not yet visited";
    records->moveLast();
    EXPECT_EQ(records->recordCount(), 2);
    EXPECT_EQ(textOf(records->value(0)), "a1");
    records->edit();
    records->set(1, 4.5);
    records->update();
    EXPECT_EQ(selectElsewhere("SELECT [1Pris] FROM Artikel WHERE Nummer = 'A1'"), "4.5");
    EXPECT_EQ(errorOf([&] { (void)records->value(2); }), errors::kUnknownField);

    records->addNew();
    records->set("Nummer", std::string("C9"));
    records->update();
    EXPECT_EQ(textOf(records->value(0)), "a1") << "adding moved";
    records->moveToModified();
    EXPECT_EQ(textOf(records->value(0)), "C9");
    records->moveNext();
    EXPECT_TRUE(records->eof()) << "a new record is not the last one";
    EXPECT_EQ(records->recordCount(), 3);
}

TEST_F(Queries, ADynasetIsWalkedWhileItsRecordsAreRemoved) {
    const auto records = dynaset("Artikel");
    int removed = 0;
    for (; !records->eof(); records->moveNext(), ++removed) records->remove();
    EXPECT_EQ(removed, 4);
    EXPECT_EQ(records->recordCount(), 0);
    EXPECT_EQ(errorOf([&] { records->moveFirst(); }), errors::kNoCurrentRecord);
    EXPECT_EQ(select(*database, "SELECT count(*) FROM Artikel"), "0");
}

TEST_F(Queries, ADynasetSeesWhatOtherSessionsChange) {
    const auto records = dynaset("Artikel");
    EXPECT_EQ(show(records->value("1Pris")), "0");
    EXPECT_EQ(open()->execute("UPDATE Artikel SET [1Pris] = 3"), 4);
    EXPECT_EQ(show(records->value("1Pris")), "3");
    EXPECT_EQ(open()->execute("DELETE FROM Artikel"), 4);
    EXPECT_EQ(errorOf([&] { (void)records->value("1Pris"); }), errors::kNoCurrentRecord);
}

TEST_F(Queries, FindFirstTakesTheCriteriaThatTheProgramsBuild) {
    const struct {
        const char *fault, *criteria;
        const char* expected;  ///< number of the record, "" for none
    } cases[] = {
        {"an ID in brackets", "[ID] = 2", "A2"},
        {"letter case counts", "Nummer = 'A1'", "a1"},
        {"not the first in the order of the records", "Nummer > 'A1'", "B1"},
        {"an apostrophe between double quotes", "Namn = \"a1's\"", "a1"},
        {"text that would end the criteria", "Nummer = \"A1' OR 1 = 1 --\"", ""},
        {"the second term ignored", "Nummer > 'A1' AND ID > 2", "Å1"},
        {"a fraction rounded to the field", "ID = 1.5", ""},
        {"a negative number", "[1Pris] > -1", "B1"},
        {"Null found by a comparison", "Lev <> 'x'", ""},
        {"Null not found", "Lev IS NULL AND Nummer = 'a2'", "A2"},
        {"everything but Null not found", "Namn IS NOT NULL", "B1"},
        {"a date", "Datum = #2026-01-01#", ""},
        {"a Boolean", "Webb = FALSE", "B1"},
    };
    for (const RecordsetType type : {RecordsetType::Dynaset, RecordsetType::Snapshot}) {
        const auto records = database->open("SELECT * FROM Artikel ORDER BY ID", type);
        for (const auto& c : cases) {
            SCOPED_TRACE(c.fault);
            records->findFirst(c.criteria);
            EXPECT_EQ(records->noMatch() ? std::string_view() : textOf(records->value("Nummer")), c.expected);
        }
        EXPECT_EQ(errorOf([&] { records->findFirst("Okänd = 1"); }), errors::kUnknownField);
        EXPECT_EQ(errorOf([&] { records->findFirst("Nummer"); }), errors::kInternal);
        EXPECT_EQ(errorOf([&] { records->findFirst("Nummer = 'A1' OR ID = 1"); }), errors::kInternal);
        EXPECT_TRUE(records->noMatch());
    }
}

TEST_F(Queries, ASnapshotStaysAsItWasTaken) {
    const auto records = database->open("SELECT max(ID) AS Sista, count(*) FROM Artikel", RecordsetType::Snapshot);
    EXPECT_EQ(database->execute("DELETE FROM Artikel"), 4);
    EXPECT_EQ(show(records->value("sista")), "4");
    EXPECT_EQ(errorOf([&] { records->edit(); }), errors::kInternal);
}

TEST_F(Queries, WhatIsNoRowOfOneTableCanOnlyBeRead) {
    for (const char* statement : {"SELECT DISTINCT Webb FROM Artikel", "SELECT count(*) FROM Artikel",
                                  "SELECT a.ID FROM Artikel a, Artikel b", "SELECT Webb FROM Artikel GROUP BY Webb"}) {
        SCOPED_TRACE(statement);
        const auto records = dynaset(statement);
        EXPECT_FALSE(records->eof());
        EXPECT_EQ(errorOf([&] { records->edit(); }), errors::kInternal);
    }
}

}  // namespace
}  // namespace kolmera::test
