#include "history/lastruns.h"

#include <fmt/format.h>

#include "history/runrecord.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

/// A folder of records that were made one behind the other.
class LastRunsTest : public testing::Test {
  protected:
    std::string add(const std::string& job, RunKind kind = RunKind::Run, const std::string& of = {}) {
        RunHeader head;
        head.job = job;
        head.kind = kind;
        head.of = of;
        head.started = fmt::format("2026-11-23T08:{:02}:00", ++minute);
        RunRecord record(runs.path(), head);
        record.change([](RunHeader& done) {
            done.ended = done.started;
            done.outcome = "completed";
        });
        record.close();
        // The name tells the order; within a second it is chance.
        const std::string id = fmt::format("20261123-08{:02}00-abcd", minute);
        std::filesystem::rename(record.file(), runs.path() / (id + ".kmr"));
        return id;
    }
    std::string told(const std::string& job) {
        const auto last = lastRuns.of(job);
        return last ? last->run.started.substr(11, 5) + (last->takenBack ? " taken back" : "") : "never";
    }
    void readAll(const std::vector<std::string>& jobs) {
        lastRuns.look();
        while (lastRuns.read(1, jobs)) {
        }
    }

    TemporaryFolder folder;
    RunFolder runs{folder.path()};
    LastRuns lastRuns{runs};
    int minute = 0;
};

TEST_F(LastRunsTest, TellsTheNewestRunOfEachJob) {
    add("A");
    add("B");
    const std::string last = add("A");
    add("A", RunKind::Preview);
    readAll({"A", "B", "C"});
    EXPECT_EQ(told("A"), "08:03") << "an older run, or a preview";
    EXPECT_EQ(told("B"), "08:02");
    EXPECT_EQ(told("C"), "never");
    add("A", RunKind::Undo, last);
    readAll({"A", "B"});
    EXPECT_EQ(told("A"), "08:03 taken back");
    runs.remove(last);
    readAll({"A", "B"});
    EXPECT_EQ(told("A"), "08:01") << "a record that is gone is still told of";
}

TEST_F(LastRunsTest, ReadsNoMoreThanTheJobsNeed) {
    add("A");
    add("A");
    add("B");
    lastRuns.look();
    EXPECT_TRUE(lastRuns.read(1, {"A", "B"}));
    EXPECT_FALSE(lastRuns.read(1, {"B"})) << "reads on though the job is known";
    EXPECT_EQ(told("A"), "never");
    EXPECT_FALSE(lastRuns.read(9, {"A", "B"}));
    EXPECT_EQ(told("A"), "08:02");
}

}  // namespace
}  // namespace kolmera::test
