#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "db/serverregister.h"
#include "discounts/letterexchange.h"
#include "lang/keys/company.h"
#include "lang/keys/run.h"
#include "lang/keys/shared.h"
#include "support/companyrows.h"
#include "support/serverline.h"
#include "support/testserver.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr int kRecords = 300;
constexpr int kBatch = 25;

/// A company with some of the products of its price file.
struct FaultWorld : World {
    FaultWorld() {
        for (const int known : {7, 40, 41, 290}) add("Produkt", {{"Nummer", number(known)}, {"1Pålägg", 25.0}});
        setting("PAutoUppdatUtpris", true);
        mask({.relations = {{1, "Nummer", 'S'}, {2, "Inpris"}, {3, "Alternativ 1"}}});
        std::string file;
        for (int record = 1; record <= kRecords; ++record) {
            file += fmt::format("{0}\t{1},50\tE{0}\r\n", number(record), record);
        }
        priceFile(file);
    }
    static std::string number(int record) { return fmt::format("N{}", record); }
    [[nodiscard]] std::int64_t products() const { return std::ranges::count(rows("Produkt", "Nummer"), '\n'); }
    void expectStop() {
        port.expectBeginning(texts().ModulTextMed(text::run::kDatabaseStopped, "").substr(0, 15),
                             texts().ModulText(text::run::kStoppedTitle));
    }
};

std::string allRows() { return companyRows(*TestServer::ofProcess().open()); }

std::string rowsOfAnUndisturbedRun() {
    FaultWorld world;
    EXPECT_TRUE(world.run().completed);
    EXPECT_EQ(world.products(), kRecords);
    return allRows();
}

TEST(ServerNotThere, IsTriedFourTimesAndTold) {
    FaultWorld world;
    registerServer(world.data(), {world.job.company, "", TestServer::ofProcess().connectString() + ";Port=1"});
    int turns = 0;
    world.port.onEvents = [&] { ++turns; };
    const std::string title = world.texts().ResText(text::shared::kCannotOpenCompany);
    world.port.expectBeginning(title + " Sql;Test.\r\n\r\n3151\r\n", title);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(world.run().completed);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3)) << "not tried again";
    EXPECT_GT(turns, 100) << "the window stands still meanwhile";

    turns = 0;
    world.port.onEvents = [&] {
        if (++turns == 5) world.port.pressCancel();
    };
    world.port.expectBeginning(title + " Sql;Test.\r\n\r\n3151\r\n", title);
    EXPECT_TRUE(world.run().cancelled);
    EXPECT_LT(turns, 20) << "tried again after Cancel";
}

