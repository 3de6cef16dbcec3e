#include <fmt/format.h>

#include <array>
#include <random>

#include "support/servertest.h"
#include "support/statementcases.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

/// The file engine says what is right: the same steps on a file and on the server give the same text.
class BothEngines : public ServerTest {
  protected:
    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(ServerTest::SetUp());
        const std::vector<TableDef> schema = companySchema();
        createFileDatabase(folder / "FTG1.mdb", schema);
        file = openFileDatabase(folder / "FTG1.mdb", {.locale = Locale(), .password = {}, .wait = {}});
        for (Database* engine : {file.get(), database.get()}) addProducts(*engine);
    }

    TemporaryFolder folder;
    std::unique_ptr<Database> file;
};

TEST_F(BothEngines, ValuesOfEveryTypeComeBackAsTheyWere) {
    const struct {
        const char *fault, *column;
        Value value;
    } cases[] = {
        {"a double of 15 digits", "Inpris", 0.1 + 0.2},
        {"the smallest double", "Inpris", 5e-324},
        {"the largest double", "Inpris", 1.7976931348623157e308},
        {"a double that digits cut short round up", "Inpris", 2.2250738585072011e-308},
        {"minus", "Inpris", -1234.5678901234567},
        {"a Single is a double of its digits", "1Pålägg", 0.1},
        {"the largest Single", "1Pålägg", 3.4028234663852886e38},
        {"Currency of four decimals", "Webbpris", -19.9999},
        {"the largest Currency", "Webbpris", 922337203685477.0},
        {"a Currency with more decimals", "Webbpris", 1.00005},
        {"the largest Byte", "Batterityp", std::int64_t{255}},
        {"the largest Long", "Sortering", std::int64_t{2147483647}},
        {"a Boolean into a number", "Leveranstid", true},
        {"a smallest Integer", "Leveranstid", std::int64_t{-32768}},
        {"a text becomes a number", "Leveranstid", std::string("12,5")},
        {"true", "Webshop", true},
        {"a Boolean of a number", "Webshop", 7.0},
        {"a date before 1900", "Fridatum", Date{-600000}},
        {"the last date", "Fridatum", Date{2958465}},
        {"quotes of both kinds", "Benämning", std::string("a'b\"c''\"\"")},
        {"what statements are cut at", "Benämning", std::string("#1# ; -- /* ? $1 {d} \\ \\' %_ [x]")},
        {"letters beyond 16 bits", "Benämning", std::string("åäö€\U0001F600\U0010FFFF\u200B")},
        {"blanks at the ends", "Benämning", std::string("  a  ")},
        {"an empty text is not Null", "Benämning", std::string()},
        {"line ends in a memo", "Text", std::string("a\r\nb\nc\r\td")},
        {"a memo longer than a buffer", "Text", std::string(100'001, 'x') + "å\U0001F600"},
        {"a memo whose pieces end in a pair", "Text",
         [] {
             std::string text;
             for (int i = 0; i < 5000; ++i) text += "\U0001F600";
             return text;
         }()},
        {"60 letters of two bytes", "Benämning",
         [] {
             std::string text;
             for (int i = 0; i < 60; ++i) text += "å";
             return text;
         }()},
        {"more bytes than a column's buffer has", "Bild",
         [] {
             std::string text;
             for (int i = 0; i < 200; ++i) text += "å";
             return text;
         }()},
        {"Null", "Inpris", Null{}},
        {"a number behind Null", "Inpris", 2.5},
        // Refused: the same number, and the old value stays.
        {"61 letters", "Benämning", std::string(61, 'x')},
        {"a Byte of 256", "Batterityp", std::int64_t{256}},
        {"a negative Byte", "Batterityp", std::int64_t{-1}},
        {"an Integer of 17 bits", "Leveranstid", std::int64_t{32768}},
        {"a text that is no number", "Inpris", std::string("12abc")},
        {"an empty date", "Fridatum", std::string()},
        {"the key", "ID", std::int64_t{77}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const auto written = [&](Database& in) {
            const auto records = seek(in, "A1");
            records->edit();
            const int error = errorOf([&] {
                records->set(c.column, c.value);
                records->update();
            });
            return std::to_string(error) + " " +
                   select(in, fmt::format("SELECT [{}] FROM Produkt WHERE Nummer = 'A1'", c.column));
        };
        EXPECT_EQ(written(*database), written(*file));
    }
}

/// Drivers and servers cut a text at NUL, or refuse the whole statement.
TEST_F(BothEngines, ATextWithNulIsRefusedWhereItWouldBeCut) {
    const std::string nul("a\0b", 3);
    const auto records = seek(*database, "A1");
    records->edit();
    records->set("Benämning", std::string("kept"));
    EXPECT_EQ(errorOf([&] { records->set("Benämning", nul); }), errors::kWrongType);
    records->update();
    EXPECT_EQ(selectElsewhere("SELECT Benämning FROM Produkt WHERE Nummer = 'A1'"), "'kept'");
    const std::vector<Value> values = {nul};
    EXPECT_EQ(errorOf([&] { (void)database->execute("UPDATE Produkt SET Benämning = ?", values); }),
              errors::kWrongType);
    EXPECT_EQ(errorOf([&] { (void)seek(*database, nul)->recordCount(); }), errors::kWrongType);
}

TEST_F(BothEngines, NewRecordsHaveTheSameDefaults) {
    const auto added = [](Database& in) {
        std::string text;
        for (const char* table : {"Produkt", "Levprislista", "LevrabattBrev", "Prodgrupp"}) {
            const auto records = dynaset(in, table);
            records->addNew();
            for (const bool saved : {false, true}) {
                if (saved) {
                    records->update();
                    records->moveToModified();
                }
                for (const FieldDef& field : records->fields()) {
                    if (!field.counter) text += field.name + "=" + show(records->value(field.name)) + " ";
                }
            }
            text += select(in, fmt::format("SELECT * FROM {} WHERE ID > 4", table)) + "\n";
        }
        return text;
    };
    EXPECT_EQ(added(*database), added(*file));
}

TEST_F(BothEngines, StatementsAreUnderstoodAsTheProgramsWriteThem) { expectStatements(*database); }

/// Position, count and what is read, step by step.
std::string walk(Recordset& records, const std::vector<std::string>& steps) {
    std::string text;
    for (const std::string& step : steps) {
        const int error = errorOf([&] {
            if (step == "first") records.moveFirst();
            if (step == "last") records.moveLast();
            if (step == "next") records.moveNext();
            if (step == "previous") records.movePrevious();
            if (step == "modified") records.moveToModified();
            if (step == "remove") records.remove();
            if (step == "edit") records.edit();
            if (step == "add") records.addNew();
            if (step == "update") records.update();
            if (step == "cancel") records.cancelUpdate();
            if (step.starts_with("=")) records.set("Nummer", step.substr(1));
            if (step.starts_with("?")) records.findFirst(step.substr(1));
        });
        text += step + ":" + std::to_string(error) + (records.bof() ? " bof" : "") + (records.eof() ? " eof" : "") +
                (records.noMatch() ? " none " : " ");
        (void)errorOf([&] { text += show(records.value("Nummer")); });
        text += "\n";
    }
    return text + std::to_string(records.recordCount());
}

TEST_F(BothEngines, DynasetsAreWalkedAndWrittenAlike) {
    for (int i = 10; i < 100; ++i) {  // more than one block of rows
        for (Database* engine : {file.get(), database.get()}) add(*engine, fmt::format("W{}", i));
    }
    const struct {
        const char *fault, *source;
        std::vector<std::string> steps;
    } cases[] = {
        {"moving beyond the ends", "Produkt", {"previous", "previous", "next", "last", "next", "next", "previous"}},
        {"the first rows taken for all",
         "Produkt",
         {"next", "next", "next", "next", "next", "next", "next", "next", "next", "next", "last", "previous"}},
        {"a set without records",
         "SELECT * FROM Produkt WHERE Nummer = 'none'",
         {"first", "last", "next", "previous", "modified", "edit", "add", "=new1", "update", "modified", "next"}},
        {"finding and going on",
         "SELECT * FROM Produkt WHERE Nummer < 'W15' ORDER BY Nummer DESC",
         {"?Nummer = 'A2'", "next", "previous", "previous", "?Nummer = 'W20'", "next", "?[ID] = 3", "first"}},
        {"finding in a table",
         "Produkt",
         {"?Nummer = 'w50' AND Leverantör IS NULL", "next", "previous", "?Nummer > 'W97'", "last", "?Nummer = ''"}},
        {"criteria that are none", "Produkt", {"?", "?Okänd = 1", "?Nummer = ", "?Fridatum = 'x'"}},
        {"adding before anything is read",
         "Produkt",
         {"add", "=new2", "update", "modified", "next", "first", "last", "add", "=new3", "cancel", "last"}},
        {"a refused record",
         "Produkt",
         {"add", "=a1", "update", "update", "modified", "last", "edit", "=A1", "update"}},
        {"removing",
         "SELECT * FROM Produkt WHERE Nummer > 'W90' AND Nummer < 'W99' ORDER BY Nummer",
         {"next", "remove", "remove", "next", "previous", "?Nummer = 'W95'", "remove", "next", "last", "remove",
          "next"}},
        {"a new record in the middle of an order",
         "SELECT * FROM Produkt ORDER BY Nummer",
         {"add", "=B5", "update", "last", "modified", "previous", "first", "next", "next", "next"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const auto walked = [&](Database& in) { return walk(*dynaset(in, c.source), c.steps); };
        EXPECT_EQ(walked(*database), walked(*file));
    }
    constexpr auto kAll = "SELECT Nummer, Leverantör FROM Produkt ORDER BY Nummer";
    EXPECT_EQ(select(*database, kAll), select(*file, kAll));
}

TEST_F(BothEngines, ARowThatIsGoneCannotBeWritten) {
    const auto written = [](Database& in, bool reads) {
        const auto records = seek(in, "A1");
        records->edit();
        records->set("Inpris", 5.0);
        (void)in.execute("DELETE FROM Produkt WHERE Nummer = 'A1'");
        if (reads) (void)errorOf([&] { (void)records->value("Vikt"); });
        const int error = errorOf([&] { records->update(); });
        add(in, "A1");
        return error;
    };
    for (const bool reads : {false, true}) {
        EXPECT_EQ(written(*file, reads), errors::kNoCurrentRecord);
        EXPECT_EQ(written(*database, reads), errors::kNoCurrentRecord) << "saved into nothing";
    }
}

TEST_F(BothEngines, ReadOnlyDynasetsAndStatementsRefuseWriting) {
    const auto errors = [](Database& in) {
        std::string text;
        for (const auto& records :
             {std::shared_ptr(in.open("Produkt", RecordsetType::Dynaset, options::kReadOnly)),
              std::shared_ptr(in.open("SELECT DISTINCT Nummer FROM Produkt", RecordsetType::Dynaset)),
              std::shared_ptr(in.open("Produkt", RecordsetType::Snapshot))}) {
            for (const auto& step : {std::function([&] { records->edit(); }), std::function([&] { records->addNew(); }),
                                     std::function([&] { records->remove(); })}) {
                text += std::to_string(errorOf(step)) + " ";
            }
        }
        return text;
    };
    EXPECT_EQ(errors(*database), errors(*file));
}

TEST_F(BothEngines, RandomStepsInTransactionsLeaveTheSameTable) {
    std::mt19937 random(20261123);
    const auto below = [&](unsigned limit) { return static_cast<unsigned>(random() % limit); };
    for (int batch = 0; batch < 30; ++batch) {
        for (Database* engine : {file.get(), database.get()}) engine->begin();
        for (int i = 0; i < 12; ++i) {
            const unsigned action = below(5);
            const std::string number = fmt::format("{}{}", std::array{"a", "A", "Å"}[below(3)], below(8));
            const std::string price = std::to_string(below(4));
            const auto step = [&](Database& in) {
                return errorOf([&] {
                    const auto records = seek(in, number);
                    if (action == 0)
                        return (void)in.execute(fmt::format("DELETE FROM Produkt WHERE Nummer = '{}'", number));
                    if (action == 1) return (void)in.execute("UPDATE Produkt SET Nummer = 'A1' WHERE ID = 2");
                    records->recordCount() == 0 || action == 2 ? records->addNew() : records->edit();
                    records->set("Nummer", number);
                    records->set("Inpris", price);
                    records->update();
                    records->moveToModified();
                    records->edit();
                    records->set("1Utpris", fmt::format("1{}", price));
                    records->update();
                });
            };
            ASSERT_EQ(step(*database), step(*file)) << "batch " << batch << ", action " << action << " on " << number;
        }
        const bool undo = below(4) == 0;
        for (Database* engine : {file.get(), database.get()}) undo ? engine->rollback() : engine->commit();
    }
    constexpr auto kAll = "SELECT Nummer, Inpris, 1Utpris FROM Produkt ORDER BY Nummer";
    EXPECT_EQ(selectElsewhere(kAll), select(*file, kAll));
    EXPECT_NE(select(*file, kAll), "");
}

}  // namespace
}  // namespace kolmera::test
