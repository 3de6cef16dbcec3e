#include "platform/settings.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/error.h"
#include "platform/restrictedpath.h"
#include "support/temporaryfolder.h"

namespace kolmera {
namespace {

TEST(Settings, ReadsWhatPeopleWrite) {
    const test::TemporaryFolder folder;
    folder.write("settings.ini",
                 "\xEF\xBB\xBF[start]\r\n lang = EN \r\n;Lang=SE\r\n# x=y\r\n\r\n[ Sökvägar ]\nSERVER=/srv/a=b\n"
                 "no value\n[Start]\nKolmera=1");
    const SettingsStore store(folder / "settings.ini");
    EXPECT_EQ(store.get("Start", "Lang", "SE"), "EN");
    EXPECT_EQ(store.get("START", "kolmera"), "1") << "a section that stands twice";
    EXPECT_EQ(store.get("sökvägar", "Server"), "/srv/a=b");
    EXPECT_EQ(store.get("Start", "Server", "none"), "none");
    EXPECT_EQ(store.section("SÖKVÄGAR").size(), 1U);
    EXPECT_EQ(store.section("Start").size(), 2U) << "a comment was taken for a key";
    EXPECT_EQ(SettingsStore(folder / "missing.ini").get("Start", "Lang", "SE"), "SE");
}

TEST(Settings, SetChangesOneLine) {
    const struct {
        const char* fault;
        const char *before, *after;
    } cases[] = {
        {"a missing file", "", "[Start]\nLang=EN\n"},
        {"other lines lost", "; mine\n[Start]\nx\nLANG=SE\n\n[Other]\na=1\n",
         "; mine\n[Start]\nx\nLang=EN\n\n[Other]\na=1\n"},
        {"the key of another section", "[Other]\nLang=SE\n", "[Other]\nLang=SE\n[Start]\nLang=EN\n"},
        {"a new key behind the blank line", "[start]\na=1\n\n[Other]\n", "[start]\na=1\nLang=EN\n\n[Other]\n"},
        {"a last line without end", "[Start]", "[Start]\nLang=EN\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const test::TemporaryFolder folder;
        folder.write("settings.ini", c.before);
        SettingsStore store(folder / "settings.ini");
        store.set("Start", "Lang", "EN");
        EXPECT_EQ(folder.read("settings.ini"), c.after);
        EXPECT_EQ(store.get("Start", "Lang"), "EN");
    }
}

TEST(Settings, SetMakesFoldersAndKeepsWhatOthersWrote) {
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder / "config/Dorvik/settings.ini";
    SettingsStore first(file);
    SettingsStore second(file);
    first.set("Start", "Lang", "EN");
    second.set("Start", "Kolmera", "1");
    EXPECT_EQ(SettingsStore(file).get("Start", "Lang"), "EN");
    EXPECT_EQ(second.get("Start", "Lang"), "EN");
    EXPECT_THROW(first.set("Start", "Lang", "a\nb=c"), PlatformError);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file.parent_path()), {}), 1) << "temporary files stay";
}

TEST(Settings, AFailedSetLeavesTheFileAndTheStore) {
    const test::TemporaryFolder folder;
    folder.write("settings.ini", "[Start]\nLang=SE\n");
    SettingsStore store(folder / "settings.ini");
    {
        const test::RestrictedPath readOnly(folder.path(), 0555);
        EXPECT_THROW(store.set("Start", "Lang", "EN"), PlatformError);
    }
    EXPECT_EQ(store.get("Start", "Lang"), "SE");
    EXPECT_EQ(folder.read("settings.ini"), "[Start]\nLang=SE\n");

    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    {
        const test::RestrictedPath unreadable(folder / "settings.ini", 0);
        EXPECT_THROW(SettingsStore(folder / "settings.ini").set("Start", "Lang", "EN"), PlatformError);
    }
    EXPECT_EQ(folder.read("settings.ini"), "[Start]\nLang=SE\n") << "an unreadable file was taken for an empty one";
}

TEST(Settings, SetKeepsALink) {
    const test::TemporaryFolder folder;
    folder.write("real.ini", "");
    std::filesystem::create_symlink("real.ini", folder / "settings.ini");
    SettingsStore(folder / "settings.ini").set("Start", "Lang", "EN");
    EXPECT_EQ(folder.read("real.ini"), "[Start]\nLang=EN\n");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "settings.ini"));
}

TEST(Settings, UserFile) {
    setenv("HOME", "/home/eva", 1);
    setenv("XDG_CONFIG_HOME", "/conf", 1);
    EXPECT_EQ(SettingsStore::userFile(), "/conf/Dorvik/settings.ini");
    setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ(SettingsStore::userFile(), "/home/eva/.config/Dorvik/settings.ini");
}

}  // namespace
}  // namespace kolmera
