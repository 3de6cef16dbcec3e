#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "history/recordreader.h"
#include "history/registerruns.h"
#include "history/runfolder.h"
#include "history/runrecord.h"
#include "platform/engine/database.h"
#include "support/errorof.h"
#include "support/filesizelimit.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;

const TableDef kProducts{"Produkt",
                         {{.name = "ID", .type = FieldType::Long, .counter = true},
                          {.name = "Nummer", .type = FieldType::Text, .size = 20},
                          {.name = "Utpris", .type = FieldType::Double},
                          {.name = "Datum", .type = FieldType::Date},
                          {.name = "Text", .type = FieldType::Memo}},
                         {{"Nummer", "+Nummer", true}}};

/// A company file with products, and the folder of its runs.
class Recording : public testing::Test {
  protected:
    Recording() { createFileDatabase(company, {&kProducts, 1}); }

    static void add(Database& database, const std::string& number, double price) {
        const auto products = database.open("Produkt", RecordsetType::Table);
        products->addNew();
        products->set("Nummer", number);
        products->set("Utpris", price);
        products->update();
    }

    static void price(Recordset& products, const std::string& number, double price) {
        const std::vector<Value> key = {number};
        products.seek("=", key);
        EXPECT_EQ(textOf(products.value("Nummer")), number);
        products.edit();
        products.set("Utpris", price);
        products.update();
    }

    static std::string shown(const Value& value) {
        if (const auto* number = std::get_if<double>(&value)) return std::to_string(static_cast<int>(*number));
        return isNull(value) ? "-" : std::string(textOf(value));
    }

    /// "1:changed Produkt 7 A(2:5>6)", a line a change.
    static std::string changes(const RecordReader& reader) {
        static constexpr const char* kKinds[] = {"added", "changed", "removed"};
        std::string text;
        reader.forEachChange([&](const RowChange& row) {
            text += std::to_string(row.record) + ":" + kKinds[static_cast<int>(row.kind)] + " " +
                    std::to_string(row.id) + " " + row.label + " (";
            for (const CellChange& cell : row.cells)
                text += std::to_string(cell.column) + ":" + shown(cell.before) + ">" + shown(cell.after) + " ";
            text += ")\n";
            return true;
        });
        return text;
    }

    TemporaryFolder folder;
    fs::path company = folder / "FTG1.mdb";
    RunFolder runs{folder.path()};
};

TEST_F(Recording, TellsWhatStoodInTheEnd) {
    const auto database = openFileDatabase(company, {});
    add(*database, "A", 1);
    RunHeader head;
    head.companyName = "Åke";
    head.lastIds = {{"Levprislista", 0}, {"Produkt", 12}};
    RunRecord record(runs.path(), head);
    database->listen(&record);
    {
        const auto products = database->open("Produkt", RecordsetType::Table);
        products->setIndex("Nummer");
        database->begin();
        record.at({.record = 1, .offset = 0, .length = 10});
        price(*products, "A", 2);
        products->edit();
        products->set("Utpris", 3.0);
        products->update();
        record.at({.record = 2, .offset = 10, .length = 12});  // the change of record 1 is not written yet
        add(*database, "B", 7);
        database->commit();
        database->begin();
        price(*products, "B", 8);
        database->rollback();
        (void)database->execute("DELETE FROM Produkt WHERE Nummer = 'B'");
    }
    record.remark({.kind = "not_numbers",
                   .record = 2,
                   .offset = 10,
                   .product = "B",
                   .column = "Utpris",
                   .text = "x1",
                   .reason = ""});
    database->listen(nullptr);
    record.change([](RunHeader& header) { header.ended = "2026-11-23T08:15:00"; });
    record.close();

    const RecordReader reader(runs.file(record.header().id));
    EXPECT_EQ(changes(reader),
              "1:changed 1 A (2:1>3 )\n"
              "2:added 2 B (1:->B 2:->7 )\n"
              "2:removed 2 B (1:B>- 2:7>- )\n");
    EXPECT_EQ(reader.header().companyName, "Åke");
    EXPECT_EQ(reader.header().lastIds, head.lastIds);
    EXPECT_EQ(reader.header().ended, "2026-11-23T08:15:00");
    ASSERT_TRUE(reader.place(1) && reader.place(2));
    EXPECT_EQ(reader.place(2)->length, 12);
    std::string remarks;
    reader.forEachRemark([&](const RecordRemark& remark) {
        remarks += remark.kind + " " + remark.product + " " + remark.text;
        return true;
    });
    EXPECT_EQ(remarks, "not_numbers B x1");
    const fs::perms mine = fs::perms::owner_read | fs::perms::owner_write;
    EXPECT_EQ(fs::status(record.file()).permissions(), mine);
    EXPECT_EQ(fs::status(runs.path()).permissions(), mine | fs::perms::owner_exec);
}

