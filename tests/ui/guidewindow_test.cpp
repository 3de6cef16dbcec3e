#include "ui/guidewindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextBrowser>
#include <QUrl>
#include <sstream>

#include "platform/tsv.h"
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
        EXPECT_EQ(openGuide(&form, texts, folder.path(), {}), *c.expected != '\0');
        const auto* text = form.findChild<QTextBrowser*>("Text");
        EXPECT_EQ(text == nullptr ? "" : text->toPlainText().toStdString(), c.expected);
    }
}

TEST(GuideWindow, OpensWhereTheGuideTellsOfTheWindow) {
    const TemporaryFolder folder;
    std::string guide = "# Guide\n\n";
    for (int i = 0; i < 200; ++i) guide += "Words.\n\n";
    folder.write("guide.en.md", guide + "<!-- PrisMTyp, MaskSample -->\n## Masks\n\nOf masks.\n\n## Other\n\n" + guide);
    LanguageTexts texts;
    texts.InitSpråkOrd("EN");
    QWidget form;
    openGuide(&form, texts, folder.path(), "MaskSampl");
    const auto* text = form.findChild<QTextBrowser*>("Text");
    ASSERT_NE(text, nullptr);
    EXPECT_FALSE(text->toPlainText().contains("PrisMTyp")) << "marks are shown";
    EXPECT_EQ(text->verticalScrollBar()->value(), 0) << "half a name";
    openGuide(&form, texts, folder.path(), "MaskSample");
    EXPECT_EQ(form.findChildren<QTextBrowser*>().size(), 1) << "a second guide";
    EXPECT_EQ(text->cursorForPosition({20, 20}).block().text(), "Masks");
}

TEST(GuideWindow, FollowsTheLinksOfItsIndex) {
    for (const char* language : {"SE", "EN"}) {
        LanguageTexts texts;
        texts.InitSpråkOrd(language);
        QWidget form;
        ASSERT_TRUE(openGuide(&form, texts, KOLMERA_SOURCE_DIR "/docs", {}));
        auto* text = form.findChild<QTextBrowser*>("Text");
        const std::string guide = readWholeFile(guideFile(KOLMERA_SOURCE_DIR "/docs", *language == 'S' ? "SE" : "EN"));
        int links = 0;
        constexpr std::string_view kLink = "](#";
        for (auto at = guide.find(kLink); at != std::string::npos; at = guide.find(kLink, at + 1), ++links) {
            const std::string anchor = guide.substr(at + 2, guide.find(')', at) - at - 2);
            text->setTextCursor(QTextCursor(text->document()));
            emit text->anchorClicked(QUrl(QString::fromStdString(anchor)));
            EXPECT_GT(text->textCursor().position(), 0) << "leads nowhere: " << anchor;
        }
        EXPECT_GT(links, 20);
    }
}

TEST(GuideWindow, EveryWindowHasAChapter) {
    const std::string swedish = readWholeFile(KOLMERA_SOURCE_DIR "/docs/guide.sv.md");
    const std::string english = readWholeFile(KOLMERA_SOURCE_DIR "/docs/guide.en.md");
    std::istringstream rows(readWholeFile(KOLMERA_SOURCE_DIR "/data/lang/texts.tsv"));
    int windows = 0;
    for (std::string row; std::getline(rows, row);) {
        constexpr std::string_view kTitle = "SP_FRM_";
        const std::string name = row.substr(0, row.find('\t'));
        if (!name.starts_with(kTitle) || name.find('_', kTitle.size()) != std::string::npos) continue;
        const std::string window = name.substr(kTitle.size());
        EXPECT_GT(guideHeading(swedish, window), 0) << window;
        EXPECT_EQ(guideHeading(swedish, window), guideHeading(english, window)) << window;
        ++windows;
    }
    EXPECT_GT(windows, 0);
}

}  // namespace
}  // namespace kolmera::test
