#include "lang/errortext.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "platform/descriptor.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

PlatformError ofSystem(int systemError) {
    try {
        throwSystemError(systemError);
    } catch (const PlatformError& error) {
        return error;
    }
}

TEST(ErrorText, SpeaksTheUsersLanguage) {
    const struct {
        const char* fault;
        PlatformError error;
        std::string swedish, english;
    } cases[] = {
        {"developer's words told", {errors::kWrongPassword, "wrong password"}, "Fel lösenord.", "Wrong password."},
        {"what it is about left out or said twice",
         PlatformError(errors::kDuplicateKey, "UNIQUE constraint failed").about("Nummer").about("Produkt"),
         "En annan post har redan samma värde: Produkt: Nummer.",
         "Another record has the same value already: Produkt: Nummer."},
        {"the system's words told", ofSystem(EISDIR).about("PRISMASK.TXT"),
         "Det är en mapp och ingen fil: PRISMASK.TXT.", "It is a folder and not a file: PRISMASK.TXT."},
        {"number of a full disk taken for its system error", ofSystem(EDQUOT), "Utrymmet på disken är förbrukat.",
         "The space allowed on the disk is used up."},
        {"words of an unexpected error kept back",
         {errors::kInternal, "no transaction is open"},
         "Ett oväntat fel: no transaction is open.",
         "An unexpected error: no transaction is open."},
    };
    const TemporaryFolder folder;
    buildLanguageDatabase(KOLMERA_SOURCE_DIR "/data/lang/texts.tsv", folder / "DVLang.sys");
    for (const bool english : {false, true}) {
        LanguageTexts texts;
        texts.ÖppnaSpråk(folder.path(), {});
        texts.InitSpråkOrd(english ? "EN" : "SE");
        for (const auto& c : cases) {
            EXPECT_EQ(errorText(texts, c.error), english ? c.english : c.swedish) << c.fault;
        }
    }
    LanguageTexts none;
    EXPECT_EQ(errorText(none, cases[1].error), "Produkt: Nummer: UNIQUE constraint failed") << "silent without texts";
}

}  // namespace
}  // namespace kolmera::test
