#include <sqlite3.h>

#include <fstream>
#include <functional>
#include <random>

#include "engine/enginetest.h"
#include "platform/engine/sqlite/collation.h"

namespace kolmera::test {
namespace {

constexpr std::size_t kPage = 4096;
constexpr int kArticles = 3000;
constexpr int kSuppliers = 900;

/// A company with two tables, whose pages are really overwritten.
class Repair : public EngineTest {
  protected:
    Repair() {
        std::filesystem::remove(file);
        const TableDef tables[] = {artikel, suppliers_};
        createFileDatabase(file, tables);
        const auto database = open();
        database->begin();
        const auto articles = openTable(*database, "");
        for (int i = 1; i <= kArticles; ++i) addArticle(*articles, i);
        const auto supplierRows = database->open("Leverantör", RecordsetType::Table);
        for (int i = 0; i < kSuppliers; ++i) {
            supplierRows->addNew();
            supplierRows->set("Nummer", std::string("L").append(std::to_string(i)));
            supplierRows->update();
        }
        database->commit();
    }

    static void addArticle(Recordset& articles, int i) {
        articles.addNew();
        articles.set("Nummer", std::string("Å").append(std::to_string(i)));
        articles.set("Namn", std::to_string(i % 7));
        articles.set("1Pris", i / 4.0);
        articles.set("Antal", std::int64_t{-i});
        articles.set("Datum", Date{40000 + i});
        // Every hundredth has a text that needs pages of its own.
        if (i % 100 == 0) articles.set("Text", std::string(9000, static_cast<char>('a' + i / 100 % 26)));
        articles.update();
    }

    [[nodiscard]] int pages() const { return static_cast<int>(std::filesystem::file_size(file) / kPage); }

