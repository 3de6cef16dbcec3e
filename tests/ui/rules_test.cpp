#include <gtest/gtest.h>

#include "support/temporaryfolder.h"
#include "ui/rules/cregtool.h"
#include "ui/rules/listrows.h"
#include "ui/rules/spinsteps.h"
#include "ui/rules/theme.h"

namespace kolmera {
namespace {

TEST(ListRows, FyllUtTextAlignsNumbers) {
    const struct {
        const char* fault;
        const char* text;
        int width, blanks;
    } cases[] = {
        {"one blank for a digit", "5,00", 10, 12},      {"minus sign not evened out", "-5,00", 10, 11},
        {"a full text filled up", "1234567890", 10, 0}, {"a longer text cut", "12345678901", 10, 0},
        {"bytes counted for characters", "åäö", 4, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(FyllUtText(c.text, c.width), c.text + std::string(static_cast<std::size_t>(c.blanks), ' '));
    }
}

TEST(ListRows, CodeIsBehindTheFirstTab) {
    EXPECT_EQ(codeAfterTab("Demo\t FTG1.MDB "), "FTG1.MDB");
    EXPECT_EQ(codeAfterTab("a\tb\tc"), "b\tc");
    EXPECT_EQ(codeAfterTab("\t"), "");
    EXPECT_EQ(codeAfterTab("FTG1.MDB"), std::nullopt);
}

TEST(ListRows, ARowOfAServerCompanyStandsForItsName) {
    const std::vector<std::string> rows = {"SQL\tFTG1.MDB", "sql;Bolaget \tPå servern", "SQL; B\tSQL;A", "SQL;A"};
    const struct {
        const char* fault;
        const char* code;
        int row;
    } cases[] = {
        {"a file company of such a name", "ftg1.mdb", 0}, {"the prefix in lower case", " SQL;bolaget ", 1},
        {"the name behind the tab counts", "SQL;A", -1},  {"the description counts", "På servern", -1},
        {"the name in front of the tab", "sql; b", 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(rowOfCode(rows, c.code), c.row);
    }
}

TEST(Theme, BlandaFärgerDropsHalves) { EXPECT_EQ(BlandaFärger({0, 255, 10}, {1, 255, 20}), (Colour{0, 255, 15})); }

class ThemeTest : public testing::Test {
  protected:
    Theme choose(const DesktopFacts& desktop, const std::string& active, const std::string& colourName) {
        const std::string key = R"([Software\Microsoft\Windows\CurrentVersion\ThemeManager])";
        folder.write("settings.ini", key + "\nThemeActive=" + active + "\nColorName=" + colourName + "\n");
        const SettingsStore settings(folder / "settings.ini");
        cRegTool registry(settings);
        return InitXP(desktop, registry);
    }
    static DesktopFacts windows(int major, int minor, bool manifest) {
        return {.windowsNt = true,
                .major = major,
                .minor = minor,
                .manifestExists = manifest,
                .activeCaption = {1, 2, 3},
                .systemColour = [](SystemColour colour) {
                    return Colour{static_cast<std::uint8_t>(colour), 0, 0};
                }};
    }
    test::TemporaryFolder folder;
};

TEST_F(ThemeTest, XPStilNeedsVersionManifestAndTheme) {
    const struct {
        const char* fault;
        bool nt;
        int major, minor;
        bool manifest;
        const char* active;
        bool xpStil;
    } cases[] = {
        {"not active on 5.1", true, 5, 1, true, "1", true},
        {"active on 5.0", true, 5, 0, true, "1", false},
        {"not active on 6.0", true, 6, 0, true, "1", true},
        {"active without a manifest", true, 5, 1, false, "1", false},
        {"active without a theme", true, 5, 1, true, "0", false},
        {"active on another platform", false, 6, 1, true, "1", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        DesktopFacts desktop = windows(c.major, c.minor, c.manifest);
        desktop.windowsNt = c.nt;
        EXPECT_EQ(choose(desktop, c.active, "NormalColor").XPStil, c.xpStil);
    }
}

TEST_F(ThemeTest, SchemeIsChosenByNameOrCaption) {
    const struct {
        const char* fault;
        int major;
        const char* active;
        const char* name;
        Colour caption;
        Colour colour1, colour5;
        std::int16_t picture1;
    } cases[] = {
        {"blue on XP", 5, "1", "NormalColor", {}, {127, 157, 185}, {11, 0, 0}, 201},
        {"blue on Vista", 6, "1", "NormalColor", {}, {127, 157, 185}, {152, 178, 207}, 220},
        {"olive by name", 5, "1", "HomeStead", {}, {164, 185, 127}, {164, 185, 127}, 202},
        {"silver by name", 5, "1", "Metallic", {}, {165, 172, 178}, {165, 172, 178}, 203},
        {"silver by caption", 5, "0", "", {192, 192, 192}, {165, 172, 178}, {165, 172, 178}, 203},
        {"name read without a theme", 5, "0", "HomeStead", {}, {3, 0, 0}, {3, 0, 0}, 203},
        {"blue caption tested behind olive's name",
         5,
         "1",
         "HomeStead",
         {0, 84, 227},
         {127, 157, 185},
         {11, 0, 0},
         201},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        DesktopFacts desktop = windows(c.major, 1, true);
        desktop.activeCaption = c.caption;
        const Theme theme = choose(desktop, c.active, c.name);
        EXPECT_EQ(theme.colour(1), c.colour1);
        EXPECT_EQ(theme.colour(5), c.colour5);
        EXPECT_EQ(theme.picture(1), c.picture1);
    }
    DesktopFacts further = windows(6, 0, true);
    further.furtherDisplayOption = true;
    EXPECT_EQ(choose(further, "1", "NormalColor").picture(1), 222);
}

TEST(RegTool, ReadsKeysValuesAndSubkeys) {
    const test::TemporaryFolder folder;
    folder.write("settings.ini",
                 "[Dorvik]\nA=1\nB=two words\n[Dorvik\\Start]\nLang=EN\n[Dorvik\\Start\\X]\nC=\n[Dorvik2]\nD=3\n");
    const SettingsStore settings(folder / "settings.ini");
    cRegTool registry(settings);
    EXPECT_EQ(registry.GetRegValue("HKEY_CURRENT_USER", "dorvik\\start\\lang"), "EN");
    EXPECT_EQ(registry.GetRegValue("HKEY_LOCAL_MACHINE", "Dorvik\\A"), "");
    EXPECT_EQ(registry.GetRegValue("HKEY_CURRENT_USER", "Dorvik\\Q"), "");
    EXPECT_EQ(registry.GetRegValue("HKEY_CURRENT_USER", "A"), "");
    ASSERT_TRUE(registry.OpenRegKey("HKEY_CURRENT_USER", "Dorvik\\"));
    EXPECT_EQ(registry.EnumRegValues(), (std::vector<std::string>{"A", "B"}));
    EXPECT_EQ(registry.EnumRegKeys(), std::vector<std::string>{"START"}) << "a key once, a neighbour not at all";
    EXPECT_FALSE(registry.OpenRegKey("HKEY_CURRENT_USER", "Q"));
    EXPECT_TRUE(registry.EnumRegValues().empty());
}

TEST(SpinSteps, StepsAndStopsAtTheBounds) {
    const struct {
        const char* fault;
        std::int16_t type;
        float min, max, increment;
        const char* mask;
        const char* text;
        bool up;
        const char* stepped;
    } cases[] = {
        {"number up", 0, 1, 10, 1, "", "4", true, "5"},
        {"number down in halves", 0, 0, 10, 0.5F, "", "4,5", false, "4"},
        {"above the maximum", 0, 1, 10, 1, "", "10", true, "10"},
        {"below the minimum", 0, 1, 10, 1, "", "1", false, "1"},
        {"a text that is no number", 0, 1, 10, 1, "", "abc", true, "1"},
        {"decimals of the mask", 0, -5, 10, 1, "0.00", "0,5", false, "-0,50"},
        {"leading zeros of the mask", 0, 1, 10, 1, "000", "4", true, "005"},
        {"minutes over the hour", 1, 0, 1, 5, "", "9:58", true, "10:03"},
        {"past midnight", 1, 0, 1, 30, "", "23:45", true, "23:59"},
        {"before midnight", 1, 0, 1, 30, "", "00:15", false, "00:00"},
        {"no time: from the minimum", 1, 0.25F, 1, 15, "", "25:00", true, "06:15"},
        {"minutes of one digit taken", 1, 0, 1, 15, "", "9:5", true, "00:15"},
        {"letter up", 2, 65, 90, 1, "", "b", true, "C"},
        {"letter past the last", 2, 65, 90, 1, "", "Z", true, "Z"},
        {"letter before the first", 2, 65, 90, 1, "", "a", false, "A"},
        {"a letter of two bytes", 2, 65, 255, 1, "", "ä", true, "Å"},
        {"no letter: from the minimum", 2, 65, 90, 1, "", "", false, "A"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        SpinSteps steps;
        steps.Min = c.min;
        steps.Max = c.max;
        steps.Increment = c.increment;
        steps.Mask = c.mask;
        steps.setTyp(c.type);
        EXPECT_EQ(steps.stepped(c.text, c.up, Locale(Locale::Kind::Swedish)), c.stepped);
    }
}

TEST(SpinSteps, TimeOfDaySetsItsMask) {
    SpinSteps steps;
    steps.setTyp(SpinSteps::kTimeOfDay);
    EXPECT_EQ(steps.Mask, "hh:mm");
}

}  // namespace
}  // namespace kolmera