TEST(LostConnection, EndsTheRunAndTheNextOneConverges) {
    const std::string undisturbed = rowsOfAnUndisturbedRun();
    const struct {
        const char* fault;
        int at;
        bool silent;
    } cases[] = {{"lost in the first window", 2, false}, {"lost later", 7, false}, {"a black hole", 12, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        FaultWorld world;
        ServerLine line;
        registerServer(world.data(),
                       {world.job.company, "",
                        TestServer::ofProcess().connectString() + line.words() + (c.silent ? ";QueryTimeout=5" : "")});
        int turns = 0;
        world.port.onEvents = [&] {
            if (!world.port.inRunMode || ++turns != c.at) return;
            if (c.silent) return line.fallSilent();
            TestServer::ofProcess().endSessions();
        };
        world.expectStop();
        const RunSummary summary = world.run();
        EXPECT_FALSE(summary.completed);
        EXPECT_LT(summary.records, kRecords);
        // The four products that were there before: N7 lies in the first batch, N40 and N41 in the second.
        const std::int64_t kept = std::ranges::count(world.rows("Prodaltprodnr", "Alternativnr"), '\n');
        EXPECT_EQ(kept % kBatch, 0) << kept << " records are no whole batches";
        EXPECT_LE(kept, summary.records);
        EXPECT_GE(kept, summary.records - 2 * kBatch) << "committed batches are lost";

        world.port.onEvents = nullptr;
        line.speakAnew();
        EXPECT_TRUE(world.run().completed);
        EXPECT_THAT(world.port.passedOver, IsEmpty());
        EXPECT_EQ(firstDifference(allRows(), undisturbed), "");
    }
}

TEST(RefusedStatement, LeavesTheOthersOfItsBatch) {
    FaultWorld world;
    world.refuse("Produkt", "Nummer", "'N1', 'N25', 'N26', 'N60', 'N300'");
    EXPECT_TRUE(world.run().completed);
    EXPECT_EQ(world.products(), kRecords - 5);
    EXPECT_EQ(world.rows("Produkt", "Nummer, Inpris").find("N60 "), std::string::npos);
    EXPECT_THAT(world.rows("Produkt", "Nummer, Inpris, 1Utpris"), HasSubstr("N7 7.5 9.38\n"));
    EXPECT_THAT(world.rows("Produkt", "Nummer, Inpris"), HasSubstr("\nN59 59.5\nN61 61.5\n"));
}

/// Another session that has written to a product of the second batch, and has not committed.
struct RowHolder {
    std::unique_ptr<Database> session = TestServer::ofProcess().open();
    RowHolder() {
        session->begin();
        session->execute("UPDATE Produkt SET Vikt = 1 WHERE Nummer = 'N40'");
    }
};

TEST(LockedRow, IsWaitedForUntilItIsLetGoOrTheRunIsCancelled) {
    for (const bool letGo : {true, false}) {
        SCOPED_TRACE(letGo);
        FaultWorld world;
        const RowHolder other;
        const std::string waiting = world.texts().ModulTextMed(text::company::kWaiting, world.shownCompany());
        int waits = 0;
        world.port.onEvents = [&] {
            if (world.port.statuses.empty() || world.port.statuses.back() != waiting || ++waits != 3) return;
            if (letGo) {
                other.session->commit();
            } else {
                world.port.pressCancel();
            }
        };
        const RunSummary summary = world.run();
        EXPECT_EQ(summary.completed, letGo);
        EXPECT_EQ(summary.cancelled, !letGo);
        EXPECT_GE(waits, 3) << "the run did not wait";
        EXPECT_THAT(world.port.passedOver, IsEmpty());
        if (letGo) {
            EXPECT_EQ(world.products(), kRecords);
            EXPECT_THAT(world.rows("Produkt", "Nummer, Inpris, 1Utpris, Vikt"), HasSubstr("N40 40.5 50.62 1\n"))
                << "what the other session wrote is gone";
            continue;
        }
        // The first batch is whole, and of the second what came before the row that is held.
        const auto kept = std::ranges::count(world.rows("Prodaltprodnr", "Alternativnr"), '\n');
        EXPECT_GE(kept, kBatch);
        EXPECT_LT(kept, 40);
    }
}

/// Every record would fail: that is no matter of the file.
TEST(ServerThatRefusesEveryWrite, EndsTheRun) {
    FaultWorld world;
    TestServer::ofProcess().refuseWriting();
    world.expectStop();
    const RunSummary summary = world.run();
    EXPECT_FALSE(summary.completed);
    EXPECT_LT(summary.records, kBatch);
    EXPECT_THAT(world.port.passedOver, IsEmpty());
}

TEST(LetterOnAServer, CancelPutsTheOldOneBack) {
    World world;
    world.add("LevrabattBrev", {{"Leverantör", "7"}, {"Rabattgrupp", "A1"}, {"1Rabatt", 12.5}});
    std::string lines;
    for (int line = 0; line < 2 * kRecords; ++line) lines += fmt::format("N{}\t5\r\n", line);
    world.priceFile(lines);
    SqlLayer sql{Locale()};
    sql.FtgDB = world.open();
    sql.ÄrSQLFöretag = true;
    PassedOverSilently passedOver;
    LetterExchange letter(sql, "7", passedOver);
    int asked = 0;
    letter.cancelled = [&] { return ++asked == 2; };
    EXPECT_TRUE(letter.replaceFrom(world.data() / "pris.txt").restored);
    EXPECT_EQ(world.rows("LevrabattBrev", "Leverantör, Rabattgrupp, 1Rabatt"), "7 A1 12.5\n");
}

}  // namespace
}  // namespace kolmera::test
