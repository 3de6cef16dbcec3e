#include <fmt/format.h>
#include <gtest/gtest.h>

#include <set>

#include "faults/disk.h"
#include "faults/operations.h"
#include "history/runfolder.h"

namespace kolmera::test {
namespace {

constexpr int kSpeed = 1000;  // every batch is committed by itself

/// An operation that is carried out once while its calls are recorded.
struct Recorded {
    const Operation& operation;
    DataFolder done{operation.before->path()};
    Disk disk{done.root()};
    std::vector<RecordedCall> calls = recorded(
        done.root(), [&](std::ostream& told) { return operation.carryOut(done, told); }, kSpeed);
    Content before{*operation.before}, after{done};
};

void expectOldOrNew(const Recorded& recorded, const Operations& operations, const DataFolder& data, bool returned) {
    const Operation& operation = recorded.operation;
    const Content content(data);
    EXPECT_EQ(content.differenceFrom(recorded.before, recorded.after, !operation.inBatches), "");
    if (returned) {
        EXPECT_EQ(content.differenceFrom(recorded.after), "") << "done, and lost";
    }
    const std::string_view name = operation.name;
    if (!name.starts_with("run")) return;
    EXPECT_GE(operations.world().batches(content.rows, recorded.after.rows, name == "run --empty"), 0)
        << "half a batch";
    std::int64_t unreadable = 0;
    const RunFolder runs(data.path());
    for (const RunHeader& run : runs.list(&unreadable)) {
        RecordReader(runs.file(run.id)).forEachChange([](const RowChange& /*change*/) { return true; });
    }
    EXPECT_TRUE(!returned || !runs.list().empty()) << "a run that is done has lost its record";
}

/// The power may go between any two calls.
TEST(PowerLoss, LeavesTheOldOrTheNew) {
    const Operations operations;
    std::mt19937 chance(1);
    for (const Operation& operation : operations.all()) {
        SCOPED_TRACE(operation.name);
        Recorded recorded{operation};
        ASSERT_FALSE(recorded.calls.empty());
        const int some = trials(1, operation.company ? 5 : 20);
        const auto every = static_cast<std::size_t>(operation.company ? trials(16, 1) : 1);
        std::set<std::size_t> seen;
        for (std::size_t call = 0; call < recorded.calls.size(); ++call) {
            recorded.disk.apply(recorded.calls[call]);
            const bool last = call + 1 == recorded.calls.size();
            SCOPED_TRACE(fmt::format("behind call {} of {}", call + 1, recorded.calls.size()));
            if (seen.insert(recorded.disk.hash()).second || last) {
                const DataFolder data;
                recorded.disk.writeTo(data.root());
                expectOldOrNew(recorded, operations, data, last);
            }
            for (int time = 0; time < some && (call % every == 0 || last); ++time) {
                const DataFolder data;
                recorded.disk.writeTo(data.root(), &chance);
                expectOldOrNew(recorded, operations, data, last);
            }
            if (HasFailure()) break;
        }
    }
}

}  // namespace
}  // namespace kolmera::test