TEST_F(Recording, AStatementThatFailedInTheMiddleLeavesNothing) {
    const auto database = openFileDatabase(company, {});
    const std::string large(40000, 'x');
    database->begin();
    for (int i = 0; i < 6; ++i) {
        (void)database->execute("INSERT INTO Produkt (Nummer, Text) VALUES (?, ?)",
                                std::vector<Value>{std::to_string(i), large});
    }
    database->commit();
    RunRecord record(runs.path(), {});
    database->listen(&record);
    database->begin();
    add(*database, "A", 1);
    // Several blocks are written before the last row is refused.
    EXPECT_NE(errorOf([&] {
                  (void)database->execute(
                      "UPDATE Produkt SET Text = '', Nummer = CASE Nummer WHEN '5' THEN 'A' ELSE Nummer END");
              }),
              0);
    (void)database->execute("UPDATE Produkt SET Utpris = 3 WHERE Nummer = '0'");
    database->commit();
    EXPECT_EQ(changes(RecordReader(record.file())), "0:added 7 A (1:->A 2:->1 )\n0:changed 1 0 (2:0>3 )\n");
}

TEST_F(Recording, AKilledRunLeavesAllThatItsCompanyHolds) {
    const pid_t child = fork();
    if (child == 0) {
        const auto database = openFileDatabase(company, {});
        RunRecord record(runs.path(), {});
        database->listen(&record);
        for (int i = 0;; ++i) {
            database->begin();
            record.at({.record = i + 1, .offset = i, .length = 1});
            add(*database, std::to_string(i), i);
            database->commitJoined();
            if (i == 20000) database->settle();
            if (i == 40000) kill(getpid(), SIGKILL);
        }
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    const std::vector<RunHeader> headers = runs.list();
    ASSERT_EQ(headers.size(), 1U);
    EXPECT_TRUE(headers[0].ended.empty());
    EXPECT_FALSE(headers[0].underWay) << "its program is dead";
    std::int64_t recorded = 0;
    RecordReader(runs.file(headers[0].id)).forEachChange([&](const RowChange& row) { return ++recorded == row.id; });
    const auto database = openFileDatabase(company, {});
    EXPECT_EQ(database->open("Produkt", RecordsetType::Table)->recordCount(), recorded);
    EXPECT_GT(recorded, 20000);
}

TEST_F(Recording, AFullDiskEndsTheRecordAlone) {
    const auto database = openFileDatabase(company, {});
    add(*database, "A", 1);
    RunRecord record(runs.path(), {});
    database->listen(&record);
    database->begin();
    {
        const FileSizeLimit limit(600'000);
        for (char letter = 'a'; letter < 'z'; ++letter)
            (void)database->execute("UPDATE Produkt SET Text = ?", std::vector<Value>{std::string(30'000, letter)});
    }
    database->commit();
    record.close();
    ASSERT_TRUE(record.failure());
    EXPECT_FALSE(fs::exists(record.file()));
    EXPECT_EQ(openFileDatabase(company, {})
                  ->open("SELECT * FROM Produkt WHERE Text LIKE 'y%'", RecordsetType::Snapshot)
                  ->eof(),
              false);
}

TEST_F(Recording, ARunIsUnderWayWhileItsProgramWritesIt) {
    const RunRecord older(runs.path(), {});
    RunRecord newer(runs.path(), {});
    EXPECT_TRUE(runs.list().at(0).underWay && runs.list().at(1).underWay);
    newer.close();
    EXPECT_FALSE(runs.isUnderWay(newer.header())) << "taken for a run under way for a day";
    EXPECT_TRUE(runs.isUnderWay(older.header())) << "the end of one run has freed the other";
    EXPECT_EQ(runs.thin({.number = 0}), 0) << "a record has been removed under its writer";
}

TEST_F(Recording, WhoSharesTheDataFolderSharesTheRecords) {
    for (const unsigned rights : {0700U, 0750U, 0770U, 02775U}) {
        const fs::path data = folder / std::to_string(rights);
        fs::create_directory(data);
        fs::permissions(data, fs::perms(rights));
        const RunRecord record(RunFolder(data).path(), {});
        EXPECT_EQ(fs::status(RunFolder(data).path()).permissions(), fs::perms(rights));
        for (const fs::path& file : {record.file(), RunFolder(data).path() / "KOLMERA.LCK"})
            EXPECT_EQ(fs::status(file).permissions(), fs::perms(rights & 0666U)) << file;
    }
}

TEST_F(Recording, ARecordThatCannotBeWrittenEndsAndTheRunDoesNot) {
    fs::create_directory_symlink(folder.path(), runs.path());
    EXPECT_EQ(errorOf([&] { RunRecord record(runs.path(), {}); }), errors::kInvalidPath);
    fs::remove(runs.path());
    EXPECT_EQ(errorOf([&] { RunRecord record(folder / "none/Körningar", {}); }), errors::kFileNotFound);
}

TEST_F(Recording, OldRecordsGoAndOthersStay) {
    fs::create_directory(runs.path());
    const auto file = [&](const char* name, int days) {
        std::ofstream(runs.path() / name) << std::string(1000, 'x');
        fs::last_write_time(runs.path() / name, fs::file_time_type::clock::now() - std::chrono::hours(24 * days));
    };
    for (const char* name : {"20260101-000000-aaaa.kmr", "20260102-000000-aaaa.kmr", "20260103-000000-aaaa.kmr"})
        file(name, 9);
    file("20260101-000001-aaaa.kmr", 0);  // nobody knows whether it is under way
    file("mine.kmr", 9);
    EXPECT_EQ(runs.thin({.number = 2}), 1);
    EXPECT_TRUE(fs::exists(runs.path() / "20260101-000001-aaaa.kmr"));
    EXPECT_EQ(runs.thin({.number = 10, .bytes = 1}), 1);
    EXPECT_EQ(runs.thin({.number = 0, .bytes = 0}), 0) << "the newest stays";
    EXPECT_TRUE(fs::exists(runs.path() / "20260103-000000-aaaa.kmr"));
    EXPECT_TRUE(fs::exists(runs.path() / "mine.kmr"));
    for (const char* id : {"../FTG1", "mine", "20260103-000000-aaaa/", ""}) {
        EXPECT_EQ(errorOf([&] { (void)runs.file(id); }), errors::kFileNotFound) << id;
    }
    std::int64_t unreadable = 0;
    EXPECT_TRUE(runs.list(&unreadable).empty());
    EXPECT_EQ(unreadable, 2);
}

TEST_F(Recording, WritingToRegistersPushesNoRunsOut) {
    fs::create_directory(runs.path());
    const auto made = [&](const std::string& definition) {
        RunHeader head;
        head.definition = definition;
        RunRecord record(runs.path(), head);
        record.change([](RunHeader& header) { header.ended = "2026-01-01T00:00:00"; });
        record.close();
        return record.header().id;
    };
    const std::string ofRegister = std::string(kRegisterDefinition) + "\"suppliers\"}";
    const std::string run = made("");
    made(ofRegister);
    const std::string second = made(ofRegister);
    EXPECT_EQ(runs.thin({.number = 1}), 1);
    EXPECT_EQ(runs.ids(), (std::vector<std::string>{second, run}));
}

}  // namespace
}  // namespace kolmera::test
