#include "db/sqllayer.h"

#include <gtest/gtest.h>

#include "fakedatabase.h"
#include "platform/encodings.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

const Locale kSwedish(Locale::Kind::Swedish);

/// A layer on a fake database, of a server unless `fileMode` is called.
class SqlLayerTest : public ::testing::Test {
  protected:
    SqlLayerTest() : sql(kSwedish) {
        auto owned = std::make_unique<FakeDatabase>(asked);
        fake = owned.get();
        sql.FtgDB = std::move(owned);
        sql.ÄrSQLFöretag = true;
    }
    std::string lastAsked() const { return asked.empty() ? std::string() : asked.back(); }

    Asked asked;
    FakeDatabase* fake;
    SqlLayer sql;
    PassedOverSilently silent;
};

/// Hears what was passed over.
class Heard final : public PassedOver {
  public:
    void note(std::string_view what, const PlatformError& error) override {
        lines.push_back(std::string(what) + " " + std::to_string(error.number()));
    }
    std::vector<std::string> lines;
};

TEST(SqlText, EnclosesWithoutAltering) {
    const struct {
        const char* fault;
        std::string value, expected;
    } cases[] = {
        {"empty text lost", "", "''"},
        {"plain text in the wrong quotes", "Åström", "'Åström'"},
        {"apostrophe ends the literal", "O'Brien", "\"O'Brien\""},
        {"double quote doubled", "3\" rör", "'3\" rör'"},
        {"both kinds: no quote left that carries them", "O'Brien 3\"", "'O''Brien 3\"'"},
    };
    for (const auto& c : cases) EXPECT_EQ(SqlLayer::SQLText(c.value), c.expected) << c.fault;
}

TEST_F(SqlLayerTest, LiteralsGoByFieldType) {
    const struct {
        const char* fault;
        Value value;
        FieldType type;
        std::string expected;
    } cases[] = {
        {"decimal comma in a double", 1.5, FieldType::Double, "1.5"},
        {"a single shows digits it does not hold", static_cast<double>(0.1F), FieldType::Single, "0.1"},
        {"text of a number read by the other decimal sign", std::string("1,5"), FieldType::Double, "1.5"},
        {"number of a text column not quoted", std::int64_t{4711}, FieldType::Text, "'4711'"},
        {"currency treated as a number", 12.5, FieldType::Currency, "'12,5'"},
        {"whole number quoted", std::int64_t{7}, FieldType::Integer, "7"},
        {"Boolean not spelt out", true, FieldType::Boolean, "True"},
        {"date without its signs", Date::fromCivil(2026, 11, 22).value(), FieldType::Date, "#2026-11-22#"},
        {"Null of a text column not empty", Null(), FieldType::Text, "''"},
    };
    for (const auto& c : cases) EXPECT_EQ(sql.SQLLiteral(c.value, c.type), c.expected) << c.fault;

    const struct {
        const char* fault;
        Value value;
        FieldType type;
    } refused[] = {
        {"text becomes part of the statement", std::string("1 OR 1=1"), FieldType::Integer},
        {"text becomes part of the statement, double", std::string("1; DROP"), FieldType::Double},
        {"no date between the signs", std::string("igår"), FieldType::Date},
        {"Null of a number leaves a hole", Null(), FieldType::Long},
    };
    for (const auto& c : refused) EXPECT_THROW(sql.SQLLiteral(c.value, c.type), PlatformError) << c.fault;
}

TEST(SqlDelaSelect, FindsTableAndOrder) {
    using Parts = std::optional<std::pair<std::string, std::string>>;
    const struct {
        const char* fault;
        std::string statement;
        Parts expected;
    } cases[] = {
        {"table name taken for a statement", "Produkt", std::nullopt},
        {"statement without WHERE and ORDER BY split", "SELECT * FROM Produkt", std::nullopt},
        {"text without FROM split", "DELETE WHERE x ORDER BY y", std::nullopt},
        {"order lost", "SELECT * FROM Produkt ORDER BY Nummer, ID", Parts({"Produkt", "Nummer, ID"})},
        {"table reaches into WHERE", "SELECT * FROM Produkt WHERE ID = 1 ORDER BY ID", Parts({"Produkt", "ID"})},
        {"order invented", "SELECT * FROM Levprislista WHERE ID = 1", Parts({"Levprislista", ""})},
        {"words of a value split it",
         "SELECT * FROM Produkt WHERE Nummer = 'B FROM ' AND ID = 'A ORDER BY ID' ORDER BY ID",
         Parts({"Produkt", "ID"})},
        {"value with both quotes ends early",
         "SELECT * FROM Produkt WHERE Nummer = '2\" O''Neil ORDER BY \"x' ORDER BY Nummer",
         Parts({"Produkt", "Nummer"})},
        {"lower case not known", "select * from Leverantör where x order by Söknamn", Parts({"Leverantör", "Söknamn"})},
    };
    for (const auto& c : cases) EXPECT_EQ(SqlLayer::SQLDelaSelect(c.statement), c.expected) << c.fault;
}

