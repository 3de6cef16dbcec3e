#include "platform/paths.h"

#include <gtest/gtest.h>

#include "support/temporaryfolder.h"

namespace kolmera {
namespace {

namespace fs = std::filesystem;

struct PathsTest : testing::Test {
    test::TemporaryFolder folder;
    DriveMap drives{{{'x', folder / "srv", DriveKind::Network, R"(\\srv\data)"}, {'C', folder / "c"}}};

    PathsTest() {
        fs::create_directories(folder / "srv/Priser/Åkerö");
        fs::create_directories(folder / "c");
        folder.write("srv/Priser/Åkerö/LISTA.TXT", "");
        folder.write("srv/Priser/lista.txt", "");
        for (const char* name : {"lISTA.txt", "listA.txt", "LiSTA.txt", "Lista.txt", "LiStA.txt", "lista.TXt"}) {
            folder.write(std::string("srv/Priser/") + name, "");
        }
    }
};

TEST_F(PathsTest, Resolves) {
    const std::string top = folder.path();
    const struct {
        const char* fault;
        std::string path, expected;
    } cases[] = {
        {"letter case of the drive and the folders", R"(X:\PRISER\åKERÖ\lista.TXT)",
         top + "/srv/Priser/Åkerö/LISTA.TXT"},
        {"the exact name passed over", R"(X:\priser\lista.txt)", top + "/srv/Priser/lista.txt"},
        {"several names: the order of the folder", R"(X:\priser\LISTA.txt)", top + "/srv/Priser/LiSTA.txt"},
        {"new names changed", R"(X:\priser\Ny Mapp\Ny.txt)", top + "/srv/Priser/Ny Mapp/Ny.txt"},
        {"slashes behind a drive", "x:/priser//.\\åkerö\\", top + "/srv/Priser/Åkerö"},
        {"a drive without folder", "C:", top + "/c"},
        {"no backslash behind the drive", "X:priser", top + "/srv/Priser"},
        {"out of the drive's root", R"(X:\..\priser\..\..\c)", top + "/srv/c"},
        {"an unknown drive", R"(Q:\a\b)", "/Q:/a/b"},
        {"a share path for a path of this system", R"(\\srv\data\a)", R"(/\\srv\data\a)"},
        {"a plain path", top + "/srv/priser/Lista.txt", top + "/srv/Priser/Lista.txt"},
        {"a plain path with a suite's file name behind it", top + R"(/srv\priser\Lista.txt )",
         top + "/srv/Priser/Lista.txt"},
        {"relative", R"(priser\åkerö)", top + "/srv/Priser/Åkerö"},
        {"relative upwards", R"(..\c)", top + "/srv/../c"},
        {"nothing", "", top + "/srv"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(drives.resolve(c.path, folder / "srv"), c.expected);
    }
    EXPECT_EQ(drives.resolve("nowhere.txt", {}), "/nowhere.txt") << "the current folder counted";
}

TEST_F(PathsTest, FindsNothingInWhatIsNoFolder) {
    EXPECT_EQ(findWithoutCase(folder / "none", "a"), folder / "none/a");
    EXPECT_EQ(findWithoutCase(folder / "srv/Priser/lista.txt", "a"), folder / "srv/Priser/lista.txt/a");
}

TEST_F(PathsTest, DrivesFromSettings) {
    folder.write("settings.ini",
                 "[Enheter]\nx = /srv/data|Network|\\\\srv\\data\nC:=/data\nA=/mnt/a|removable\nD=/cd|cd\nE=/e|odd\n"
                 "F=relative|fixed\nname=/x\n");
    const DriveMap map = DriveMap::fromSettings(SettingsStore(folder / "settings.ini"));
    EXPECT_EQ(map.roots(), (std::vector<std::string>{R"(A:\)", R"(C:\)", R"(D:\)", R"(E:\)", R"(X:\)"}));
    EXPECT_EQ(map.kind("x:"), DriveKind::Network);
    EXPECT_EQ(map.kind(R"(C:\)"), DriveKind::Fixed);
    EXPECT_EQ(map.kind("A:"), DriveKind::Removable);
    EXPECT_EQ(map.kind("D:"), DriveKind::Cd);
    EXPECT_EQ(map.kind("E:"), DriveKind::Unknown);
    EXPECT_EQ(map.kind("F:"), DriveKind::Unknown);
    EXPECT_EQ(map.drive(R"(X:\a)")->share, R"(\\srv\data)");
    EXPECT_FALSE(map.drive("X"));
    EXPECT_FALSE(map.drive(R"(\\srv\data)"));
}

TEST(NetworkFileSystem, AsksForTheNearestFolderThatExists) {
    EXPECT_FALSE(onNetworkFileSystem("/proc/none/file"));
    EXPECT_TRUE(onNetworkFileSystem("")) << "what the system does not tell is not safe";
}

}  // namespace
}  // namespace kolmera
