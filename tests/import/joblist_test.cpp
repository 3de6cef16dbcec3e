#include "definitions/joblist.h"

#include <gtest/gtest.h>

#include "lang/keys/prismain.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

void saveJob(const World& world, std::string name, std::string priceFile, std::string kind) {
    Job job;
    job.name = std::move(name);
    job.priceFile = std::move(priceFile);
    job.kind = std::move(kind);
    JobFile(world.data()).save(job);
}

TEST(JobList, StatesOfThePriceFile) {
    World world;
    world.rawPriceFile("x");
    std::filesystem::create_directory(world.data() / "mapp");
    const DriveMap drives({{'D', world.data(), DriveKind::Cd}, {'E', world.data(), DriveKind::Removable}});
    const std::string missing = world.text(text::prismain::kFileMissing),
                      removable = world.text(text::prismain::kRemovable), cd = world.text(text::prismain::kCd);
    const std::string today = world.state.locale.formatDate(Date::today());
    const struct {
        const char *fault, *priceFile;
        const std::string& state;
    } cases[] = {
        {"a file in the data folder not found", "pris.txt", today},
        {"no path found as the folder it is sought in", "", missing},
        {"a folder taken for a file", "mapp", missing},
        {"a missing file dated", "borta.txt", missing},
        {"the file on a CD looked for", "D:\\pris.txt", cd},
        {"the empty CD drive looked into", "d:\\borta.txt", cd},
        {"the file on a removable drive looked for", "E:pris.txt", removable},
        {"a drive that does not exist", "Q:\\pris.txt", missing},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        saveJob(world, "Test", c.priceFile, "");
        const auto rows = jobRows(world.texts(), {.drives = drives,
                                                  .dataFolder = world.data(),
                                                  .programFolder = world.program(),
                                                  .locale = world.state.locale});
        EXPECT_EQ(rows.back().fileState, c.state);
    }
}

TEST(JobList, TheKindFollowsTheLetterOnly) {
    World world;
    saveJob(world, "(FINFO)", "", "");
    saveJob(world, "Test", "", "F");
    const auto rows = jobRows(world.texts(), {.drives = world.state.drives,
                                              .dataFolder = world.data(),
                                              .programFolder = world.program(),
                                              .locale = world.state.locale});
    ASSERT_GE(rows.size(), 2U);
    const JobRow& byName = rows[rows.size() - 2];
    EXPECT_EQ(byName.kindText, world.text(text::prismain::kMask));
    EXPECT_FALSE(byName.tradeFormat);
    EXPECT_EQ(rows.back().kindText, world.text(text::prismain::kTradeFormat));
    EXPECT_TRUE(rows.back().tradeFormat);
}

}  // namespace
}  // namespace kolmera::test
