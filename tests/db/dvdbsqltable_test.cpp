#include "db/dvdbsqltable.h"

#include <gtest/gtest.h>

#include "fakedatabase.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

using Values = std::vector<Value>;

TEST(DVDBSQLTableOnServer, SeeksBySelecting) {
    const struct {
        const char *fault, *index, *columns;
        Values keys;
        std::string expected;
    } cases[] = {
        {"all columns",
         "Levartikelnr",
         "",
         {std::string("L1"), std::string("S1")},
         "open  SELECT * FROM Levprislista WHERE Levartikelnr = 'L1' AND Leverantör = 'S1' 2 516"},
        {"primary key looked up",
         "PrimaryKey",
         "Inpris, Datum",
         {std::int64_t{7}},
         "open  SELECT Inpris, Datum FROM Levprislista WHERE ID = 7 2 516"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        Asked asked;
        SqlLayer sql{Locale(Locale::Kind::Swedish)};
        auto owned = std::make_unique<FakeDatabase>(asked);
        FakeDatabase& fake = *owned;
        sql.FtgDB = std::move(owned);
        sql.ÄrSQLFöretag = true;
        ClsDVDBSQLTable table(sql);
        table.StrSpecKolumner = c.columns;
        table.OpenRs("Levprislista", options::kReadOnly);
        EXPECT_EQ(asked.back(), "open Levprislista 2 516");
        table.StrIndex(c.index);
        table.SQLSeek("=", c.keys);
        EXPECT_EQ(asked.back(), c.expected);
        EXPECT_FALSE(table.BoolNoMatch);
        fake.records = 0;
        table.SQLSeek("=", c.keys);
        EXPECT_TRUE(table.BoolNoMatch);
        EXPECT_TRUE(table.Rs->eof()) << "still the previous recordset";
    }
}

/// A company file with one row of prices.
class DVDBSQLTableInFile : public ::testing::Test {
  protected:
    DVDBSQLTableInFile() : sql(Locale(Locale::Kind::Swedish)) {
        createFileDatabase(folder / "FTG1.mdb", companySchema());
        sql.FtgDB = openFileDatabase(folder / "FTG1.mdb", OpenOptions());
        const auto prices = sql.FtgDB->open("Levprislista", RecordsetType::Table);
        for (const char* product : {"P1", "P2", "P3"}) {
            prices->addNew();
            prices->set("Produktnr", std::string(product));
            prices->set("Leverantör", std::string("S1"));
            prices->set("Inpris", 12.5);
            prices->update();
        }
        const auto products = sql.FtgDB->open("Produkt", RecordsetType::Table);
        products->addNew();
        products->set("Nummer", std::string("P1"));
        products->set("1Pålägg", 0.1);
        products->update();
    }

    TemporaryFolder folder;
    SqlLayer sql;
};

TEST_F(DVDBSQLTableInFile, SeeksByIndexAndReads) {
    ClsDVDBSQLTable table(sql);
    EXPECT_EQ(table.TxtFmtRs("Produktnr"), "") << "reading a table that is not open raises";
    table.OpenRs("Levprislista", options::kReadOnly);
    table.StrIndex("Produktnr");
    EXPECT_EQ(table.StrIndex(), "Produktnr");

    table.SQLSeek("=", Values{std::string("p2"), std::string("s1")});
    EXPECT_FALSE(table.BoolNoMatch);
    EXPECT_EQ(table.TxtFmtRs("produktnr"), "P2");
    EXPECT_EQ(table.TxtFmtRsInt(7), "12,5");
    EXPECT_EQ(table.TxtFmtRs("Datum"), "") << "Null is not empty";
    EXPECT_EQ(table.TxtFmtRs("Färg"), "") << "an unknown field raises";

    table.SQLSeek(">", Values{std::string("P1"), std::string("S1")});
    EXPECT_EQ(table.TxtFmtRs("Produktnr"), "P2") << "keys not compared as a whole";
    table.SQLSeek("=", Values{std::string("P4")});
    EXPECT_TRUE(table.BoolNoMatch);
    EXPECT_EQ(table.TxtFmtRs("Produktnr"), "") << "no current record raises";
    EXPECT_THROW(table.StrIndex("Färg"), PlatformError);
    EXPECT_THROW(table.OpenRs("Prislista", 0), PlatformError);

    ClsDVDBSQLTable products(sql);
    products.OpenRs("Produkt", options::kReadOnly);
    products.StrIndex("Nummer");
    products.SQLSeek("=", Values{std::string("P1")});
    EXPECT_EQ(products.TxtFmtRs("1Pålägg"), "0,1") << "a single shows digits that it does not hold";
}

}  // namespace
}  // namespace kolmera::test
