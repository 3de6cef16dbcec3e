#include "import/window/calculationwindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <fstream>

#include "lang/keys/calculation.h"
#include "support/qt/formworld.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;

/// A past run of the demo's paint list, which brought the product F30005 a new purchase price.
class CalculationTest : public testing::Test {
  protected:
    explicit CalculationTest(const char* language = "SE") : world(Data::Demo, language) {
        run.kind = RunKind::Run;
        run.job = "Lindåsby färg";
        run.priceFile.path = (world.data / "Prisfiler" / "FARG.TXT").string();
    }
    std::string text(ModuleKey key, const std::string& about = {}) { return world.texts.ModulTextMed(key, about); }
    /// What the one message says that comes instead of the window.
    std::string message() {
        world.boxPort.shown.clear();
        world.boxPort.answers = {Answer::OK};
        explainPrice(world.program, &parent, run, "F30005", "Produkt.1Utpris");
        return world.boxPort.shown.size() == 1 ? world.boxPort.shown.front() : "";
    }

    FormWorld world;
    QWidget parent;
    RunHeader run;
};

class CalculationInEnglish : public CalculationTest {
  protected:
    CalculationInEnglish() : CalculationTest("EN") {}
    void show() {
        const WhenShown window("CalculationWindow", [&](QDialog& form) {
            expectTextsInBothLanguages(form, world);
            takePicture(form, "calculationwindow_en");
            form.reject();
        });
        explainPrice(world.program, &parent, run, "F30005", "Produkt.Inpris");
        EXPECT_TRUE(window.came());
    }
};

TEST_F(CalculationTest, IsShownFromTheColumnOnAndCopied) {
    std::string marked, remark;
    const WhenShown window("CalculationWindow", [&](QDialog& form) {
        expectTextsInBothLanguages(form, world);
        takePicture(form, "calculationwindow");
        marked = fromQt(control<QPlainTextEdit>(form, "Text").extraSelections().value(0).cursor.selectedText());
        remark = fromQt(control<QLabel>(form, "Anmärkning").text());
        control<QPushButton>(form, "Kopiera").click();
        form.accept();
    });
    explainPrice(world.program, &parent, run, "f30005", "Produkt.1Utpris");
    ASSERT_TRUE(window.came());
    EXPECT_EQ(marked, "  Produkt.1Utpris");
    EXPECT_NE(fromQt(QApplication::clipboard()->text()).find("Prisfilens text, 6: \"73,42\""), std::string::npos);
    EXPECT_EQ(remark, text(text::calculation::kMadeNow) + " " + text(text::calculation::kFileChanged) + " " +
                          text(text::calculation::kImportChanged));
    EXPECT_FALSE(std::filesystem::exists(world.data / "Körningar")) << "asking left a record";
}

TEST_F(CalculationTest, TellsWhyThereIsNone) {
    std::ofstream(run.priceFile.path) << "F1\r\n";
    EXPECT_NE(message().find(text(text::calculation::kNoRecord, "F30005")), std::string::npos);
    std::filesystem::remove(run.priceFile.path);
    EXPECT_NE(message().find(text(text::calculation::kFileGone, run.priceFile.path)), std::string::npos);
    run.job = "Lindåsby gård";
    EXPECT_NE(message().find(text(text::calculation::kNoImport, run.job)), std::string::npos);
}

TEST_F(CalculationInEnglish, ShowsItsTextsWhole) { show(); }

}  // namespace
}  // namespace kolmera
