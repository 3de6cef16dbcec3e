#include <fmt/format.h>
#include <gtest/gtest.h>

#include "faults/operations.h"
#include "history/runfolder.h"

namespace kolmera::test {
namespace {

const struct {
    Fault fault;
    const char* name;
    bool goesOn;  ///< no error at all: the call has to be carried on
} kFaults[] = {
    {Fault::DiskFull, "disk full", false},           {Fault::InputOutput, "one input/output error", false},
    {Fault::DiskBroken, "disk broken", false},       {Fault::Interrupted, "interrupted by a signal", true},
    {Fault::WrittenInPart, "written in part", true},
};

struct Expected {
    Content before, after;
    int calls;
    std::int64_t records;
};

std::int64_t recordsOf(const DataFolder& data) {
    return static_cast<std::int64_t>(RunFolder(data.path()).list().size());
}

Outcome carriedOut(const Operation& operation, const DataFolder& data, Fault fault = Fault::None, int at = 0) {
    return inChild({.folder = data.root(), .fault = fault, .at = at},
                   [&](std::ostream& told) { return operation.carryOut(data, told); });
}

/// Each failure is told and costs nothing that was there; the operation succeeds when it is done again.
TEST(FailingCall, IsToldAndLosesNothing) {
    const Operations operations;
    for (const Operation& operation : operations.all()) {
        SCOPED_TRACE(operation.name);
        const DataFolder whole(operation.before->path());
        const Outcome clean = carriedOut(operation, whole);
        ASSERT_EQ(clean.exitCode, 0) << clean.told;
        const Expected expected{Content(*operation.before), Content(whole), clean.calls, recordsOf(whole)};
        const int few = operation.company || operation.inBatches ? 5 : 1000;
        for (const auto& [fault, faultName, goesOn] : kFaults) {
            for (const int call : spread(clean.calls, trials(few, 1000))) {
                SCOPED_TRACE(fmt::format("{} at call {} of {}", faultName, call, clean.calls));
                const DataFolder data(operation.before->path());
                const Outcome outcome = carriedOut(operation, data, fault, call);
                EXPECT_TRUE(outcome.ended()) << "signal " << outcome.crashSignal;
                const Content content(data);
                EXPECT_EQ(content.differenceFrom(expected.before, expected.after, !operation.inBatches), "");
                if (outcome.exitCode == 0) {
                    EXPECT_EQ(content.differenceFrom(expected.after), "") << "success without the work";
                    EXPECT_TRUE(recordsOf(data) == expected.records || outcome.told != clean.told)
                        << "a record is missing without a word";
                } else {
                    EXPECT_FALSE(goesOn && !operation.company && !operation.byLibrary) << outcome.told;
                    EXPECT_NE(outcome.told, "");
                }
                if (operation.inBatches && std::string_view(operation.name).starts_with("run")) {
                    EXPECT_GE(operations.world().batches(content.rows, expected.after.rows,
                                                         operation.name == std::string("run --empty")),
                              0);
                }
                if (outcome.exitCode == 0 || (!operation.inBatches && content.differenceFrom(expected.before) != "")) {
                    if (HasFailure()) break;
                    continue;  // it has been done
                }
                const Outcome again = carriedOut(operation, data);
                EXPECT_EQ(again.exitCode, 0) << again.told;
                EXPECT_EQ(Content(data).differenceFrom(expected.after), "") << "done again";
                if (HasFailure()) break;
            }
        }
    }
}

}  // namespace
}  // namespace kolmera::test