TEST_F(SqlLayerTest, CriteriaHaveATermForEachKey) {
    const std::vector<Value> two = {std::string("A1"), std::string("L'1")};
    const std::vector<Value> heading = {std::string("A1"), std::int64_t{3}};
    const struct {
        const char* fault;
        std::string table, comparison, order;
        const std::vector<Value>& keys;
        std::string expected;
    } cases[] = {
        {"terms not joined", "Levprislista", "=", "Produktnr, Leverantör", two,
         "Produktnr = 'A1' AND Leverantör = \"L'1\""},
        {"whole-number column quoted", "Prodaltprodnr", ">=", "Produktnr, Nummer", heading,
         "Produktnr >= 'A1' AND Nummer >= 3"},
        {"column without a key compared", "Levprislista", "=", "Produktnr, Leverantör, Levartikelnr", two,
         "Produktnr = 'A1' AND Leverantör = \"L'1\""},
        {"a statement's own table and order not used", "SELECT * FROM Levprislista WHERE x ORDER BY Levartikelnr", "=",
         "Nummer", two, "Levartikelnr = 'A1'"},
        {"no columns", "Produkt", "=", "", two, ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(sql.SQLVillkor(c.table, c.comparison, c.order, c.keys), c.expected) << c.fault;
    }
    EXPECT_THROW(sql.SQLVillkor("Produkt", "=", "Färgen", two), PlatformError);
    const std::vector<Value> six(6, std::int64_t{1});
    EXPECT_EQ(sql.SQLVillkor("Produkt", "=", "Inpris, Frakt, Tull, Vikt, Volym, Kolli", six),
              "Inpris = 1 AND Frakt = 1 AND Tull = 1 AND Vikt = 1 AND Volym = 1")
        << "a sixth column compared";
}

TEST_F(SqlLayerTest, IndexColumns) {
    fake->schema().front().indexes.push_back({.name = "Fallande", .fields = "+Grupp;-Inpris", .unique = false});
    const struct {
        const char* fault;
        std::string table, index, expected;
    } cases[] = {
        {"columns not joined", "Levprislista", "Produktnr", "Produktnr, Leverantör"},
        {"letter case of the index counts", "levprislista", "LEVARTIKELNR", "Levartikelnr, Leverantör"},
        {"primary key looked up", "finns inte", "primarykey", "ID"},
        {"mark of a descending column lost", "Produkt", "Fallande", "Grupp, -Inpris"},
        {"unknown index raises", "Produkt", "Färg", ""},
        {"unknown table raises", "Prislista", "Nummer", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(sql.SQLIndexKolumner(c.table, c.index), c.expected) << c.fault;
}

TEST_F(SqlLayerTest, IndexColumnsAreReadAgainWhenTheServerIsOutOfResources) {
    fake->tableErrors = {7, 7, 7, 7, 7};
    EXPECT_EQ(sql.SQLIndexKolumner("Produkt", "Nummer"), "Nummer") << "gave up too early";
    EXPECT_EQ(asked.size(), 6U);
    fake->tableErrors = {7, 7, 7, 7, 7, 7};
    EXPECT_EQ(sql.SQLIndexKolumner("Produkt", "Nummer"), "") << "tries without end";
    asked.clear();
    fake->tableErrors = {7, errors::kInternal};
    EXPECT_EQ(sql.SQLIndexKolumner("Produkt", "Nummer"), "") << "another error does not end the look-up";
    EXPECT_EQ(asked.size(), 2U);
}

TEST_F(SqlLayerTest, OpeningAdjustsTypeAndOptions) {
    sql.SQLÖppnaRs("Produkt", RecordsetType::Table, 0);
    EXPECT_EQ(lastAsked(), "open Produkt 2 512");
    sql.SQLÖppnaRs("Produkt", RecordsetType::Snapshot, options::kReadOnly);
    EXPECT_EQ(lastAsked(), "open Produkt 4 516");
    sql.SQLÖppnaTabell("Levprislista", "Produktnr", options::kReadOnly, true);
    EXPECT_EQ(lastAsked(), "open SELECT * FROM Levprislista ORDER BY Produktnr, Leverantör 2 516");
    EXPECT_EQ(sql.senasteSats(), "SELECT * FROM Levprislista ORDER BY Produktnr, Leverantör");
    EXPECT_EQ(sql.SQLÖppnaTabell("Levprislista", "Produktnr", 0, false)->sort(), "Produktnr, Leverantör");

    sql.ÄrSQLFöretag = false;
    sql.SQLÖppnaRs("Produkt", RecordsetType::Table, options::kReadOnly);
    EXPECT_EQ(lastAsked(), "open Produkt 1 4");
    sql.FtgDB.reset();
    EXPECT_THROW(sql.SQLÖppnaRs("Produkt", RecordsetType::Table), PlatformError) << "no company is open";
}

TEST_F(SqlLayerTest, ServerSearchesBySelection) {
    const std::vector<Value> key = {std::string("A1")};
    auto products = sql.SQLÖppnaTabell("Produkt", "Nummer", 0, false);
    sql.SQLSök(*products, "=", key, silent);
    EXPECT_EQ(lastAsked(), "find Nummer = 'A1'");
    Heard heard;
    products->setSort("Färgen");
    sql.SQLSök(*products, "=", key, heard);
    EXPECT_EQ(heard.lines, std::vector<std::string>{"Produkt 3265"}) << "an error reaches the caller, or nobody";

    products->setSort("Nummer");
    EXPECT_FALSE(sql.SQLSökIngenTräff(products, "=", key));
    EXPECT_EQ(lastAsked(), "open SELECT * FROM Produkt WHERE Nummer = 'A1' ORDER BY Nummer 2 512");
    fake->records = 0;
    EXPECT_TRUE(sql.SQLSökIngenTräff(products, "=", std::vector<Value>{std::string("B2")}));
    EXPECT_EQ(sql.senasteSats(), "SELECT * FROM Produkt WHERE Nummer = 'B2' ORDER BY Nummer")
        << "a second search does not take table and order from the statement";
}

TEST_F(SqlLayerTest, StatementsAreRewrittenForServersOnly) {
    const struct {
        const char* fault;
        std::string statement, expected;
        std::vector<Value> parameters;
    } cases[] = {
        {"Boolean words stay",
         "UPDATE Produkt SET Inaktiv = FALSE, Webshop = TRUE",
         "UPDATE Produkt SET Inaktiv = 0, Webshop = 1",
         {}},
        {"lower-case words rewritten", "SET True = true", "SET True = true", {}},
        {"words inside a literal stay", "SET a = 'FALSE'", "SET a = '0'", {}},
        {"date signs stay", "WHERE Datum < #2026-11-22#", "WHERE Datum < '2026-11-22'", {}},
        {"# of a value ends the value",
         "SET a = 'nr #1', b = #2026-11-22#",
         "SET a = ?, b = '2026-11-22'",
         {std::string("nr #1")}},
        {"both quotes left to the server", "SET a = 'O''Brien 3\"'", "SET a = ?", {std::string("O'Brien 3\"")}},
        {"backslash opens the value again", "SET a = '3\\', b = 'x'", "SET a = ?, b = 'x'", {std::string("3\\")}},
        {"NUL ends the statement", "SET a = '" + std::string("3\0'", 3), "SET a = ?", {std::string("3\0", 2)}},
        {"quoted text cut at the other quote", "SET a = \"#'TRUE\"", "SET a = ?", {std::string("#'TRUE")}},
        {"open quote swallows the rest", "SET a = #1#, b = 'x", "SET a = '1', b = 'x", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        sql.ÄrSQLFöretag = true;
        EXPECT_TRUE(sql.SQLKör(c.statement, silent));
        EXPECT_EQ(lastAsked(), "execute " + c.expected + " 64");
        EXPECT_EQ(fake->parameters, c.parameters);
        sql.ÄrSQLFöretag = false;
        EXPECT_TRUE(sql.SQLKör(c.statement, silent));
        EXPECT_EQ(lastAsked(), "execute " + c.statement + " 0");
    }
}

TEST_F(SqlLayerTest, GivenParametersKeepTheirPlaces) {
    const std::vector<Value> given = {std::string("TRUE"), std::int64_t{2}};
    EXPECT_TRUE(sql.SQLKör("SET a = ?, b = '#', c = '?', d = ?", given, silent));
    EXPECT_EQ(lastAsked(), "execute SET a = ?, b = ?, c = '?', d = ? 64");
    EXPECT_EQ(fake->parameters, (std::vector<Value>{std::string("TRUE"), std::string("#"), std::int64_t{2}}));

    Heard heard;
    fake->executeError = errors::kLocked;
    EXPECT_FALSE(sql.SQLKör("DELETE FROM Produkt", heard));
    EXPECT_FALSE(sql.SQLKör("UPDATE Prodaltprodnr SET a = 1", heard));
    EXPECT_EQ(heard.lines, (std::vector<std::string>{"Produkt 3260", "Prodaltprodnr 3260"}));
}

std::string registerRecord(const std::string& name, const std::string& description, const std::string& connect) {
    std::string record(400, ' ');
    const auto put = [&](std::size_t at, const std::string& text) {
        const std::string bytes = fromUtf8(text, CodePage::Windows1252);
        record.replace(at, bytes.size(), bytes);
    };
    put(0, name);
    put(50, description);
    put(100, connect);
    return record;
}

TEST_F(SqlLayerTest, ReadsTheServerRegister) {
    const TemporaryFolder folder;
    EXPECT_TRUE(SqlLayer::SQLServerLista(folder.path()).empty());
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "DVSQLSvr.ini")) << "listing makes the file";
    EXPECT_FALSE(sql.SQLServerSlåUpp(folder.path(), "SQL;A"));
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "DVSQLSvr.ini")) << "looking up does not make the file";
    EXPECT_TRUE(SqlLayer::SQLServerLista(folder / std::string(300, 'x')).empty()) << "an unreachable folder raises";

    const std::string longName(50, 'x');
    folder.write("DVSQLSvr.ini", registerRecord("SQL;Åhus", "Åhus Rör AB", "ODBC;DSN=ahus") +
                                     registerRecord(longName, "", "ODBC;DSN=long") +
                                     registerRecord("SQL;Half", "", "").substr(0, 390));
    EXPECT_EQ(SqlLayer::SQLServerLista(folder.path()),
              (std::vector<std::string>{"SQL;Åhus\tÅhus Rör AB", longName + "\t"}))
        << "a partial record at the end counts";
    EXPECT_TRUE(sql.SQLServerSlåUpp(folder.path(), "sql;åHUS")) << "letter case counts";
    EXPECT_EQ(sql.anslutning(), "ODBC;DSN=ahus");
    EXPECT_TRUE(sql.SQLServerSlåUpp(folder.path(), longName + "yz")) << "more than 50 characters compared";
    EXPECT_FALSE(sql.SQLServerSlåUpp(folder.path(), "SQL;Malmö"));
    EXPECT_EQ(sql.anslutning(), "ODBC;DSN=long") << "a name that is not found loses the connect string";

    EXPECT_TRUE(SqlLayer::ÄrSQLDatabas("SQL;A"));
    EXPECT_FALSE(SqlLayer::ÄrSQLDatabas("sql;A"));
    EXPECT_FALSE(SqlLayer::ÄrSQLDatabas("SQL"));
}

TEST_F(SqlLayerTest, OpensTheServerWithAFewTries) {
    int tries = 0;
    int turns = 0;
    sql.openServerDatabase = [&](const std::string&, const ServerOptions&) -> std::unique_ptr<Database> {
        if (++tries < 2) throw PlatformError(errors::kInternal, "not yet");
        return std::make_unique<FakeDatabase>(asked);
    };
    EXPECT_TRUE(sql.SQLÖppnaServer([&] { ++turns; }));
    EXPECT_EQ(tries, 2);
    EXPECT_GT(turns, 10) << "the window stands still meanwhile";
    EXPECT_EQ(lastAsked(), "open Syinställningar 2 516");
}

}  // namespace
}  // namespace kolmera::test
