#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <span>
#include <thread>

#include "cli/climachine.h"
#include "definitions/joboptions.h"
#include "import/preview/limitedrun.h"
#include "lang/keys/run.h"
#include "platform/tsv.h"
#include "support/world.h"
#include "support/worlds.h"

namespace kolmera::test {
namespace {

struct LimitCase {
    const char* fault;
    Limits limits;
    std::string_view told;  ///< behind the caption of the limit set last; empty: nothing is broken
};

// The company has A to D at 100. The file: A 100, B 115, C 300, D without a price, and E, which is new.
const LimitCase kCases[] = {
    {"a limit that is not set limits", {.changePercent = 1}, ""},
    {"a change of exactly the limit breaks it", {.largestChange = 200}, ""},
    {"the largest change is not looked for", {.largestChange = 199}, ": 200 (gränsen är 199)"},
    {"products that did not change do not count", {.changeShare = 74}, ": 75 (gränsen är 74)"},
    {"small changes count as large", {.changePercent = 15, .changeShare = 50}, ""},
    {"the default for large changes is not 10", {.changeShare = 50}, ": 75 (gränsen är 50)"},
    {"a price that becomes 0 is none", {.zeroPrices = 0}, ": 1 (gränsen är 0)"},
    {"new products count as found", {.unmatchedShare = 19}, ": 20 (gränsen är 19)"},
    {"too few records are enough", {.fewestRecords = 6}, ": 5 (gränsen är 6)"},
    {"exactly so many records are too few", {.fewestRecords = 5}, ""},
};

class LimitsWorld : public World {
  public:
    explicit LimitsWorld(const Limits& limits) {
        mask({.relations = {{1, "Nummer", 'S'}, {2, "Inpris"}}});
        setting("PDecInpris", std::int64_t{2});
        for (const char* number : {"A", "B", "C", "D"}) add("Produkt", {{"Nummer", number}, {"Inpris", 100.0}});
        priceFile("A\t100\r\nB\t115\r\nC\t300\r\nD\t\r\nE\t7\r\n");
        JobOptionsFile(data()).setLimits(job.name, limits);
    }
    [[nodiscard]] std::string said(ModuleKey key) const { return texts().ModulText(key); }
    [[nodiscard]] std::string question(const LimitCase& c) const {
        std::string caption;
        for (const LimitKind& kind : kLimits) {
            if (c.limits.*kind.value) caption = said(kind.text);
        }
        return said(text::limits::kBeyond) + "\r\n\r\n" + caption + std::string(c.told) + "\r\n\r\n" +
               said(text::limits::kRunAllTheSame);
    }
    [[nodiscard]] std::string prices() { return rows("Produkt", "Nummer, Inpris"); }
};

constexpr const char* kBefore = "A 100\nB 100\nC 100\nD 100\n";
constexpr const char* kAfter = "A 100\nB 115\nC 300\nD 0\nE 7\n";

TEST(Limits, AskBeforeTheyAreBroken) {
    for (const LimitCase& c : std::span(kCases).first(worlds(std::size(kCases), 3))) {
        for (const Answer answer : {Answer::No, Answer::Yes}) {
            SCOPED_TRACE(c.fault);
            LimitsWorld world(c.limits);
            const bool broken = !c.told.empty();
            if (broken) world.port.expect(world.question(c), world.said(text::limits::kBeyondTitle), answer);
            const RunSummary summary = world.runWithinLimits();
            const bool stays = broken && answer == Answer::No;
            EXPECT_EQ(world.prices(), stays ? kBefore : kAfter);
            EXPECT_EQ(summary.beyondLimits, stays);
            EXPECT_EQ(summary.completed, !stays);
            if (!broken) break;
        }
    }
}

TEST(Limits, ThatCannotBeReadLimitNothingAndAreToldOnce) {
    LimitsWorld world({.largestChange = 1});
    std::ofstream(world.data() / "KOLMERA.JSON") << R"({"jobs": {"Test": {"limits": 1}}})";
    world.port.expectBeginning(world.texts().ModulTextMed(text::limits::kUnreadable, kJobOptionsFile), "Kolmera");
    EXPECT_TRUE(world.runWithinLimits().completed);
    EXPECT_EQ(world.prices(), kAfter);
}

TEST(Limits, ThatCannotBeCheckedStopTheRunAndSaySo) {
    LimitsWorld world({.largestChange = 500});
    // SQLite takes names of 512 bytes: here that of the preview's company is short enough, its record's is not.
    const TemporaryFolder folder;
    std::filesystem::path deep = folder.path();
    while (deep.string().size() < 350) deep /= std::string(50, 'd');
    deep /= std::string(455 - deep.string().size(), 'd');
    std::filesystem::create_directories(deep);
    const char* before = std::getenv("TMPDIR");
    const std::string kept = before == nullptr ? "" : before;
    setenv("TMPDIR", deep.c_str(), 1);
    world.port.expectBeginning(world.said(text::limits::kNotChecked), world.said(text::run::kStoppedTitle));
    EXPECT_FALSE(world.runWithinLimits().completed);
    EXPECT_EQ(world.prices(), kBefore);
    before == nullptr ? unsetenv("TMPDIR") : setenv("TMPDIR", kept.c_str(), 1);
}

TEST(Limits, LeaveThePriceFileToTheRunWhenItIsAPipe) {
    LimitsWorld world({.largestChange = 500});
    const std::filesystem::path file = world.data() / "pris.txt";
    const std::string content = readWholeFile(file);
    std::filesystem::remove(file);
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    std::thread writer([&] { std::ofstream(file) << content; });
    const RunSummary summary = world.runWithinLimits();
    writer.join();
    EXPECT_EQ(world.prices(), kAfter);
    EXPECT_TRUE(summary.completed);
}

TEST(LimitsOfTheTerminal, StopARunWithACodeOfTheirOwn) {
    DemoMachine machine;
    const auto limits = [&](std::vector<std::string> line) {
        line.insert(line.begin(), {"limits", "(EIO)", "--data", machine.data()});
        return machine.run(line);
    };
    EXPECT_EQ(limits({"--set", "largest-change=12,5", "zero-prices=0"}), 0) << machine.err();
    EXPECT_EQ(limits({"--set", "zero-prices="}), 0);
    EXPECT_TRUE(machine.out().starts_with("largest-change=12,5 ")) << machine.out();
    EXPECT_EQ(machine.out().find("zero-prices"), std::string::npos);
    for (const char* wrong : {"largest=5", "largest-change", "largest-change=x", "largest-change=-1"})
        EXPECT_EQ(limits({"--set", wrong}), 2) << wrong;
    EXPECT_EQ(machine.runJob("(EIO)"), 4);
    EXPECT_NE(machine.err().find("(gränsen är 12,5)"), std::string::npos) << machine.err();
    EXPECT_EQ(machine.runJob("(EIO)", {"--force"}), 3);
    EXPECT_EQ(limits({"--clear"}), 0);
    EXPECT_EQ(machine.runJob("(EIO)"), 3);
}

}  // namespace
}  // namespace kolmera::test
