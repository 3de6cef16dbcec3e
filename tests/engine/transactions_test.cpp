#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "engine/enginetest.h"
#include "platform/attempt.h"

namespace kolmera::test {
namespace {

constexpr const char* kCount = "SELECT count(*) FROM Artikel";

class TransactionsOfAFile : public EngineTest {
  protected:
    std::unique_ptr<Database> database = open();

    void addBatch(int first) const {
        for (int i = first; i < first + 5; ++i) add(*database, std::to_string(i));
    }
    static void waitForTheNextCommit() { std::this_thread::sleep_for(std::chrono::milliseconds(260)); }
};

TEST_F(TransactionsOfAFile, OthersSeeWhatIsCommittedPhysically) {
    database->begin();
    addBatch(0);
    EXPECT_EQ(selectElsewhere(kCount), "0");
    database->commit();
    EXPECT_EQ(selectElsewhere(kCount), "5");

    database->begin();
    addBatch(10);
    database->commitJoined();
    EXPECT_FALSE(database->inTransaction());
    EXPECT_EQ(selectElsewhere(kCount), "5") << "a joined transaction was committed at once";
    database->begin();
    addBatch(20);
    waitForTheNextCommit();
    database->commitJoined();
    EXPECT_EQ(selectElsewhere(kCount), "15") << "a joined transaction waits longer than 250 ms";
}

TEST_F(TransactionsOfAFile, WhatIsJoinedIsCommittedBeforeTheProgramWaits) {
    const struct {
        const char* fault;
        std::function<void()> end;
    } cases[] = {
        {"settle leaves it", [&] { database->settle(); }},
        {"a commit leaves it",
         [&] {
             database->begin();
             database->commit();
         }},
        {"a plain write leaves it", [&] { add(*database, "plain"); }},
        {"a statement leaves it", [&] { (void)database->execute("UPDATE Artikel SET [1Pris] = 1"); }},
        {"closing leaves it", [&] { database.reset(); }},
    };
    int expected = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        database->begin();
        addBatch(expected);
        database->commitJoined();
        c.end();
        expected += std::string_view(c.fault) == "a plain write leaves it" ? 6 : 5;
        EXPECT_EQ(selectElsewhere(kCount), std::to_string(expected));
    }
}

TEST_F(TransactionsOfAFile, RollingBackTakesTheWholeTransactionOrNothing) {
    database->begin();
    addBatch(0);
    database->rollback();
    EXPECT_EQ(selectElsewhere(kCount), "0");

    database->begin();
    addBatch(0);
    database->commitJoined();
    database->begin();
    addBatch(10);
    EXPECT_EQ(errorOf([&] { database->rollback(); }), errors::kInternal) << "took an earlier transaction with it";
    database->commit();
    EXPECT_EQ(selectElsewhere(kCount), "10");
}

TEST_F(TransactionsOfAFile, CallsOutOfOrderAreRefused) {
    for (const auto& call : {&Database::commit, &Database::commitJoined, &Database::rollback}) {
        EXPECT_EQ(errorOf([&] { ((*database).*call)(); }), errors::kInternal);
    }
    database->settle();
    database->begin();
    EXPECT_EQ(errorOf([&] { database->begin(); }), errors::kInternal);
    addBatch(0);
    database->settle();
    EXPECT_TRUE(database->inTransaction()) << "settle ended a transaction half-way";
}

TEST_F(TransactionsOfAFile, AHeldBackUpdateIsWrittenBeforeAnybodyLooks) {
    addBatch(0);
    const auto articles = openTable(*database);
    const struct {
        const char* fault;
        std::function<std::string()> look;
    } cases[] = {
        {"a snapshot", [&] { return select(*database, "SELECT [1Pris] FROM Artikel WHERE Nummer = '3'"); }},
        {"a statement",
         [&] { return std::to_string(database->execute("UPDATE Artikel SET [1Pris] = 7 WHERE [1Pris] = 7")); }},
        {"another table recordset",
         [&] {
             const auto other = openTable(*database);
             (void)seek(*other, {std::string("3")});
             return show(other->value("1Pris"));
         }},
        {"a dynaset",
         [&] {
             const auto records = database->open("Artikel", RecordsetType::Dynaset);
             records->findFirst("[1Pris] = 7");
             return records->noMatch() ? "no match" : show(records->value("1Pris"));
         }},
        {"its own recordset, elsewhere and back",
         [&] {
             (void)seek(*articles, {std::string("1")});
             (void)seek(*articles, {std::string("3")});
             return show(articles->value("1Pris"));
         }},
        {"another session, after the commit",
         [&] {
             database->commit();
             const std::string seen = selectElsewhere("SELECT [1Pris] FROM Artikel WHERE Nummer = '3'");
             database->begin();
             return seen;
         }},
        {"another session, after a joined commit",
         [&] {
             waitForTheNextCommit();
             database->commitJoined();
             const std::string seen = selectElsewhere("SELECT [1Pris] FROM Artikel WHERE Nummer = '3'");
             database->begin();
             return seen;
         }},
    };
    database->begin();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        (void)database->execute("UPDATE Artikel SET [1Pris] = 0");
        ASSERT_TRUE(seek(*articles, {std::string("3")}));
        articles->edit();
        articles->set("1Pris", 7.0);
        articles->update();
        EXPECT_EQ(c.look(), std::string_view(c.fault) == "a statement" ? "1" : "7");
    }
    articles->edit();
    articles->set("1Pris", 8.0);
    articles->update();
    database->rollback();
    EXPECT_EQ(show(articles->value("1Pris")), "7") << "a held-back update survived the rollback";
}