    void write(std::int64_t page, std::size_t from, const std::string& bytes) const {
        std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekp(static_cast<std::streamoff>((static_cast<std::size_t>(page) - 1) * kPage + from));
        stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    void overwrite(std::int64_t page, std::size_t from = 0, std::size_t count = kPage) {
        std::string garbage;
        for (std::size_t i = 0; i < count; ++i) garbage += static_cast<char>(random_());
        write(page, from, garbage);
    }

    /// The number of a page as the file writes it.
    static std::string bigEndian(std::int64_t page) {
        std::string bytes;
        for (const int shift : {24, 16, 8, 0}) bytes += static_cast<char>(page >> shift & 0xFF);
        return bytes;
    }

    /// Runs statements with nothing of the engine between.
    void raw(const char* statements) const {
        sqlite3* connection = nullptr;
        sqlite3_open(file.c_str(), &connection);
        registerSwedishCollation(connection);
        EXPECT_EQ(sqlite3_exec(connection, statements, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(connection);
    }

    /// What a statement answers, asked of the undamaged file with nothing of the engine between.
    [[nodiscard]] std::vector<std::int64_t> ask(const std::string& statement) const {
        sqlite3* connection = nullptr;
        sqlite3_stmt* query = nullptr;
        sqlite3_open(file.c_str(), &connection);
        registerSwedishCollation(connection);
        EXPECT_EQ(sqlite3_prepare_v2(connection, statement.c_str(), -1, &query, nullptr), SQLITE_OK) << statement;
        std::vector<std::int64_t> numbers;
        while (sqlite3_step(query) == SQLITE_ROW) numbers.push_back(sqlite3_column_int64(query, 0));
        sqlite3_finalize(query);
        sqlite3_close(connection);
        return numbers;
    }

    /// Pages of a tree by kind: "leaf", "internal" or "overflow".
    [[nodiscard]] std::vector<std::int64_t> pagesOf(const char* tree, const char* kind) const {
        return ask(std::string("SELECT pageno FROM dbstat WHERE name = '") + tree + "' AND pagetype = '" + kind +
                   "' ORDER BY pageno");
    }
    [[nodiscard]] std::int64_t rootOf(const char* tree) const {
        return ask(std::string("SELECT rootpage FROM sqlite_master WHERE name = '") + tree + "'").at(0);
    }

    /// Repairs the file and checks that what is in it is whole, and unchanged except in so many rows. Returns the
    /// number of articles.
    int repair(std::int64_t changedAllowed = 0) {
        const RepairReport report = repairFileDatabase(file, options);
        EXPECT_TRUE(std::filesystem::exists(report.original));
        EXPECT_EQ(report.rows.at(0).first, "Artikel");
        EXPECT_EQ(ask("SELECT count(*) FROM pragma_integrity_check WHERE integrity_check <> 'ok'"),
                  std::vector<std::int64_t>{0});
        const auto database = open();
        EXPECT_EQ(database->table("Artikel").indexes.size(), artikel.indexes.size());
        const std::string changed =
            select(*database,
                   "SELECT count(*) FROM Artikel WHERE Nummer <> 'Å' || ID OR 1Pris <> ID / 4.0 OR Antal <> -ID OR "
                   "Namn <> ID % 7 OR Webb <> 0 OR Lev IS NOT NULL OR (ID % 100 = 0) <> (length(Text) IS 9000)");
        EXPECT_LE(std::stoi(changed), changedAllowed + report.shortened) << "rows came back changed";
        EXPECT_EQ(report.leftOut.size() + static_cast<std::size_t>(report.strange), 0U);
        EXPECT_TRUE(isSound(file, options));
        suppliersSaved = report.rows.at(1).second;
        return static_cast<int>(report.rows.at(0).second);
    }

    /// Where a row of a leaf begins in its page, counted from 0.
    [[nodiscard]] std::size_t rowOn(std::int64_t leaf, std::size_t row) const {
        const std::string page = folder.read("FTG1.mdb").substr((static_cast<std::size_t>(leaf) - 1) * kPage, kPage);
        const auto byte = [&](std::size_t at) { return static_cast<std::size_t>(static_cast<std::uint8_t>(page[at])); };
        return byte(8 + 2 * row) << 8 | byte(9 + 2 * row);
    }

    /// Damages a letter of the first such word of the file.
    void misspell(const std::string& word) {
        const std::size_t at = folder.read("FTG1.mdb").find(word);
        write(static_cast<std::int64_t>(at / kPage) + 1, at % kPage, "X");
    }

    OpenOptions options;
    std::int64_t suppliersSaved = 0;
    const TableDef suppliers_{"Leverantör",
                              {{.name = "ID", .type = FieldType::Long, .counter = true},
                               {.name = "Nummer", .type = FieldType::Text, .size = 8}},
                              {{"PrimaryKey", "+ID", true}, {"Nummer", "+Nummer", true}}};
    std::mt19937 random_{7};
};

TEST_F(Repair, EveryReadableRowSurvivesWhateverPageIsLost) {
    const std::filesystem::path whole = folder / "whole.mdb";
    std::filesystem::copy_file(file, whole);
    const std::int64_t leaf = pagesOf("Artikel", "leaf").at(7);
    const auto rowsOnLeaf = ask("SELECT ncell FROM dbstat WHERE pageno = " + std::to_string(leaf)).at(0);
    const struct {
        const char* fault;
        std::function<void()> damage;
        std::int64_t lost;  ///< articles
    } cases[] = {
        {"a leaf takes others along", [&] { overwrite(leaf); }, rowsOnLeaf},
        {"the root of a table loses all", [&] { overwrite(rootOf("Artikel")); }, 0},
        {"half a root leads astray", [&] { overwrite(rootOf("Artikel"), 6, 2000); }, 0},
        {"the cells of a root lead astray", [&] { overwrite(rootOf("Artikel"), 3000, 1096); }, 0},
        {"a root that points into another table takes its rows",
         [&] { write(rootOf("Artikel"), 8, bigEndian(pagesOf("Leverantör", "leaf").at(1))); }, 0},
        {"the root of the schema loses the tables", [&] { overwrite(1, 100, kPage - 100); }, 0},
        {"the file's header loses everything", [&] { overwrite(1); }, 0},
        {"the roots of the tables lost together",
         [&] {
             overwrite(rootOf("Artikel"));
             overwrite(rootOf("Leverantör"));
             overwrite(1);
         },
         0},
        {"index pages needed for the rows",
         [&] {
             for (const char* index : {"Artikel.Nummer", "Artikel.Namn"}) {
                 for (const std::int64_t page : pagesOf(index, "leaf")) overwrite(page);
             }
         },
         0},
        {"an overflow page takes its row along", [&] { overwrite(pagesOf("Artikel", "overflow").at(3)); }, 0},
        {"a leaf that calls itself something else", [&] { write(leaf, 0, "\x05"); }, 0},
        {"a root that calls itself a leaf", [&] { write(rootOf("Artikel"), 0, "\x0D"); }, 0},
        {"a root that calls itself a leaf and seems to hold a row",
         [&] {
             const std::int64_t root = rootOf("Artikel");
             write(root, 0, "\x0D");
             write(root, rowOn(root, 2), {2, 1, 2, 0});  // one empty value
         },
         0},
        {"a leaf that counts too few rows", [&] { write(leaf, 4, "\x02"); }, 0},
        {"a leaf that counts too many rows", [&] { write(leaf, 4, "\xFF"); }, 0},
        {"the place of a row lost", [&] { write(leaf, 10, "\x01"); }, 0},
        {"a row's ID becomes that of another",
         [&] {
             const std::string bytes = folder.read("FTG1.mdb");
             const auto id = [&](std::size_t row) { return rowOn(leaf, row) + 1; };  // behind one byte of length
             write(leaf, id(5), bytes.substr((static_cast<std::size_t>(leaf) - 1) * kPage + id(9), 2));
         },
         0},
        {"a misspelt name of a table", [&] { misspell("Leverant\xC3\xB6rLeverant"); }, 0},
        {"a table whose name and statement are misspelt",
         [&] {
             misspell("Leverant\xC3\xB6rLeverant");
             misspell("CREATE TABLE \"Leverant\xC3\xB6r");
         },
         0},
        {"a misspelt column in SQLite's schema", [&] { misspell("Belopp\" CURRENCY"); }, 0},
        {"a misspelt index", [&] { misspell("Artikel.Namn"); }, 0},
        {"a misspelt column of the copy", [&] { misspell("statement TEXT"); }, 0},
        {"schema and copy lost together",
         [&] {
             options.knownTables = [this] { return std::vector<TableDef>{artikel, suppliers_}; };
             EXPECT_EQ(std::abs(errorOf([&] {
                           for (int page = 1; page <= 8; ++page) write(page, 0, std::string(kPage, '\0'));
                           (void)open(options);
                       })),
                       errors::kDamaged);
         },
         0},
        {"every inner page lost",
         [&] {
             for (const std::int64_t page : pagesOf("Artikel", "internal")) overwrite(page);
         },
         0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        std::filesystem::copy_file(whole, file, std::filesystem::copy_options::overwrite_existing);
        c.damage();
        EXPECT_EQ(repair(), kArticles - c.lost);
        EXPECT_EQ(suppliersSaved, kSuppliers);
    }
}

TEST_F(Repair, AFileCutShortKeepsTheRowsBeforeTheCut) {
    const auto rows =
        ask("SELECT sum(ncell) FROM dbstat WHERE name = 'Artikel' AND pagetype = 'leaf' AND pageno <= 60");
    std::filesystem::resize_file(file, 60 * kPage);
    // Rows whose long text lay behind the cut are gone, too.
    EXPECT_NEAR(repair(), static_cast<double>(rows.at(0)), 10);
}

TEST_F(Repair, RandomDamageTakesNoMoreThanItsPages) {
    const std::filesystem::path whole = folder / "whole.mdb";
    std::filesystem::copy_file(file, whole);
    for (int round = 0; round < 30; ++round) {
        std::filesystem::copy_file(whole, file, std::filesystem::copy_options::overwrite_existing);
        const auto page = static_cast<std::int64_t>(1 + random_() % static_cast<unsigned>(pages()));
        const std::size_t at = random_() % kPage;
        SCOPED_TRACE("page " + std::to_string(page) + ", byte " + std::to_string(at));
        const auto onPage =
            ask("SELECT sum(ncell) FROM dbstat WHERE pagetype = 'leaf' AND pageno = " + std::to_string(page) +
                " AND name IN ('Artikel', 'Leverantör')")
                .at(0);
        if (round % 2 == 0) {
            write(page, 0, std::string(kPage, '\0'));
            EXPECT_GE(repair() + suppliersSaved, kArticles + kSuppliers - onPage);
        } else {
            const char byte = folder.read("FTG1.mdb")[(static_cast<std::size_t>(page) - 1) * kPage + at];
            write(page, at, std::string(1, static_cast<char>(byte ^ 1 << random_() % 8)));
            // A row whose letters or digits have changed is a row.
            EXPECT_GE(repair(1) + suppliersSaved, kArticles + kSuppliers - 1);
        }
    }
}

TEST_F(Repair, DeletedRowsStayDeleted) {
    // Some programs leave what they delete in the free pages.
    raw("PRAGMA secure_delete = OFF; DELETE FROM Artikel WHERE ID > 500");
    overwrite(rootOf("Artikel"));
    EXPECT_EQ(repair(), 500);
}

TEST_F(Repair, OpeningADamagedFileSaysSo) {
    const std::filesystem::path whole = folder / "whole.mdb";
    std::filesystem::copy_file(file, whole);
    const struct {
        const char* fault;
        std::function<void()> damage;
    } cases[] = {
        {"the file's header", [&] { overwrite(1); }},
        {"the application's mark", [&] { overwrite(1, 68, 4); }},
        {"the schema", [&] { overwrite(1, 100, 3000); }},
        {"a column of the schema's copy", [&] { misspell("statement TEXT"); }},
        {"the root of a table", [&] { overwrite(rootOf("Leverantör")); }},
        {"the end of the file missing", [&] { std::filesystem::resize_file(file, 20 * kPage); }},
        {"the middle of a table", [&] { overwrite(pagesOf("Artikel", "leaf").at(7)); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        std::filesystem::copy_file(whole, file, std::filesystem::copy_options::overwrite_existing);
        c.damage();
        EXPECT_EQ(std::abs(errorOf([&] { (void)open(); })), errors::kDamaged);
    }
}

// Over the network a file is not read through when it is opened.
TEST_F(Repair, DamageThatIsReadEndsTheRun) {
    overwrite(pagesOf("Artikel", "leaf").at(7));
    options.onNetwork = [](const std::filesystem::path& /*folder*/) { return true; };
    const auto database = open(options);
    EXPECT_EQ(errorOf([&] { (void)database->open("Artikel", RecordsetType::Snapshot); }), -errors::kDamaged);
}

TEST_F(Repair, NothingInAFileIsCarriedOut) {
    const std::filesystem::path victim = folder / "victim";
    const std::string attach = "ATTACH DATABASE ''" + victim.string() + "'' AS p";
    raw(("PRAGMA writable_schema = 1;"
         "INSERT INTO sqlite_master VALUES ('table', 'p', 'p', 0, '" +
         attach +
         "'),"
         "('table', 't', 't', 0, 'CREATE TABLE p.t AS SELECT * FROM Artikel');"
         "UPDATE kolmera_layout SET mark = 'Kolmera company file';"
         "INSERT INTO kolmera_layout VALUES ('Kolmera company file', 'table', 'p', '" +
         attach +
         "'),"
         "('Kolmera company file', 'table', 't', 'CREATE TABLE p.t AS SELECT * FROM Artikel')")
            .c_str());
    EXPECT_EQ(std::abs(errorOf([&] { (void)open(); })), errors::kDamaged);
    const RepairReport report = repairFileDatabase(file, OpenOptions());
    EXPECT_EQ(report.leftOut, (std::vector<std::string>{"p", "t"}));
    EXPECT_EQ(report.rows.at(0).second, kArticles);
    EXPECT_NE(errorOf([&] { open()->execute("ATTACH DATABASE '" + victim.string() + "' AS p"); }), 0);
    EXPECT_FALSE(std::filesystem::exists(victim));
}

TEST_F(Repair, ColumnsAndTablesThatWereAddedLaterStay) {
    raw("ALTER TABLE Artikel ADD COLUMN \"Ny\" TEXT(5) COLLATE SVENSKA; UPDATE Artikel SET Ny = 'x' WHERE ID = 7;"
        "CREATE TABLE Eget (ID INTEGER PRIMARY KEY, Namn TEXT(9) COLLATE SVENSKA); INSERT INTO Eget VALUES (3, 'y');"
        "CREATE TABLE Annat (Namn VARCHAR(9) UNIQUE)");
    EXPECT_TRUE(isSound(file, OpenOptions()));
    overwrite(pagesOf("Artikel", "leaf").at(7));
    EXPECT_EQ(repairFileDatabase(file, OpenOptions()).leftOut, std::vector<std::string>{"Annat"});
    EXPECT_EQ(selectElsewhere("SELECT Ny, Eget.Namn FROM Artikel, Eget WHERE Artikel.ID = 7 AND Eget.ID = 3"),
              "'x' 'y'");
}

TEST_F(Repair, RowsThatBreakAUniqueIndexAreDroppedAndCounted) {
    // A program that did not know the index added a row twice.
    raw("DROP INDEX \"Artikel.Nummer\"; INSERT INTO Artikel (Nummer) VALUES ('å7'), (NULL), (NULL);"
        "CREATE INDEX \"Artikel.Nummer\" ON Artikel (Nummer); PRAGMA writable_schema = 1;"
        "UPDATE sqlite_master SET sql = 'CREATE UNIQUE INDEX \"Artikel.Nummer\" ON \"Artikel\" (\"Nummer\")'"
        "WHERE name = 'Artikel.Nummer'");
    const RepairReport report = repairFileDatabase(file, OpenOptions());
    EXPECT_EQ(report.dropped, 1);
    EXPECT_EQ(report.rows.at(0).second, kArticles + 2);
    EXPECT_EQ(selectElsewhere("SELECT ID FROM Artikel WHERE Nummer = 'Å7'"), "7");
}

TEST_F(Repair, WhatCannotBeRepairedStaysWhereItWas) {
    const std::string before = folder.read("FTG1.mdb");
    {
        const auto session = open();
        OpenOptions impatient;
        impatient.wait = [] { return false; };
        EXPECT_EQ(std::abs(errorOf([&] { (void)repairFileDatabase(file, impatient); })), errors::kLocked);
    }
    EXPECT_EQ(folder.read("FTG1.mdb"), before);
    folder.write("text.mdb", std::string(50000, 'x'));
    EXPECT_EQ(errorOf([&] { (void)repairFileDatabase(folder / "text.mdb", OpenOptions()); }), errors::kDamaged);
    EXPECT_EQ(folder.read("text.mdb"), std::string(50000, 'x'));
    EXPECT_EQ(errorOf([&] { (void)repairFileDatabase(folder / "none.mdb", OpenOptions()); }), errors::kFileNotFound);
}

TEST_F(Repair, ThePasswordSurvives) {
    createFileDatabase(folder / "secret.mdb", {&artikel, 1}, "hemlig");
    file = folder / "secret.mdb";
    overwrite(1);
    EXPECT_FALSE(repairFileDatabase(file, OpenOptions()).passwordLost);
    EXPECT_EQ(errorOf([&] { (void)open(); }), errors::kWrongPassword);
    options.password = "hemlig";
    EXPECT_EQ(errorOf([&] { (void)open(options); }), 0);
}

TEST_F(Repair, AJournalThatWasNotMergedBelongsToTheDamagedFile) {
    // SQLite leaves a journal alone that was not needed. Beside the new file it would be another file's.
    folder.write("FTG1.mdb-journal", std::string(512, '\0'));
    overwrite(1);
    const RepairReport report = repairFileDatabase(file, OpenOptions());
    EXPECT_EQ(report.rows.at(0).second, kArticles);
    EXPECT_FALSE(std::filesystem::exists(folder / "FTG1.mdb-journal"));
    EXPECT_TRUE(std::filesystem::exists(report.original.string() + "-journal"));
}

// On a page with damage, a row whose text is no text is not trusted.
TEST_F(Repair, GarbageInATextIsNoRow) {
    const std::int64_t leaf = pagesOf("Artikel", "leaf").at(7);
    const std::string page = folder.read("FTG1.mdb").substr((static_cast<std::size_t>(leaf) - 1) * kPage, kPage);
    write(leaf, page.find("Å"), "\xFF\xFF");
    write(leaf, 8, "\xFF\xFF");  // the place of the first row
    EXPECT_EQ(repair(), kArticles - 1);
}

}  // namespace
}  // namespace kolmera::test
