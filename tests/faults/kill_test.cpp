#include <fmt/format.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "faults/runworld.h"
#include "history/runfolder.h"
#include "platform/jet/jetmessages.h"
#include "platform/jet/jetreader.h"
#include "platform/tsv.h"
#include "support/companyrows.h"

namespace kolmera::test {
namespace {

// A program is killed at a call that opens or changes a file, or in the middle of a write; what lies between two calls
// changes nothing that outlives it. Time passes 1000 times quicker, so that every batch is committed by itself.
constexpr int kSpeed = 1000;

namespace fs = std::filesystem;

/// The records of a company's runs, all of them readable to their ends.
std::vector<RunHeader> readableRuns(const DataFolder& data) {
    const RunFolder runs(data.path());
    std::int64_t unreadable = 0;
    const std::vector<RunHeader> list = runs.list(&unreadable);
    EXPECT_EQ(unreadable, 0) << "a record that cannot be read";
    for (const RunHeader& run : list) {
        EXPECT_FALSE(run.underWay) << "a killed run is taken for a living one";
        RecordReader(runs.file(run.id)).forEachChange([](const RowChange& /*change*/) { return true; });
    }
    return list;
}

/// The clock makes a run commit here or there: it may need fewer calls than the one that counted them.
bool wasDoneBefore(const Outcome& outcome, int call) { return outcome.exitCode == 0 && outcome.calls < call; }

/// One operation that is killed again and again.
struct Killed {
    const DataFolder& before;
    std::vector<std::string> command;
    DataFolder after{before.path()};
    int calls = 0;
    std::string beforeRows = before.rows(), afterRows = {};

    Killed(const DataFolder& start, std::vector<std::string> arguments) : before(start), command(std::move(arguments)) {
        const Outcome whole = after.run(command, {.clockSpeed = kSpeed});
        EXPECT_EQ(whole.exitCode, 0) << whole.told;
        calls = whole.calls;
        afterRows = after.rows();
        EXPECT_NE(afterRows, beforeRows) << "the operation does nothing";
    }

