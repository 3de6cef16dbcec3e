#include "import/preview/preview.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "cli/climachine.h"
#include "definitions/jobfile.h"
#include "import/preview/workplace.h"
#include "lang/keys/prismain.h"
#include "lang/keys/shared.h"
#include "platform/tsv.h"
#include "support/companyrows.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;

/// Every file of a folder with its content, every folder with nothing; hidden ones too.
std::map<std::string, std::string> contentOf(const fs::path& folder) {
    std::map<std::string, std::string> content;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        struct stat seen {};
        EXPECT_EQ(lstat(entry.path().c_str(), &seen), 0);
        content[entry.path().string()] =
            std::to_string(seen.st_mode) + (entry.is_regular_file() ? readWholeFile(entry.path()) : "");
    }
    return content;
}

/// Previews work in a folder of their own.
class PreviewOfAFile : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        static const TemporaryFolder folder;
        setenv("TMPDIR", folder.path().c_str(), 1);
    }
    void TearDown() override {
        for (const auto& entry : fs::directory_iterator(std::getenv("TMPDIR")))
            EXPECT_FALSE(entry.path().filename().string().starts_with(".kolmera-preview")) << entry.path();
    }
};

std::string withoutLastLines(const std::string& text) { return text.substr(0, text.find("\nSekunder")); }

TEST_F(PreviewOfAFile, SaysWhatTheRunWillDoAndLeavesEveryFileAsItWas) {
    DemoMachine machine;
    for (const Job& job : JobFile(machine.data()).all()) {
        SCOPED_TRACE(job.name);
        for (const std::vector<std::string>& options : {std::vector<std::string>{"--empty"}, {}}) {
            const auto before = contentOf(machine.data());
            std::vector<std::string> line = {"preview", job.name, "--data", machine.data()};
            line.insert(line.end(), options.begin(), options.end());
            const int code = machine.run(line);
            EXPECT_EQ(contentOf(machine.data()), before);
            if (!options.empty()) continue;
            const std::string previewed = withoutLastLines(machine.out());
            EXPECT_EQ(machine.runJob(job.name, {"--force"}), code);  // one of them has limits
            EXPECT_EQ(withoutLastLines(machine.out()), previewed);
        }
    }
}

struct CommandCase {
    const char* fault;
    std::vector<std::string> options;
    bool runs, told;
};

TEST_F(PreviewOfAFile, RunsTheCommandOnlyWhenTold) {
    const CommandCase cases[] = {{"the command ran unasked", {}, false, true},
                                 {"told again what the user has chosen", {"--no-prepare"}, false, false},
                                 {"the command did not run", {"--prepare"}, true, false}};
    DemoMachine machine;
    JobFile jobs(machine.data());
    Job job = *jobs.find("(EIO)");
    job.command = "touch " + machine.file("ran");
    jobs.save(job);
    machine.programFolder = machine.data();
    for (const CommandCase& c : cases) {
        SCOPED_TRACE(c.fault);
        fs::remove(machine.file("ran"));
        std::vector<std::string> line = {"preview", "(EIO)", "--data", machine.data()};
        line.insert(line.end(), c.options.begin(), c.options.end());
        machine.run(line);
        EXPECT_EQ(fs::exists(machine.file("ran")), c.runs);
        EXPECT_EQ(machine.err().find("--prepare") != std::string::npos, c.told) << machine.err();
    }
}

TEST_F(PreviewOfAFile, GivesItsChangesAsJsonAndAsAFile) {
    DemoMachine machine;
    EXPECT_EQ(machine.run({"preview", "(EIO)", "--json", "--data", machine.data()}), 3);
    const auto shown = nlohmann::json::parse(machine.out());  // nothing else may be said there
    EXPECT_GT(shown["changes"].size(), 200U);
    EXPECT_EQ(machine.run({"preview", "(EIO)", "--save", machine.file("changes.tsv"), "--data", machine.data()}), 3);
    EXPECT_NE(readWholeFile(machine.file("changes.tsv")).find("0400203"), std::string::npos);
    EXPECT_EQ(machine.run({"preview", "Ingen", "--json", "--data", machine.data()}), 1);
    EXPECT_EQ(machine.out(), "");
}

/// What stops a run stops its preview before it has changed anything, and says the same.
TEST_F(PreviewOfAFile, StopsWhereARunStops) {
    World world;
    world.mask({.relations = {{1, "Nummer", 'S'}, {2, "Inpris"}}});
    const std::string title = world.text(text::prismain::kCannotFindPriceFile);
    world.port.expect(title + " pris.txt.", title);
    EXPECT_FALSE(world.preview().summary.completed);

    world.priceFile("1\t2\r\n");
    fs::remove(world.company());
    world.port.expectBeginning("", world.texts().ResText(text::shared::kCannotOpenCompany));
    EXPECT_FALSE(world.preview().summary.completed);
}

TEST_F(PreviewOfAFile, SeesWhatOthersHaveCommittedButNotKept) {
    World world;
    world.mask({.relations = {{1, "Nummer", 'S'}, {2, "Inpris"}}});
    world.priceFile("A\t1\r\nB\t2\r\n");
    const auto other = world.open();
    other->execute("INSERT INTO Produkt (Nummer) VALUES ('A')");  // in the log, which the other session keeps open
    const RunSummary seen = world.preview().summary;
    EXPECT_EQ(seen.changed, 1);
    EXPECT_EQ(seen.newProducts, 1);
    other->begin();
    other->execute("UPDATE Produkt SET Inpris = 5");  // others keep the company locked
    EXPECT_EQ(world.preview().summary.changed, 1);
    other->rollback();
    EXPECT_EQ(world.rows("Produkt", "Nummer, Inpris"), "A 0\n");
}

TEST_F(PreviewOfAFile, LooksForRoomAndSweepsWhatAKilledProgramLeft) {
    const TemporaryFolder full, free;
    const std::vector<WorkPlace> places = {{full.path(), 10}, {"/nowhere", 1000}, {free.path(), 1000}};
    EXPECT_EQ(makeWorkFolder(places, 2000), nullptr);
    const auto folder = makeWorkFolder(places, 100);
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(folder->path().parent_path(), free.path());
    EXPECT_EQ(fs::status(folder->path()).permissions(), fs::perms::owner_all);

    const fs::path left = full / ".kolmera-preview-AAAAAA";
    fs::create_directory(left);
    std::ofstream(left / "company") << "rows";
    const fs::path link = full / ".kolmera-preview-BBBBBB";
    fs::create_directory_symlink(free.path(), link);
    const auto next = makeWorkFolder(places, 100);
    EXPECT_FALSE(fs::exists(left));
    EXPECT_TRUE(fs::exists(link));
    EXPECT_TRUE(fs::exists(folder->path())) << "a folder in which somebody works was swept";
}

}  // namespace
}  // namespace kolmera::test
