#include "ui/guidewindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTextBrowser>

#include "support/temporaryfolder.h"

namespace kolmera::test {
namespace {

TEST(GuideWindow, OpensTheGuideInTheProgramsLanguage) {
    const struct {
        const char* fault;
        std::vector<std::string> files;
        const char *language, *expected;
    } cases[] = {{"a missing guide shown", {}, "SE", ""},
                 {"Swedish user reads English", {"guide.en.md", "guide.sv.md"}, "SE", "guide.sv.md"},
                 {"English user reads Swedish", {"guide.en.md", "guide.sv.md"}, "EN", "guide.en.md"},
                 {"no help where another language has it", {"guide.en.md"}, "SE", "guide.en.md"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const TemporaryFolder folder;
        for (const std::string& file : c.files) folder.write(file, "# " + file + "\n");
        LanguageTexts texts;
        texts.InitSpråkOrd(c.language);
        QWidget form;
        EXPECT_EQ(openGuide(&form, texts, folder.path()), *c.expected != '\0');
        const auto* text = form.findChild<QTextBrowser*>("Text");
        EXPECT_EQ(text == nullptr ? "" : text->toPlainText().toStdString(), c.expected);
    }
}

}  // namespace
}  // namespace kolmera::test
