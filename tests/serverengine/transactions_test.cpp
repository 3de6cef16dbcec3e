#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "support/servertest.h"

namespace kolmera::test {
namespace {

constexpr auto kNumbers = "SELECT Nummer, Inpris FROM Produkt ORDER BY Nummer";

class ServerTransactions : public ServerTest {
  protected:
    static void setPrice(Database& in, const std::string& number, double price) {
        const auto records = seek(in, number);
        records->edit();
        records->set("Inpris", price);
        records->update();
    }
};

TEST_F(ServerTransactions, ARefusedStatementLeavesTheOthersOfItsBatch) {
    const struct {
        const char* fault;
        std::function<void(Database&)> statement;
        int number;
    } cases[] = {
        {"a duplicate key", [](Database& in) { add(in, "b"); }, errors::kDuplicateKey},
        {"a text that only the server finds too long",
         [](Database& in) { (void)in.execute("UPDATE Produkt SET Grupp = 'longer than eight' WHERE Nummer = 'A'"); },
         errors::kTextTooLong},
        {"no statement of the server's language", [](Database& in) { (void)in.execute("DELETE Produkt FROM WHERE"); },
         errors::kInternal},
        {"a reading statement", [](Database& in) { (void)in.open("SELECT nothing(1)", RecordsetType::Snapshot); },
         errors::kInternal},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        (void)database->execute("DELETE FROM Produkt");
        add(*database, "A");
        database->begin();
        add(*database, "B");
        const auto records = dynaset(*database, "Produkt");
        records->addNew();
        records->set("Nummer", std::string("C"));
        records->update();
        setPrice(*database, "A", 1.5);
        (void)database->execute("UPDATE Produkt SET Inpris = 2.5 WHERE Nummer = 'B'");
        EXPECT_EQ(errorOf([&] { c.statement(*database); }), c.number);
        EXPECT_TRUE(database->inTransaction());
        EXPECT_EQ(selectElsewhere(kNumbers), "'A' 0") << "the transaction was committed";
        records->moveToModified();  // the row has to have the ID that it was given
        records->edit();
        records->set("Inpris", 3.5);
        records->update();
        database->commit();
        EXPECT_EQ(selectElsewhere(kNumbers), "'A' 1.5; 'B' 2.5; 'C' 3.5");
    }
}

TEST_F(ServerTransactions, RollingBackAlsoUndoesWhatWasWrittenAgain) {
    add(*database, "A");
    database->begin();
    setPrice(*database, "A", 7);
    EXPECT_EQ(errorOf([&] { add(*database, "a"); }), errors::kDuplicateKey);
    setPrice(*database, "A", 8);
    EXPECT_EQ(select(*database, kNumbers), "'A' 8");
    database->rollback();
    EXPECT_EQ(select(*database, kNumbers), "'A' 0");
    EXPECT_EQ(errorOf([&] { database->commit(); }), errors::kInternal);
    database->begin();
    EXPECT_EQ(errorOf([&] { database->begin(); }), errors::kInternal);
    database->commitJoined();
    EXPECT_FALSE(database->inTransaction());
}

TEST_F(ServerTransactions, AHeldLockIsWaitedForUntilItGoes) {
    add(*database, "A");
    const auto other = open();
    other->begin();
    setPrice(*other, "A", 1);
    int waits = 0;
    const auto patient = open([&] {
        if (++waits == 2) other->commit();
        return true;
    });
    patient->begin();
    add(*patient, "B");
    setPrice(*patient, "A", 2);
    patient->commit();
    EXPECT_EQ(waits, 2);
    EXPECT_EQ(selectElsewhere(kNumbers), "'A' 2; 'B' 0") << "what was written before the lock is lost";
}

TEST_F(ServerTransactions, ALockedTableIsWaitedForWhenItIsMet) {
    const bool tables = TestServer::ofProcess().kind() == ServerKind::MariaDb;
    add(*database, "A");
    const auto other = open();
    other->begin();
    other->execute(tables ? "LOCK TABLES `Produkt` WRITE" : "LOCK TABLE \"Produkt\" IN ACCESS EXCLUSIVE MODE");
    int waits = 0;
    const auto patient = open([&] {
        if (++waits == 2) {
            if (tables) other->execute("UNLOCK TABLES");
            other->commit();
        }
        return true;
    });
    patient->begin();
    setPrice(*patient, "A", 2);
    patient->commit();
    EXPECT_EQ(waits, 2);
    EXPECT_EQ(selectElsewhere(kNumbers), "'A' 2");
}

TEST_F(ServerTransactions, ALockThatIsGivenUpEndsTheRunAndKeepsTheBatch) {
    add(*database, "A");
    const auto other = open();
    other->begin();
    setPrice(*other, "A", 1);
    const auto impatient = open([] { return false; });
    impatient->begin();
    add(*impatient, "B");
    EXPECT_EQ(errorOf([&] { setPrice(*impatient, "A", 2); }), -errors::kLocked);
    impatient->commit();
    other->commit();
    EXPECT_EQ(selectElsewhere(kNumbers), "'A' 1; 'B' 0");
}

TEST_F(ServerTransactions, TwoSessionsThatWaitForEachOtherBothEnd) {
    add(*database, "A");
    add(*database, "B");
    const auto other = open([] { return false; });
    int waits = 0;
    const auto patient = open([&] {
        // Now this session holds nothing: the other one gets what it wants.
        if (++waits == 1) {
            setPrice(*other, "A", 1);
            other->commit();
        }
        return true;
    });
    patient->begin();
    other->begin();
    setPrice(*patient, "A", 2);
    setPrice(*other, "B", 1);
    setPrice(*patient, "B", 2);
    patient->commit();
    EXPECT_GE(waits, 1);
    EXPECT_EQ(selectElsewhere(kNumbers), "'A' 2; 'B' 2");
}

TEST_F(ServerTransactions, WhatCannotBeWrittenAgainEndsTheRun) {
    const struct {
        const char* fault;
        std::function<void(Database&)> meanwhile;
        int number;
        const char* left;
    } cases[] = {
        {"a changed row that another session deletes",
         [](Database& in) { (void)in.execute("DELETE FROM Produkt WHERE Nummer = 'A'"); }, -errors::kCannotBeRepeated,
         "'B' 1; 'D' 0"},
        {"a new row that another session adds", [](Database& in) { add(in, "C"); }, -errors::kCannotBeRepeated,
         "'A' 0; 'B' 1; 'C' 0; 'D' 0"},
        {"a row that has its values already taken for a deleted one", [](Database& in) { setPrice(in, "A", 2); }, 0,
         "'A' 2; 'B' 2; 'C' 0; 'D' 0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        (void)database->execute("DELETE FROM Produkt");
        add(*database, "A");
        add(*database, "B");
        const auto blocker = open();
        blocker->begin();
        setPrice(*blocker, "B", 1);
        const auto patient = open([&] {
            if (!blocker->inTransaction()) return true;
            c.meanwhile(*blocker);
            blocker->commit();
            return true;
        });
        patient->begin();
        setPrice(*patient, "A", 2);
        add(*patient, "C");
        EXPECT_EQ(errorOf([&] { setPrice(*patient, "B", 2); }), c.number);
        EXPECT_EQ(patient->inTransaction(), c.number == 0);
        if (!patient->inTransaction()) patient->begin();
        add(*patient, "D");
        patient->commit();
        EXPECT_EQ(selectElsewhere(kNumbers), c.left) << "half of the transaction was committed";
    }
}

/// A port of this machine that takes connections and never says a word.
class SilentPort {
  public:
    SilentPort() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* const plain = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(bind(socket_, plain, length) | listen(socket_, 8) | getsockname(socket_, plain, &length), 0);
        number_ = ntohs(address.sin_port);
    }
    ~SilentPort() { close(socket_); }
    SilentPort(const SilentPort&) = delete;
    SilentPort& operator=(const SilentPort&) = delete;
    [[nodiscard]] std::string number() const { return std::to_string(number_); }

  private:
    int socket_ = socket(AF_INET, SOCK_STREAM, 0);
    int number_ = 0;
};

TEST_F(ServerTransactions, ASilentServerIsGivenUp) {
    const std::string source = TestServer::ofProcess().connectString();
    const SilentPort silent;
    EXPECT_EQ(errorOf([&] { openServerDatabase(source + ";LoginTimeout=1;Port=" + silent.number(), {}); }),
              errors::kServerSilent);
    const bool postgres = TestServer::ofProcess().kind() == ServerKind::PostgreSql;
    const auto sleep = [&](Database& in) {
        return errorOf(
            [&] { in.open(postgres ? "SELECT pg_sleep(600)" : "SELECT SLEEP(600)", RecordsetType::Snapshot); });
    };
    const auto limited = openServerDatabase(source + ";querytimeout=1", {});
    EXPECT_EQ(sleep(*limited), -errors::kServerSilent);
    EXPECT_EQ(errorOf([&] { limited->begin(); }), -errors::kServerSilent) << "the connection is used again";
    ServerOptions cancelled;
    cancelled.waitForAnswer = [](std::chrono::milliseconds) { return false; };
    EXPECT_EQ(sleep(*openServerDatabase(source, cancelled)), -errors::kServerSilent);
}

TEST_F(ServerTransactions, ALostConnectionEndsTheRunWithOneClearError) {
    for (const bool inTransaction : {true, false}) {
        SCOPED_TRACE(inTransaction);
        (void)database->execute("DELETE FROM Produkt");
        auto lost = open();
        add(*lost, "A");
        const auto records = seek(*lost, "A");
        EXPECT_EQ(records->recordCount(), 1);
        if (inTransaction) {
            lost->begin();
            add(*lost, "B");
        }
        TestServer::ofProcess().endSessions();
        EXPECT_EQ(errorOf([&] { add(*lost, "C"); }), -errors::kServerGone);
        EXPECT_FALSE(lost->inTransaction());
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(errorOf([&] { (void)lost->execute("DELETE FROM Produkt"); }), -errors::kServerGone);
            EXPECT_EQ(errorOf([&] { lost->begin(); }), -errors::kServerGone);
            EXPECT_EQ(errorOf([&] { records->moveLast(), (void)records->value("Inpris"); }), -errors::kServerGone);
        }
        database = open();  // its session was ended too
        EXPECT_EQ(select(*database, kNumbers), "'A' 0") << "the batch at hand was committed";
    }
}

TEST_F(ServerTransactions, AServerThatIsNotThereSaysSo) {
    try {
        (void)openServerDatabase("Driver=PostgreSQL Unicode;Server=127.0.0.1;Port=1;Database=x;UID=x", {});
        FAIL() << "connected to nothing";
    } catch (const PlatformError& error) {
        EXPECT_EQ(error.number(), errors::kServerGone);
        EXPECT_NE(error.description().find("127.0.0.1"), std::string::npos) << error.description();
    }
    EXPECT_EQ(errorOf([] { (void)openServerDatabase("no connect string", {}); }), errors::kServerGone);
}

TEST_F(ServerTransactions, StampsTellWhatMayHaveChanged) {
    const auto products = [&] { return database->stamp("Produkt"); };
    const std::uint64_t first = products();
    EXPECT_EQ(products(), first);
    add(*database, "A");
    const std::uint64_t written = products();
    EXPECT_NE(written, first);
    (void)database->execute("DELETE FROM Levprislista");
    EXPECT_EQ(products(), written) << "a write to another table";
    database->begin();
    EXPECT_NE(products(), written) << "what others wrote between batches goes unseen";
    database->commit();
}

}  // namespace
}  // namespace kolmera::test
