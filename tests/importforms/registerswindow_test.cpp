#include "registers/window/registerswindow.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <fstream>

#include "history/runfolder.h"
#include "support/qt/formworld.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;

class RegistersWindowTest : public testing::Test {
  protected:
    explicit RegistersWindowTest(const char* language = "SE") : world(Data::Demo, language) {
        form.emplace(world.program, nullptr);
        form->show();
        form->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&*form));
        const int suppliers = static_cast<int>(registerNamed("suppliers") - registerDefinitions().data());
        control<QListWidget>(*form, "Register").setCurrentRow(suppliers);
    }
    QTreeWidget& rows() { return control<QTreeWidget>(*form, "Rader"); }
    QPushButton& button(const char* name) { return control<QPushButton>(*form, name); }
    bool hasRow(const std::string& key) { return !rows().findItems(toQt(key), Qt::MatchExactly).isEmpty(); }
    std::size_t runs() { return RunFolder(world.data).ids().size(); }
    /// Types into the form of a new row and presses a button.
    void addRow(const std::vector<std::string>& texts, const char* press, bool closes) {
        const WhenShown window("RegisterRow", [&](QDialog& row) {
            EXPECT_TRUE(QTest::qWaitForWindowActive(&row));
            expectNamesForScreenReaders(row);
            expectUniqueMnemonics(row);
            for (const std::string& text : texts) {
                QTest::keyClicks(row.focusWidget(), toQt(text));
                QTest::keyClick(row.focusWidget(), Qt::Key_Tab);
            }
            takePicture(row, "registerrow" + std::to_string(texts.size()));
            control<QPushButton>(row, press).click();
            EXPECT_EQ(!row.isVisible(), closes);
            if (row.isVisible()) row.close();
        });
        button("Ny").click();
        EXPECT_TRUE(window.came());
        form->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&*form));
    }

    FormWorld world;
    std::optional<RegistersWindow> form;
};

class RegistersWindowInEnglish : public RegistersWindowTest {
  protected:
    RegistersWindowInEnglish() : RegistersWindowTest("EN") {}
};

TEST_F(RegistersWindowTest, AddsAndRemovesRowsAsRuns) {
    addRow({"777", "NYGROSS"}, "Spara", true);
    EXPECT_TRUE(hasRow("777"));
    EXPECT_EQ(runs(), 1U);
    world.boxPort.answers = {Answer::OK, Answer::Yes};  // there is such a row; its form closes unsaved
    addRow({"777"}, "Spara", false);
    EXPECT_NE(world.boxPort.shown.at(0).find("finns redan"), std::string::npos) << world.boxPort.shown.at(0);
    EXPECT_EQ(runs(), 1U) << "a record of nothing";
    rows().setCurrentItem(rows().findItems("777", Qt::MatchExactly).front());
    world.boxPort.answers = {Answer::No, Answer::Yes};
    button("TaBort").click();
    EXPECT_TRUE(hasRow("777"));
    QTest::keyClick(&*form, Qt::Key_F9);
    EXPECT_FALSE(hasRow("777"));
    EXPECT_EQ(runs(), 2U);
    expectTextsInBothLanguages(*form, world);
    expectNamesForScreenReaders(*form);
    expectUniqueMnemonics(*form);
    takePicture(*form, "registerswindow");
    control<QListWidget>(*form, "Register").setCurrentRow(0);
    EXPECT_FALSE(button("Ny").isEnabled()) << "rows of the settings cannot be added";
}

TEST_F(RegistersWindowInEnglish, ShowsWhatAFileWouldChangeBeforeItIsWritten) {
    const std::filesystem::path file = world.folder / "suppliers.csv";
    std::ofstream(file) << "Number;Search name\r\n888;FILEGROSS\r\n;NOBODY\r\n";
    form->fileToRead = [&](const FileQuestion& /*question*/) { return toQt(file.string()); };
    world.boxPort.answers = {Answer::No};
    button("Importera").click();
    EXPECT_NE(world.boxPort.shown.at(0).find("New rows: 1"), std::string::npos) << world.boxPort.shown.at(0);
    EXPECT_FALSE(hasRow("888"));
    world.boxPort.answers = {Answer::Yes, Answer::OK};
    button("Importera").click();
    EXPECT_TRUE(hasRow("888"));
    const std::filesystem::path written = world.folder / "out.csv";
    form->fileToWrite = [&](const FileQuestion& /*question*/) { return toQt(written.string()); };
    world.boxPort.answers = {Answer::OK};
    button("Exportera").click();
    EXPECT_GT(std::filesystem::file_size(written), 100U);
    QTest::keyClicks(&control<QLineEdit>(*form, "Sök"), "filegr");
    EXPECT_TRUE(eventually([&] { return rows().topLevelItemCount() == 1; }));
    expectTextsInBothLanguages(*form, world);
    expectUniqueMnemonics(*form);
    takePicture(*form, "registerswindow_en");
}

}  // namespace
}  // namespace kolmera
