#include "import/run/runpace.h"

#include "import/run/runresult.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

using Time = RunPace::Time;

class PaceTest : public testing::Test {
  protected:
    std::string text() { return pace.text(world.texts(), world.state.locale); }

    World world;
    RunPace pace;
};

TEST_F(PaceTest, TellsPartRateAndTimeLeft) {
    EXPECT_TRUE(pace.unknown()) << "a bar at 0 while nobody knows how long the preparation takes";
    pace.at(100, 1000, 10, Time(0));
    EXPECT_EQ(text(), "10 %") << "a rate out of nothing";
    pace.at(400, 1000, 6010, Time(3000));
    EXPECT_EQ(text(),
              "40 %, 2\u00A0"
              "000 poster/s, 7 s kvar")
        << "what was read before the measuring began counts";
    pace.at(1000, 1000, 9000, Time(9000));
    EXPECT_EQ(text(), "100 %, 998 poster/s");
}

TEST_F(PaceTest, MeasuresEachStepByItself) {
    pace.at(0, 1000, -1, Time(0));
    pace.at(900, 1000, -1, Time(9000));
    EXPECT_EQ(text(), "90 %, 2 s kvar") << "records of a file that is still being converted";
    pace.at(0, 5000000, 0, Time(10000));
    pace.at(10000, 5000000, 40, Time(20000));
    EXPECT_EQ(text(), "0 %, 4 poster/s, 1 tim 23 min kvar");
    pace.begin();
    EXPECT_TRUE(pace.unknown());
}

TEST(RunResult, TellsWhatToLookInto) {
    World world;
    RunSummary summary;
    EXPECT_TRUE(runResult(world.texts(), world.state.locale, "Jobb", summary, 1).empty())
        << "figures of a run that never came to its file";
    summary.completed = true;
    summary.records = summary.used = 1200;
    summary.newProducts = 7;
    RunResult result = runResult(world.texts(), world.state.locale, "Jobb", summary, 3.21);
    EXPECT_TRUE(result.good);
    EXPECT_EQ(result.line(),
              "Jobb: Klar, 3,2 s. Lästa poster 1\u00A0"
              "200, Nya produkter 7, Ändrade produkter 0, Överhoppade poster 0, "
              "Nollställda värden 0, Anmärkningar 0");
    summary.readAsOneLine = true;
    summary.deleted.products = 5;
    result = runResult(world.texts(), world.state.locale, "Jobb", summary, 0);
    EXPECT_FALSE(result.good);
    EXPECT_TRUE(result.line().starts_with("Jobb: Klar, med anmärkningar, 0,0 s."));
    EXPECT_NE(result.line().find("Borttagna produkter 5, "), std::string::npos);
    EXPECT_TRUE(result.figures.back().remarkable);
    summary.cancelled = true;
    EXPECT_TRUE(runResult(world.texts(), world.state.locale, "J", summary, 0).heading.starts_with("J: Avbruten"));
}

}  // namespace
}  // namespace kolmera::test