TEST_F(TransactionsOfAFile, AnUpdateThatTheFileRefusesIsThatRecordsOwn) {
    addBatch(0);
    (void)database->execute(
        "CREATE TRIGGER refuse BEFORE UPDATE ON Artikel WHEN OLD.Nummer = '3' "
        "BEGIN SELECT RAISE(ABORT, 'refused'); END");
    database = open();
    PassedOverSilently passedOver;
    database->begin();
    {
        const auto articles = openTable(*database);
        for (const char* number : {"2", "3", "4"}) {
            ASSERT_TRUE(seek(*articles, {std::string(number)}));
            articles->edit();
            articles->set("1Pris", 7.0);
            EXPECT_EQ(attempt(passedOver, "update", [&] { articles->update(); }), *number != '3');
        }
    }
    database->commit();
    EXPECT_EQ(selectElsewhere("SELECT sum([1Pris]) FROM Artikel"), "14");
}

TEST_F(TransactionsOfAFile, ARecordsetThatIsClosedWritesWhatItHeldBack) {
    addBatch(0);
    database->begin();
    {
        const auto articles = openTable(*database);
        articles->edit();
        articles->set("1Pris", 7.0);
        articles->update();
    }
    database->commit();
    EXPECT_EQ(selectElsewhere("SELECT sum([1Pris]) FROM Artikel"), "7");
}

TEST_F(TransactionsOfAFile, StampsChangeWithEveryWriteAndNeverWithout) {
    addBatch(0);
    std::uint64_t last = database->stamp("Artikel");
    const auto changed = [&] { return std::exchange(last, database->stamp("Artikel")) != last; };
    EXPECT_FALSE(changed()) << "nothing happened";
    const auto articles = openTable(*database);
    (void)seek(*articles, {std::string("3")});
    EXPECT_FALSE(changed()) << "a read";
    articles->edit();
    articles->set("1Pris", 0.0);
    articles->set("Nummer", std::string("3"));
    articles->update();
    EXPECT_FALSE(changed()) << "an update that changes nothing was written";
    add(*database, "9");
    EXPECT_TRUE(changed()) << "a write through a recordset";
    (void)database->execute("DELETE FROM Artikel WHERE Nummer = '9'");
    EXPECT_TRUE(changed()) << "a statement";
    EXPECT_EQ(open()->execute("UPDATE Artikel SET [1Pris] = 1"), 5);
    EXPECT_TRUE(changed()) << "another session";
    database->begin();
    articles->edit();
    articles->set("1Pris", 5.0);
    articles->update();
    EXPECT_TRUE(changed()) << "an update held back";
    database->rollback();
    EXPECT_TRUE(changed()) << "rolling back";
}

/// Runs `work` in a child process, which is killed without warning as soon as it has said so through the pipe.
void killWhen(const std::function<void(const std::function<void()>& now)>& work) {
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    const pid_t child = fork();
    if (child == 0) {
        work([&] {
            (void)!::write(pipe[1], "x", 1);
            pause();
        });
        _exit(0);
    }
    char byte = 0;
    EXPECT_EQ(::read(pipe[0], &byte, 1), 1);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(pipe[0]);
    close(pipe[1]);
}

TEST_F(TransactionsOfAFile, AKilledProgramLosesOnlyWhatWasNotCommitted) {
    database.reset();
    const struct {
        const char* fault;
        std::function<void(Database&)> before;  ///< what happens before the program is killed
        const char* expected;
    } cases[] = {
        {"a committed batch lost", [](Database& killed) { killed.commit(); }, "5"},
        {"half a batch kept", [](Database& /*killed*/) {}, "0"},
        {"a settled batch lost",
         [](Database& killed) {
             killed.commitJoined();
             killed.settle();
         },
         "5"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        killWhen([&](const std::function<void()>& now) {
            const auto killed = open();
            killed->begin();
            for (int i = 0; i < 5; ++i) add(*killed, std::to_string(i));
            c.before(*killed);
            now();
        });
        EXPECT_EQ(selectElsewhere(kCount), c.expected);
        EXPECT_GE(open()->execute("DELETE FROM Artikel"), 0);
    }
}

}  // namespace
}  // namespace kolmera::test
