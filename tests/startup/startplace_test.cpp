#include "startup/startplace.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;

TEST(StartArguments, NameAFolderOrTheDemo) {
    const struct {
        const char* fault;
        std::vector<std::string> given;
        const char* read;
    } cases[] = {
        {"nothing is something", {}, " 0 "},
        {"a folder", {"/data/a/../b"}, "/data/b 0 "},
        {"the demo", {"--demo"}, " 1 "},
        {"the last of two folders wins unseen", {"/a", "/b"}, "/a 0 /b"},
        {"the demo and a folder", {"--demo", "/a"}, " 1 /a"},
        {"an unknown option taken for a folder", {"--data", "/a"}, "/a 0 --data"},
    };
    for (const auto& c : cases) {
        const StartArguments read = startArguments(c.given);
        EXPECT_EQ(fmt::format("{} {} {}", read.dataFolder.string(), read.demo ? 1 : 0, read.wrong), c.read) << c.fault;
    }
}

TEST(StartPlace, TheSuiteComesFirstThenWhatIsKnown) {
    TemporaryFolder folder;
    const auto made = [&](const char* name) {
        fs::create_directories(folder / name);
        return folder / name;
    };
    SettingsStore settings(folder / "windows.ini");
    RecentFolders recent(settings);
    const auto place = [&](const fs::path& program) {
        const StartPlace found = startPlace(program, recent);
        return fmt::format("{} {}", static_cast<int>(found.kind), found.folder.filename().string());
    };
    const std::string ofProgram = "0 ", asks = "2 ";
    EXPECT_EQ(place(made("bare")), asks);
    made("suite");
    folder.write("suite/DVKLIENT.INI", "");
    EXPECT_EQ(place(folder / "suite"), ofProgram) << "asked though the suite names its folder, or cannot";
    made("own");
    folder.write("own/Kolmera.txt", "");
    EXPECT_EQ(place(folder / "own"), ofProgram) << "asked though the program has data beside it";

    for (const char* name : {"a", "b", "a"}) recent.opened(made(name));
    EXPECT_EQ(place(folder / "bare"), "1 a");
    EXPECT_EQ(place(folder / "suite"), ofProgram) << "what was open last comes before the suite";
    EXPECT_EQ(RecentFolders(settings).all(), (std::vector<fs::path>{folder / "a", folder / "b"}));
    fs::remove(folder / "a");
    EXPECT_EQ(place(folder / "bare"), "1 b") << "a folder that is gone is opened";
    settings.set("Datamappar", "Mapp2", "relative");
    EXPECT_EQ(recent.all().size(), 0U) << "what is no absolute path is opened";
}

}  // namespace
}  // namespace kolmera::test
