#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "import/dispatcher.h"
#include "lang/keys/look.h"
#include "lang/keys/preparation.h"
#include "lang/keys/prismain.h"
#include "lang/keys/run.h"
#include "platform/batchprocess.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

const MaskSpec kSimple{.relations = {{1, "Nummer", 'S'}, {2, "Vikt"}}};

std::string numbered(int row) { return std::string("N") + std::to_string(row); }

std::string priceLines(int count) {
    std::string text;
    for (int line = 1; line <= count; ++line) text += numbered(line) + "\t5\r\n";
    return text;
}

std::size_t lines(const std::string& rows) { return static_cast<std::size_t>(std::ranges::count(rows, '\n')); }

TEST(Confirmation, SaysWhatIsGoingToBeRead) {
    const struct {
        const char *fault, *command, *priceFile;
        bool diskette;
    } cases[] = {
        {"a plain file", "", "pris.txt", false},
        {"a file on a diskette", "", "a:\\pris.txt", true},
        {"a name that begins with a small a", "", "apris.txt", false},
        {"a name that begins with A", "", "Apris.txt", true},
        {"a command", "true", "A:\\pris.txt", false},
        {"a command on a diskette", "B:\\pris.exe", "pris.txt", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.mask(kSimple);
        world.job.command = c.command;
        world.job.priceFile = c.priceFile;
        world.port.confirmation.confirmed = false;
        world.run();
        const Confirmation& asked = world.port.confirmations.at(0);
        EXPECT_EQ(asked.captionSuffix, " Test");
        EXPECT_EQ(asked.emptyTablesSuffix, " " + world.shownCompany());
        EXPECT_FALSE(asked.tradeFormat);
        LanguageTexts& texts = world.texts();
        const std::string heading = "Testbolaget (" + world.shownCompany() + ")";
        std::string expected =
            *c.command ? texts.FormulärSträngMed3(text::prismain::kConfirmWithCommand, c.command, c.priceFile, heading)
                       : texts.FormulärSträngMed2(text::prismain::kConfirm, c.priceFile, heading);
        expected += "\r\n\r\n";
        const std::string letter = *c.command ? "B" : "A";
        if (c.diskette)
            expected += texts.FormulärSträngMed1(text::prismain::kInsertDiskette, letter) +
                        world.text(text::prismain::kBeforeRun);
        EXPECT_EQ(asked.runText, expected);
    }
}

TEST(Preparation, RunsBesideTheProgram) {
    const struct {
        const char *fault, *command;
        const char* folder;  // in which the price file is made
    } cases[] = {
        {"not in Filer", "printf 'A\\t5\\r\\n' > pris.txt", "program/Filer"},
        {"a command that names Filer itself does not run above it", "printf 'A\\t5\\r\\n' > pris.txt # \\filer",
         "program"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.mask(kSimple);
        world.job.command = c.command;
        EXPECT_TRUE(world.run().completed);
        EXPECT_TRUE(std::filesystem::exists(world.data().parent_path() / c.folder / "pris.txt"));
        EXPECT_FALSE(std::filesystem::exists(world.data().parent_path() / c.folder / "EXPA@#01.BAT"));
        EXPECT_EQ(world.rows("Produkt", "Nummer"), "A\n");
        EXPECT_THAT(world.port.statuses,
                    Contains(world.text(text::prismain::kRunningCommand) + " " + c.command + " ..."));
    }
}

TEST(Preparation, UsesTheDataFolderWhenTheProgramCannotBeWritten) {
    World world;
    world.mask(kSimple);
    std::ofstream(world.data() / "file") << "no folder";
    world.state.ProgramMapp = (world.data() / "file" / "program" / "").string();
    world.priceFile("A\t5\r\n");
    world.job.command = "printf 'A\\t7\\r\\n' > ../pris.txt";
    world.run();
    EXPECT_EQ(world.rows("Produkt", "Nummer, Vikt"), "A 7\n");
}

TEST(Preparation, CancelEndsTheWaitAndThenTheRun) {
    World world;
    world.mask(kSimple);
    world.priceFile(priceLines(60));
    world.job.command = "sleep 2";
    world.port.cancelAtStatus = world.text(text::prismain::kRunningCommand) + " sleep 2 ...";
    const RunSummary summary = world.run();
    EXPECT_TRUE(summary.completed);
    EXPECT_TRUE(summary.cancelled);
    EXPECT_EQ(summary.records, 25) << "the file is not read, or to its end";
}

TEST(Preparation, ThatFailedOrRenewedNothingIsTold) {
    const struct {
        const char *fault, *command;
        int status;
        bool renewed;
    } cases[] = {{"a failing command goes unnoticed", "exit 9", 9, false},
                 {"a missing program goes unnoticed", "no-such-program", 127, false},
                 {"an old file goes unnoticed", "true", 0, false},
                 {"a file with the times of its archive counts as old",
                  "cp -p ../../data/pris.txt x; mv x ../../data/pris.txt", 0, true},
                 {"a file that was written over with its old time counts as old",
                  "cp -p ../../data/pris.txt x; cat x > ../../data/pris.txt; touch -r x ../../data/pris.txt", 0, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.mask(kSimple);
        world.priceFile("A\t5\r\n");
        world.job.command = c.command;
        const auto text = [&](ModuleKey key, const std::string& var) { return world.texts().ModulTextMed(key, var); };
        std::string told;
        if (c.status != 0) {
            told = text(text::preparation::kFailed, c.command) + " " +
                   text(c.status == 127 ? text::preparation::kNoSuchProgram : text::preparation::kExitStatus,
                        std::to_string(c.status));
        }
        if (!c.renewed) told += (told.empty() ? "" : "\r\n\r\n") + text(text::preparation::kSamePriceFile, "pris.txt");
        const RunSummary summary = world.run();
        EXPECT_EQ(summary.preparation.exitStatus, c.status);
        EXPECT_EQ(summary.hasFaults(), c.status != 0);
        EXPECT_EQ(world.port.told, told.empty() ? std::vector<std::string>() : std::vector{told});
        EXPECT_EQ(world.rows("Produkt", "Nummer"), "A\n") << "the run goes on all the same";
    }
}

struct TwoPreparations : World {
    TwoPreparations() {
        mask(kSimple);
        std::filesystem::create_directories(program() / "Filer");
        job.command = "printf 'B\\t7\\r\\n' > pris.txt";
        BatchFile other(program() / "Filer", "EXPA@#01.BAT");
        EXPECT_TRUE(other.takeTurn());
        other.start("while [ ! -e go ]; do sleep 0.01; done; printf 'A\\t5\\r\\n' > pris.txt", {});
    }
    /// Waits for the other command: it would look for "go" for ever in a folder that is gone.
    ~TwoPreparations() {
        letOtherEnd();
        for (int pause = 0; pause < 1000 && std::filesystem::exists(program() / "Filer" / "EXPA@#01.BAT"); ++pause)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    void letOtherEnd() const { std::ofstream(program() / "Filer" / "go"); }
    [[nodiscard]] bool waits() const { return !port.statuses.empty() && port.statuses.back() == waiting(); }
    [[nodiscard]] std::string waiting() const { return texts().ModulText(text::preparation::kWaiting); }
};

TEST(Preparation, WaitsForTheCommandOfAnotherRun) {
    TwoPreparations world;
    world.port.onEvents = [&] {
        if (world.waits()) world.letOtherEnd();
    };
    EXPECT_EQ(world.run().preparation.exitStatus, 0);
    EXPECT_EQ(world.rows("Produkt", "Nummer"), "B\n") << "read behind the other's command";
}

TEST(Preparation, CancelBeforeItsTurnReadsNothing) {
    TwoPreparations world;
    world.priceFile("C\t5\r\n");
    world.port.cancelAtStatus = world.waiting();
    EXPECT_TRUE(world.run().cancelled);
    EXPECT_EQ(world.rows("Produkt", "Nummer"), "");
}

TEST(Cancel, KeepsWhatWasRead) {
    World world;
    world.mask(kSimple);
    world.priceFile(priceLines(60));
    world.port.cancelAtStatus = world.text(text::prismain::kRecordsRead) + " 50 ....";
    const RunSummary summary = world.run();
    EXPECT_TRUE(summary.cancelled);
    EXPECT_TRUE(summary.completed);
    EXPECT_EQ(summary.records, 50);
    EXPECT_EQ(lines(world.rows("Produkt", "Nummer")), 50U);
    const std::string label = world.text(text::prismain::kRecordsRead) + " ";
    EXPECT_THAT(world.port.statuses,
                ElementsAre(world.text(text::prismain::kPreparing), world.text(text::prismain::kReading),
                            label + "25 ....", label + "50 ...."));

    world.port.cancelAtStatus.clear();
    EXPECT_FALSE(world.run().cancelled) << "the Cancel of the run before counts";
    EXPECT_EQ(lines(world.rows("Produkt", "Nummer")), 60U);
}

struct FullWorld : World {
    FullWorld() {
        const auto database = open();
        database->begin();
        fill(*database, "Produkt", "Nummer", 60);
        fill(*database, "Levprislista", "Produktnr", 110);
        fill(*database, "Prodaltprodnr", "Produktnr", 110);
        database->commit();
        mask({.relations = {{1, "Nummer", 'S'}, {2, "Vikt"}}});
        priceFile("A\t5\r\n");
        port.confirmation.emptyTables = true;
    }
    static void fill(Database& database, std::string_view table, std::string_view column, int count) {
        const auto rows = database.open(table, RecordsetType::Table);
        for (int row = 1; row <= count; ++row) {
            rows->addNew();
            rows->set(column, numbered(row));
            rows->update();
        }
    }
    [[nodiscard]] std::vector<std::size_t> counts() const {
        return {lines(rows("Produkt", "Nummer")), lines(rows("Levprislista", "Produktnr")),
                lines(rows("Prodaltprodnr", "Produktnr"))};
    }
};

TEST(EmptyTables, DeletesAllThree) {
    FullWorld world;
    const RunSummary summary = world.run();
    EXPECT_TRUE(world.port.confirmations.at(0).emptyTablesEnabled);
    EXPECT_EQ(summary.newProducts, 1);
    EXPECT_THAT(world.counts(), ElementsAre(1U, 0U, 0U));
    EXPECT_THAT(world.port.statuses,
                ElementsAre(world.text(text::prismain::kPreparing), world.text(text::prismain::kDeletingProducts),
                            world.text(text::prismain::kProductsDeleted) + " 25 ....",
                            world.text(text::prismain::kProductsDeleted) + " 50 ....",
                            world.text(text::prismain::kDeletingSupplierPrices),
                            world.text(text::prismain::kSupplierPricesDeleted) + " 50 ....",
                            world.text(text::prismain::kSupplierPricesDeleted) + " 100 ....",
                            world.text(text::prismain::kDeletingAlternatives),
                            world.text(text::prismain::kAlternativesDeleted) + " 50 ....",
                            world.text(text::prismain::kAlternativesDeleted) + " 100 ....",
                            world.text(text::prismain::kReading)));
}

TEST(EmptyTables, CancelReadsNothing) {
    const struct {
        const char* fault;
        FormKey label;
        const char* count;
        std::vector<std::size_t> left;
    } cases[] = {{"goes on with the products or with the next table",
                  text::prismain::kProductsDeleted,
                  " 25 ....",
                  {35, 110, 110}},
                 {"goes on with the price list", text::prismain::kSupplierPricesDeleted, " 50 ....", {0, 60, 110}},
                 {"goes on with the alternatives", text::prismain::kAlternativesDeleted, " 100 ....", {0, 0, 10}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        FullWorld world;
        world.port.cancelAtStatus = world.text(c.label) + c.count;
        const RunSummary summary = world.run();
        EXPECT_TRUE(summary.cancelled);
        EXPECT_EQ(summary.records, 0);
        EXPECT_EQ(world.counts(), c.left);
    }
}

TEST(EmptyTables, TakesWhatAnInterruptedEmptyingHasLeft) {
    World world;
    world.add("Levprislista", {{"Produktnr", "A"}});
    world.mask(kSimple);
    world.priceFile("A\t5\r\n");
    world.port.confirmation.emptyTables = true;
    EXPECT_EQ(world.run().deleted.priceList, 1);
    EXPECT_FALSE(world.port.confirmations.at(0).emptyTablesEnabled) << "the box of the window";
}

TEST(DoubtfulFile, ThatIsNotReadChangesNothing) {
    FullWorld world;
    world.add("Prodaltprodnr", {{"Produktnr", "A"}, {"Alternativnr", ""}});
    world.rawPriceFile("PK\3\4 and so on");
    world.port.readsDoubtfulFiles = false;
    const RunSummary summary = world.run();
    EXPECT_FALSE(summary.completed);
    EXPECT_THAT(world.counts(), ElementsAre(60U, 110U, 111U));
    ASSERT_EQ(world.port.doubtfulFiles.size(), 1U);
    const DoubtfulFile& asked = world.port.doubtfulFiles[0];
    EXPECT_TRUE(asked.garbage);
    EXPECT_NE(asked.text.find(world.texts().ModulText(text::look::kZip)), std::string::npos);
    EXPECT_NE(asked.text.find(world.texts().ModulTextMed(text::look::kEmptiedFirst, world.shownCompany())),
              std::string::npos)
        << "the emptying is not named";
}

TEST(DoubtfulFile, OfWhichNothingIsUsedIsTold) {
    FullWorld world;
    world.rawPriceFile("");
    bool waiting = false;
    world.port.onEvents = [&] { waiting = world.port.hourglassShown; };
    const RunSummary summary = world.run();
    EXPECT_TRUE(waiting) << "no hourglass behind the question";
    EXPECT_TRUE(summary.nothingUsed());
    EXPECT_EQ(summary.deleted.products, 60);
    ASSERT_EQ(world.port.told.size(), 1U);
    EXPECT_NE(world.port.told[0].find(world.texts().ModulText(text::run::kDeletedSupplierPrices) + ": 110"),
              std::string::npos);
}

TEST(Confirmation, NamesNumbersAndBoundsThatAreNone) {
    for (const auto locale : {Locale::Kind::Swedish, Locale::Kind::English}) {
        World world(locale);
        world.mask(kSimple);
        world.setting("PPrisAvrund", "0\r\n9,99\r\n10\r\n\r\n");
        world.port.confirmation.confirmed = false;
        world.run();
        const bool swedish = locale == Locale::Kind::Swedish;
        const Confirmation& asked = world.port.confirmations.at(0);
        EXPECT_EQ(asked.numbers, world.texts().ModulTextMed(text::look::kNumberForm, swedish ? "12,50" : "12.50"));
        EXPECT_EQ(asked.warning, swedish ? "" : world.texts().ModulTextMed(text::look::kUnreadableBounds, "\"9,99\""));
    }
}

TEST(TwoRuns, InOneProcessKnowNothingOfEachOther) {
    World one, other(Locale::Kind::English);
    for (World* world : {&one, &other}) world->mask(kSimple);
    one.priceFile("A\t1,5\r\nB\t2,5\r\n");
    other.priceFile("C\t3.5\r\nD\t4.5\r\n");
    bool ran = false;
    one.port.onEvents = [&] {
        if (std::exchange(ran, true)) return;
        EXPECT_TRUE(other.run().completed);
    };
    EXPECT_TRUE(one.run().completed);
    EXPECT_EQ(one.rows("Produkt", "Nummer, Vikt"), "A 1.5\nB 2.5\n");
    EXPECT_EQ(other.rows("Produkt", "Nummer, Vikt"), "C 3.5\nD 4.5\n");
}

TEST(Dispatcher, JobNumberZeroRunsNothing) {
    World world;
    MessageBoxes boxes(world.port, {});
    CompanyRegister companies(world.state, world.texts(), boxes);
    ImportContext context{world.state, world.texts(), boxes, companies, world.port, world.Idag, 0};
    EXPECT_FALSE(Utför(context, "Test").completed);
}

}  // namespace
}  // namespace kolmera::test
