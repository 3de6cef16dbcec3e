#include "lang/languagetexts.h"

#include <gtest/gtest.h>

#include "platform/error.h"
#include "platform/restrictedpath.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

constexpr const char* kTexts =
    "key\tSE\tEN\n"
    "# a comment\n"
    "RES_228\tTvå<CRLF>rader\tTwo<CRLF>lines\n"
    "RES_7\tBara svenska\t\n"
    "SP_FRM_PrisRab\tRabattbrev<TAB>\tLetters\n"
    "SP_FRM_PrisRab_String007\t<VAR1> av <VAR2> och <VAR3>, <VAR1>\tx\n"
    "SP_FRM_PrisRab_String1234\tlångt\tx\n"
    "SP_MOD_KMR_007\t<SP>och <VAR1>\tx\n"
    "RGA_Produkt_021\tInpris\tPurchase price\n";

struct NumberedTexts : LanguageTexts {
    using LanguageTexts::FormulärSträng;
    using LanguageTexts::FormulärSträngMed1;
    using LanguageTexts::FormulärSträngMed2;
    using LanguageTexts::FormulärSträngMed3;
    using LanguageTexts::ModulText;
    using LanguageTexts::ModulTextMed;
    using LanguageTexts::ResText;
};

class LanguageTextsTest : public ::testing::Test {
  protected:
    LanguageTextsTest() {
        folder.write("texts.tsv", kTexts);
        buildLanguageDatabase(folder / "texts.tsv", folder / "dvlang.SYS");
        texts.ÖppnaSpråk(folder.path(), {});
    }
    TemporaryFolder folder;
    NumberedTexts texts;
};

TEST_F(LanguageTextsTest, BuildsKeysAndFillsPlaceholders) {
    const struct {
        const char* fault;
        std::string text, expected;
    } cases[] = {
        {"marker not decoded", texts.ResText(228), "Två\r\nrader"},
        {"letter case of the key counts", texts.SpråkText("res_228"), "Två\r\nrader"},
        {"missing key not empty", texts.ResText(229), ""},
        {"caption", texts.FormulärText("PrisRab"), "Rabattbrev\t"},
        {"number not of three digits", texts.FormulärSträng("PrisRab", 7), "<VAR1> av <VAR2> och <VAR3>, <VAR1>"},
        {"number of four digits cut", texts.FormulärSträng("PrisRab", 1234), "långt"},
        {"only the first placeholder filled", texts.FormulärSträngMed1("PrisRab", 7, "A"), "A av <VAR2> och <VAR3>, A"},
        {"second value not filled", texts.FormulärSträngMed2("PrisRab", 7, "A", "B"), "A av B och <VAR3>, A"},
        {"third value not filled", texts.FormulärSträngMed3("PrisRab", 7, "A", "B", "C"), "A av B och C, A"},
        {"module text", texts.ModulText("KMR", 7), " och <VAR1>"},
        {"module text with a value", texts.ModulTextMed("KMR", 7, "X"), " och X"},
        {"register text", texts.RegisterText("Produkt", 21), "Inpris"},
        {"markers in the wrong order", LanguageTexts::AvkodaPlatshållare("<LF><CRLF><TAB><SP><lf>"), "\n\r\n\t <lf>"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.text, c.expected) << c.fault;
    EXPECT_EQ(texts.storedText("SP_FRM_PrisRab"), "Rabattbrev<TAB>") << "decoded for form translation";
    EXPECT_EQ(texts.storedText("SP_FRM_Annan"), std::nullopt);
}

TEST_F(LanguageTextsTest, GoesByLanguage) {
    texts.InitSpråkOrd("EN");
    EXPECT_EQ(texts.ResText(228), "Two\r\nlines");
    EXPECT_EQ(texts.ResText(7), "") << "a text in the other language instead of none";
    texts.InitSpråkOrd("en");
    EXPECT_EQ(texts.ResText(228), "Två\r\nrader") << "letter case of the language does not count";
    for (const char* code : {"", "SE", "en", "EN ", "DE"})
        EXPECT_EQ(LanguageTexts::NormaliseraSpråk(code), "SE") << code;
    EXPECT_EQ(LanguageTexts::NormaliseraSpråk("EN"), "EN");
}

TEST_F(LanguageTextsTest, MissingFilesGiveEmptyTexts) {
    NumberedTexts none;
    EXPECT_EQ(none.ResText(228), "") << "never opened";
    none.ÖppnaSpråk(folder / "nowhere", {});
    EXPECT_EQ(none.ResText(228), "");
    none.ÖppnaSpråk(folder / "nowhere", folder.path());
    EXPECT_EQ(none.ResText(228), "Två\r\nrader") << "the server folder not looked into";
    none.StängSpråk();
    EXPECT_EQ(none.ResText(228), "") << "still open";
    const TemporaryFolder other;
    other.write("DVLang.sys", "no database");
    none.ÖppnaSpråk(other.path(), folder.path());
    EXPECT_EQ(none.ResText(228), "Två\r\nrader") << "a damaged file keeps the other one from being found";
}

TEST_F(LanguageTextsTest, TwoProgramsReadAtOnceEvenWithoutTheRightToWrite) {
    NumberedTexts second;
    const RestrictedPath readOnly(folder.path(), 0555);
    second.ÖppnaSpråk(folder.path(), {});
    EXPECT_EQ(second.ResText(228), "Två\r\nrader");
    EXPECT_EQ(texts.ResText(228), "Två\r\nrader");
}

TEST(LanguageBuild, RefusesMalformedTables) {
    const TemporaryFolder folder;
    folder.write("DVLang.sys", "old");
    const struct {
        const char* fault;
        std::string table;
    } cases[] = {
        {"a key twice", "key\tSE\tEN\nRES_1\ta\tb\nres_1\tc\td\n"},
        {"a tab inside a text", "key\tSE\tEN\nRES_1\ta\tb\tc\n"},
        {"another language", "key\tSE\tDE\nRES_1\ta\tb\n"},
        {"empty file", ""},
    };
    for (const auto& c : cases) {
        folder.write("texts.tsv", c.table);
        EXPECT_THROW(buildLanguageDatabase(folder / "texts.tsv", folder / "DVLang.sys"), PlatformError) << c.fault;
        EXPECT_EQ(folder.read("DVLang.sys"), "old") << c.fault;
    }
    EXPECT_THROW(buildLanguageDatabase(folder / "none.tsv", folder / "DVLang.sys"), PlatformError);
}

}  // namespace
}  // namespace kolmera::test
