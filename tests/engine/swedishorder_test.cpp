#include <algorithm>
#include <array>
#include <cstdio>
#include <random>

#include "engine/enginetest.h"
#include "platform/lettercase.h"

namespace kolmera::test {
namespace {

int sign(int number) { return number < 0 ? -1 : number > 0 ? 1 : 0; }

TEST(SwedishOrder, TextsStandInTheOrderOfASwedishRegister) {
    const struct {
        const char *fault, *before, *behind;
    } cases[] = {
        {"letters by code: Z before a", "apa", "Zebra"},
        {"ä before å, as their codes are", "ål", "älg"},
        {"ö before ä", "älg", "öl"},
        {"letters beyond the alphabet before ö", "öl", "Ω"},
        {"underscore between the cases", "_", "a"},
        {"the empty text behind others", "", " "},
        {"é far from e", "idé", "ideal"},
        {"accents forgotten", "ide", "idé"},
        {"an accent before a later letter", "idéa", "ideb"},
        {"ü behind z", "über", "zon"},
        {"æ not with ä", "å", "æ"},
        {"v and w one letter", "vz", "wa"},
        {"a broken byte before letters", "öl", "\xE5l"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_LT(compareSwedish(c.before, c.behind), 0);
        EXPECT_GT(compareSwedish(c.behind, c.before), 0);
    }
}

TEST(SwedishOrder, OnlyLetterCaseMakesTextsEqual) {
    const struct {
        const char *fault, *a, *b;
        bool equal;
    } cases[] = {
        {"Swedish case counts", "ÅÄÖ", "åäö", true},    {"case of an accented letter counts", "É", "é", true},
        {"the pair outside its block", "ÿ", "Ÿ", true}, {"a blank lost", "a", "a ", false},
        {"a NUL ends the text", "a", "a\0b", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const std::string_view b =
            std::string_view(c.fault) == "a NUL ends the text" ? std::string_view("a\0b", 3) : c.b;
        EXPECT_EQ(compareSwedish(c.a, b) == 0, c.equal);
        EXPECT_EQ(equalNoCase(c.a, b), c.equal);
    }
}

// An order that contradicts itself loses rows in an index.
TEST(SwedishOrder, AnyThreeTextsAgree) {
    constexpr std::array kPieces = {"a", "A", "å", "Å", "é",    "e",    "ü", "y",
                                    "0", "_", "z", "ö", "\xC3", "\xE5", "Ω", ""};
    std::mt19937 random(20260101);
    const auto text = [&] {
        std::string made;
        for (int i = 0; i < 3; ++i) made += kPieces[random() % kPieces.size()];
        return made;
    };
    for (int i = 0; i < 20000; ++i) {
        std::array<std::string, 3> t = {text(), text(), text()};
        ASSERT_EQ(sign(compareSwedish(t[0], t[1])), -sign(compareSwedish(t[1], t[0]))) << t[0] << '|' << t[1];
        std::sort(t.begin(), t.end(), [](const auto& a, const auto& b) { return compareSwedish(a, b) < 0; });
        ASSERT_LE(compareSwedish(t[0], t[2]), 0) << t[0] << '|' << t[1] << '|' << t[2];
    }
}

class SvenskaExtension : public EngineTest {
  protected:
    /// What the sqlite3 command prints for a statement, with the collation loaded.
    [[nodiscard]] std::string sqlite3(const std::string& statement) const {
        const std::string command =
            "sqlite3 -cmd '.load " KOLMERA_BIN_DIR "/svenska' '" + file.string() + "' \"" + statement + "\" 2>&1";
        std::FILE* pipe = popen(command.c_str(), "r");
        std::string output;
        std::array<char, 256> part{};
        while (std::fgets(part.data(), part.size(), pipe) != nullptr) output += part.data();
        pclose(pipe);
        return output;
    }
};

TEST_F(SvenskaExtension, TheSqlite3CommandReadsAndWritesACompanyFile) {
    {
        const auto database = open();
        for (const char* number : {"Öl", "zon", "ål", "Apa", "älg"}) add(*database, number);
    }
    EXPECT_EQ(sqlite3("SELECT Nummer FROM Artikel WHERE Nummer > 'b' ORDER BY Nummer"), "zon\nål\nälg\nÖl\n");
    EXPECT_NE(sqlite3("INSERT INTO Artikel (Nummer) VALUES ('ÄLG')").find("UNIQUE"), std::string::npos);
    EXPECT_EQ(sqlite3("PRAGMA integrity_check"), "ok\n");
}

}  // namespace
}  // namespace kolmera::test
