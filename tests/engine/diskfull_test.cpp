#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "engine/enginetest.h"

namespace kolmera::test {
namespace {

/// SQLite rolls a whole transaction back by itself when it cannot write. Going on outside of it would leave half a
/// batch behind.
class DiskFull : public EngineTest {
  protected:
    enum Outcome { Passed = 0, WrongNumber = 1, NoEndOfRun = 2, StillInTransaction = 3, NeverFull = 4, NoSetUp = 5 };

    static constexpr int kFailAtCommit = 2000;  ///< records of 5 kB
    static constexpr int kFailBefore = 15000;

    DiskFull() {
        std::filesystem::remove(file);
        makeCompany(file);
    }

    static void makeCompany(const std::filesystem::path& company) {
        const TableDef other{"Annan",
                             {{.name = "ID", .type = FieldType::Long, .counter = true},
                              {.name = "Nummer", .type = FieldType::Text, .size = 20}},
                             {{"PrimaryKey", "+ID", true}}};
        const TableDef tables[] = {artikel, other};
        createFileDatabase(company, tables);
    }

    static constexpr const char* kState = "SELECT count(*), max(ID), (SELECT Nummer FROM Annan) FROM Artikel";

    /// Runs in a child process, whose limits and mounts end with it.
    template <typename Work>
    static int inChild(Work&& work) {
        const pid_t child = fork();
        if (child == 0) {
            int outcome = NoSetUp;
            try {
                outcome = work();
            } catch (const std::exception& error) {
                std::fprintf(stderr, "%s\n", error.what());
            }
            _exit(outcome);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    static void addBig(Recordset& articles, int number) {
        articles.addNew();
        articles.set("Nummer", std::to_string(number));
        articles.set("Text", std::string(5000, 't'));
        articles.update();
    }

    /// Commits one batch, holds an update back, then adds until the disk is full, without ending the transaction.
    /// More records than the cache holds are written before the commit.
    static Outcome fill(const std::filesystem::path& file, int expectedNumber, int records) {
        const auto database = openFileDatabase(file, OpenOptions());
        const auto articles = database->open("Artikel", RecordsetType::Table);
        const auto others = database->open("Annan", RecordsetType::Table);
        database->begin();
        for (int i = 0; i < 25; ++i) addBig(*articles, i);
        others->addNew();
        others->update();
        others->moveToModified();
        database->commit();
        database->begin();
        others->edit();
        others->set("Nummer", std::string("held back"));
        others->update();
        try {
            for (int i = 100; i < 100 + records; ++i) addBig(*articles, i);
            database->commit();
        } catch (const PlatformError& error) {
            if (error.number() != expectedNumber) {
                std::fprintf(stderr, "%d: %s\n", error.number(), error.what());
                return WrongNumber;
            }
            if (!error.endsRun()) return NoEndOfRun;
            if (database->inTransaction()) return StillInTransaction;
            database->begin();
            database->commit();
            return Passed;
        }
        return NeverFull;
    }
};

TEST_F(DiskFull, AWriteErrorEndsTheRunAndKeepsCommittedBatches) {
    const int outcome = inChild([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{2 << 20, 2 << 20};
        return setrlimit(RLIMIT_FSIZE, &limit) == 0 ? fill(file, errors::kInternal, kFailAtCommit) : NoSetUp;
    });
    EXPECT_EQ(outcome, Passed);
    EXPECT_EQ(selectElsewhere(kState), "25 25 Null");
}

TEST_F(DiskFull, AFullDiskEndsTheRunAndKeepsCommittedBatches) {
    for (const int records : {kFailAtCommit, kFailBefore}) {
        const std::filesystem::path small = folder / "small";
        const std::filesystem::path kept = folder / ("kept" + std::to_string(records));
        std::filesystem::create_directory(small);
        const int outcome = inChild([&] {
            if (unshare(CLONE_NEWNS | (geteuid() == 0 ? 0 : CLONE_NEWUSER)) != 0) return NoSetUp;
            if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return NoSetUp;
            if (mount("tmpfs", small.c_str(), "tmpfs", 0, "size=2m") != 0) return NoSetUp;
            makeCompany(small / "FTG1.mdb");
            const Outcome filled = fill(small / "FTG1.mdb", errors::kDiskFull, records);
            // The log may have to come along: a full disk has no room for what closing would merge.
            std::filesystem::copy(small, kept);
            return filled;
        });
        if (outcome == NoSetUp) GTEST_SKIP() << "this system lets nobody mount a small disk";
        EXPECT_EQ(outcome, Passed);
        EXPECT_EQ(select(*openFileDatabase(kept / "FTG1.mdb", OpenOptions()), kState), "25 25 Null");
    }
}

}  // namespace
}  // namespace kolmera::test