    void expectWholeFiles(const DataFolder& data) const {
        const auto old = before.otherFiles(), now = after.otherFiles();
        for (const auto& [name, content] : data.otherFiles()) {
            if (!old.contains(name) && !now.contains(name)) continue;  // not finished, and nobody's
            EXPECT_TRUE((old.contains(name) && content == old.at(name)) ||
                        (now.contains(name) && content == now.at(name)))
                << name << " is neither old nor new";
        }
    }
    /// The same command once more ends as if it had never been stopped.
    void expectRepeatable(const DataFolder& data) const {
        const Outcome again = data.run(command);
        EXPECT_EQ(again.exitCode, 0) << again.told;
        EXPECT_EQ(firstDifference(data.rows(), afterRows), "");
        EXPECT_EQ(data.otherFiles(), after.otherFiles()) << "something is left behind";
    }
};

TEST(KilledRun, KeepsWholeBatchesAndIsRepeatable) {
    bool other = false;
    for (const std::string format : RunWorld::kFormats) {
        other = !other;
        for (const bool emptied : {false, true}) {
            if (emptied == other && trials(0, 1) == 0) continue;  // each of the two with every push
            SCOPED_TRACE(fmt::format("{}{}", format, emptied ? " --empty" : ""));
            const RunWorld world(format);
            const Killed run(world.before(), world.command(emptied));
            bool turn = false;
            for (const int call : spread(run.calls, trials(4, 100))) {
                SCOPED_TRACE(fmt::format("killed at call {} of {}", call, run.calls));
                const DataFolder data(world.before().path());
                const Outcome outcome = data.run(run.command, {.fault = Fault::Kill, .at = call, .clockSpeed = kSpeed});
                if (wasDoneBefore(outcome, call)) continue;
                ASSERT_TRUE(outcome.killed) << outcome.told;
                const std::string rows = data.rows();
                EXPECT_GE(world.batches(rows, run.afterRows, emptied), 0) << "not whole batches";
                run.expectWholeFiles(data);
                const std::vector<RunHeader> records = readableRuns(data);
                if (std::exchange(turn, !turn)) {
                    EXPECT_TRUE(rows == run.beforeRows || !records.empty()) << "changes without a record";
                    if (!records.empty()) {
                        EXPECT_EQ(data.run({"undo", "last"}).exitCode, 0);
                    }
                    EXPECT_EQ(firstDifference(data.rows(), run.beforeRows), "") << "the record lacks changes";
                } else {
                    run.expectRepeatable(data);
                }
                if (HasFailure()) return;
            }
        }
    }
}

TEST(KilledUndo, IsRepeatable) {
    const RunWorld world("(EIO)");
    for (const bool emptied : {false, true}) {
        SCOPED_TRACE(emptied);
        const DataFolder ran(world.before().path());
        ASSERT_EQ(ran.run(world.command(emptied)).exitCode, 0);
        const std::string id = RunFolder(ran.path()).list().front().id;
        const Killed undo(ran, {"undo", id});
        EXPECT_EQ(firstDifference(undo.afterRows, world.before().rows()), "");
        for (const int call : spread(undo.calls, trials(5, 100))) {
            SCOPED_TRACE(fmt::format("killed at call {} of {}", call, undo.calls));
            const DataFolder data(ran.path());
            const Outcome outcome = data.run(undo.command, {.fault = Fault::Kill, .at = call, .clockSpeed = kSpeed});
            if (wasDoneBefore(outcome, call)) continue;
            ASSERT_TRUE(outcome.killed) << outcome.told;
            readableRuns(data);
            undo.expectWholeFiles(data);
            undo.expectRepeatable(data);
        }
    }
}

TEST(KilledDiscounts, LeaveTheOldLetterOrTheNew) {
    const RunWorld world("tabs", 1);
    const DataFolder start(world.before().path());
    std::ofstream(start.file("old.txt"), std::ios::binary) << "A\t1\r\nN1\t2\r\n";
    ASSERT_EQ(start.run({"discounts", "import", "1010", start.file("old.txt").string()}).exitCode, 0);
    std::string lines;
    for (int group = 0; group < 120; ++group) lines += fmt::format("N{}\t{}\r\n", group, group % 60);
    std::ofstream(start.file("letter.txt"), std::ios::binary) << lines;
    const Killed import(start, {"discounts", "import", "1010", start.file("letter.txt").string()});
    for (const int call : spread(import.calls, trials(10, 100))) {
        SCOPED_TRACE(fmt::format("killed at call {} of {}", call, import.calls));
        const DataFolder data(start.path());
        const Outcome outcome = data.run(import.command, {.fault = Fault::Kill, .at = call, .clockSpeed = kSpeed});
        if (wasDoneBefore(outcome, call)) continue;
        ASSERT_TRUE(outcome.killed) << outcome.told;
        const std::string rows = data.rows();
        EXPECT_TRUE(rows == import.beforeRows || rows == import.afterRows) << "half a letter";
        import.expectWholeFiles(data);
        import.expectRepeatable(data);
    }
}

TEST(KilledCopy, OfACompanyIsFinishedByTheSameCommand) {
    const RunWorld world("tabs");
    const DataFolder whole(world.before().path());
    const std::vector<std::string> command = {"copy-company", "FTG1.mdb", "FTG2.mdb"};
    const Outcome copied = whole.run(command);
    ASSERT_EQ(copied.exitCode, 0) << copied.told;
    for (const int call : spread(copied.calls, trials(8, 100))) {
        SCOPED_TRACE(fmt::format("killed at call {} of {}", call, copied.calls));
        const DataFolder data(world.before().path());
        ASSERT_TRUE(data.run(command, {.fault = Fault::Kill, .at = call}).killed);
        const Outcome again = data.run(command);
        EXPECT_EQ(again.exitCode, 0) << again.told;
        EXPECT_EQ(data.rows(), world.before().rows());
        EXPECT_EQ(companyRows(*openFileDatabase(data.path() / "FTG2.mdb", OpenOptions())), data.rows());
        for (const auto& [name, content] : data.otherFiles()) {
            EXPECT_TRUE(whole.otherFiles().contains(name) || name.starts_with("FTG2.mdb.new-")) << name;
        }
    }
}

/// A program that stands for the reader of such files and tells of some hundred products.
void makeReader(const DataFolder& data) {
    const auto column = [](const char* name, jet::ColumnType type) {
        return jet::Column{.name = name, .type = type, .size = 25};
    };
    constexpr std::int64_t kRows = 1200;
    const jet::Table products{.name = "Produkt",
                              .rows = kRows,
                              .columns = {column("ID", jet::ColumnType::Long), column("Nummer", jet::ColumnType::Text)},
                              .indexes = {}};
    std::string said = jet::tableMessage(products) + jet::beginningMessage(0);
    for (std::int64_t id = 1; id <= kRows; ++id) said += jet::rowMessage({id, fmt::format("N{}", id)});
    std::ofstream(data.file("said"), std::ios::binary) << said << jet::endMessage();
    const fs::path reader = data.file(jet::kReaderProgram);
    std::ofstream(reader) << "#!/bin/sh\nexec /bin/cat '" << data.file("said").string() << "'\n";
    fs::permissions(reader, fs::perms::owner_all);
    std::ofstream(data.file("old.mdb"), std::ios::binary) << "the company of an older system";
}

TEST(KilledAccessImport, LeavesTheOldCompanyOrTheNewAndIsRepeatable) {
    const RunWorld world("tabs", 1);
    const auto import = [&world](CallPlan plan, const std::function<void(const DataFolder&, const Outcome&)>& look) {
        DataFolder data(world.before().path());
        data.programFolder = data.root();
        makeReader(data);
        const std::vector<std::string> command = {"import-access", data.file("old.mdb").string(), "--company",
                                                  "FTG1.mdb", "--replace"};
        const Outcome outcome = data.run(command, plan);
        look(data, outcome);
        if (!outcome.killed) return;
        EXPECT_EQ(data.run(command).exitCode, 3) << "what the file lacks is told";
        look(data, {});
    };
    int calls = 0;
    std::string whole;
    import({.clockSpeed = kSpeed}, [&](const DataFolder& data, const Outcome& outcome) {
        ASSERT_EQ(outcome.exitCode, 3) << outcome.told;
    calls = outcome.calls;
    whole = data.rows();
});
ASSERT_NE(whole, world.before().rows());
const auto names = [](const DataFolder& data) {
    std::set<fs::path> found;
    for (const auto& entry : fs::directory_iterator(data.path())) found.insert(entry.path().filename());
    return found;
};
for (const int call : spread(calls, trials(4, 100))) {
    SCOPED_TRACE(fmt::format("killed at call {} of {}", call, calls));
        import({.fault = Fault::Kill, .at = call, .clockSpeed = kSpeed},
               [&](const DataFolder& data, const Outcome& outcome) {
                   const std::string rows = data.rows();
        EXPECT_TRUE(rows == whole || (outcome.killed && rows == world.before().rows())) << "half a company";
        EXPECT_EQ(readWholeFile(data.file("old.mdb")), "the company of an older system");
        if (outcome.killed) return;
        EXPECT_EQ(names(data), names(world.before())) << "something is left behind";
});
if (HasFailure()) return;
}  // namespace
}  // namespace kolmera::test

}  // namespace
}  // namespace kolmera::test
