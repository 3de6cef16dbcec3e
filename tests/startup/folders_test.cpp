#include "startup/folders.h"

#include <gtest/gtest.h>

namespace kolmera::test {
namespace {

TEST(Folders, EndInASeparator) {
    const struct {
        const char* fault;
        std::string path, expected;
    } cases[] = {
        {"trailing blank before the separator", "C:\\data ", "C:\\data\\"},
        {"slash not taken for a separator", "C:/data/", "C:/data/"},
        {"blank behind the separator removed", "C:\\data\\ ", "C:\\data\\ "},
        {"leading blanks removed", " C:\\data", " C:\\data\\"},
        {"path of this system spelt the other way", "/srv/dorvik", "/srv/dorvik/"},
        {"empty path", "", "\\"},
    };
    for (const auto& c : cases) {
        std::string path = c.path;
        LäggTillSnedstreck(path);
        EXPECT_EQ(path, c.expected) << c.fault;
    }
}

TEST(Folders, SharePathsGoThroughADrive) {
    const DriveMap drives({{'C', "/c", DriveKind::Fixed, "\\\\srv\\data"},
                           {'W', "/w", DriveKind::Network, ""},
                           {'X', "/x", DriveKind::Network, "\\\\srv\\data"},
                           {'Y', "/y", DriveKind::Network, "\\\\srv\\data\\prog"}});
    const struct {
        const char* fault;
        std::string root, share;
    } names[] = {
        {"share of a network drive", "X:\\", "\\\\srv\\data\\"},
        {"rest of the root lost", "x:\\prog", "\\\\srv\\data\\prog"},
        {"fixed drive has a share", "C:\\", "C:\\"},
        {"drive without a share", "W:\\", "W:\\"},
        {"unknown drive", "Q:\\", "Q:\\"},
    };
    for (const auto& c : names) EXPECT_EQ(NätverksNamn(c.root, drives), c.share) << c.fault;

    const struct {
        const char* fault;
        std::string path, expected;
    } paths[] = {
        {"not mapped, or not through the first drive", "\\\\srv\\data\\prog\\", "X:\\prog\\"},
        {"letter case counts when searching, or not when replacing", "\\\\SRV\\data\\prog\\", "\\\\SRV\\data\\prog\\"},
        {"share of a longer name", "\\\\srv\\database\\", ""},
        {"another server", "\\\\annan\\data\\", ""},
    };
    for (const auto& c : paths) EXPECT_EQ(TillUNCEnhet(c.path, drives), c.expected) << c.fault;
}

}  // namespace
}  // namespace kolmera::test
