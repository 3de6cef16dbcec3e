#include "registers/window/registerswindow.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>
#include <algorithm>
#include <fstream>

#include "definitions/jobfile.h"
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
        choose("suppliers");
    }
    void choose(const char* name) {
        const int place = static_cast<int>(registerNamed(name) - registerDefinitions().data());
        control<QListWidget>(*form, "Register").setCurrentRow(place);
    }
    int placeOf(const char* name, const char* column) {
        return Register(*registerNamed(name), world.state.sql, world.texts).columnNamed(column);
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
    world.boxPort.answers = {Answer::Yes};  // there is such a row; its form closes unsaved
    addRow({"777"}, "Spara", false);
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

TEST_F(RegistersWindowTest, TellsAtTheFieldWhatDoesNotFit) {
    choose("products");
    world.boxPort.answers = {Answer::Yes};  // it closes unsaved
    const WhenShown window("RegisterRow", [&](QDialog& row) {
        EXPECT_TRUE(QTest::qWaitForWindowActive(&row));
        const auto enter = [&](const char* column, const QString& text) -> QWidget& {
            const int place = placeOf("products", column);
            QWidget& box = control<QWidget>(row, ("Kolumn_" + std::to_string(place)).c_str());
            box.setFocus();
            QTest::keyClicks(&box, text);
            if (QWidget* found = QApplication::activePopupWidget()) found->hide();
            row.activateWindow();  // a popup took that
            EXPECT_TRUE(eventually([&] { return QApplication::activeWindow() == &row; }));
            QTest::keyClick(&box, Qt::Key_Tab);
            return box;
        };
        const auto isTold = [&](const char* part) {
            return std::ranges::any_of(row.findChildren<QLabel*>(), [&](const QLabel* label) {
                return label->isVisibleTo(&row) && label->text().contains(QString::fromUtf8(part));
            });
        };
        EXPECT_FALSE(
            control<QCheckBox>(row, ("Kolumn_" + std::to_string(placeOf("products", "Inaktiv"))).c_str()).isChecked());
        enter("Leverantör", "nobody");
        EXPECT_TRUE(isTold("finns inte i registret Leverantörer"));
        auto& supplier =
            control<QComboBox>(row, ("Kolumn_" + std::to_string(placeOf("products", "Leverantör"))).c_str());
        EXPECT_GT(supplier.count(), 1) << "no suppliers to choose from";
        supplier.setCurrentIndex(0);
        emit supplier.activated(0);
        EXPECT_FALSE(supplier.currentText().contains(' ')) << "the name was taken for the number";
        EXPECT_FALSE(isTold("finns inte i registret"));
        EXPECT_EQ(dynamic_cast<QLineEdit&>(enter("Inpris", "1x0,50")).text(), "10,5") << "not as amounts are written";
        enter("Momskod", "1");
        EXPECT_TRUE(isTold("25 %"));
        takePicture(row, "registerproduct");
        control<QPushButton>(row, "Spara").click();
        EXPECT_TRUE(isTold("måste fyllas i")) << "a product without a number";
        EXPECT_EQ(row.focusWidget()->objectName(), QString::fromUtf8("Kolumn_0"));
        row.close();
    });
    button("Ny").click();
    EXPECT_TRUE(window.came());
}

TEST_F(RegistersWindowTest, HasTheCouplingsOfJobsBehindTheRegisters) {
    int opened = 0;
    world.program.showPrisStyr = [&](QWidget* /*parent*/, int job, bool trade) -> std::optional<int> {
        EXPECT_TRUE(trade);
        EXPECT_FALSE(world.state.sql.FtgDB) << "the job window opens the company";
        opened = job;
        return std::nullopt;
    };
    auto& registers = control<QListWidget>(*form, "Register");
    registers.setCurrentRow(registers.count() - 1);
    ASSERT_GE(rows().topLevelItemCount(), 3) << "not the trade formats";
    EXPECT_FALSE(button("Ny").isEnabled());
    button("Ändra").click();
    ASSERT_GT(opened, 0);
    EXPECT_EQ(toQt(JobFile(world.data).read(opened)->name), rows().currentItem()->text(0));
    registers.setCurrentRow(0);
    EXPECT_GT(rows().topLevelItemCount(), 0) << "the company stayed closed";
    takePicture(*form, "couplings");
}

TEST_F(RegistersWindowInEnglish, ShowsWhatAFileWouldChangeBeforeItIsWritten) {
    const std::filesystem::path file = world.folder / "suppliers.csv";
    std::ofstream(file) << "Number;Search name\r\n888;FILEGROSS\r\n;NOBODY\r\n";
    form->fileToRead = [&](const FileQuestion& /*question*/) { return toQt(file.string()); };
    const WhenShown looked("RegisterImport", [&](QDialog& import) {
        EXPECT_TRUE(control<QLabel>(import, "Resultat").text().contains("New rows: 1"));
        const auto& refused = control<QTreeWidget>(import, "Nekade");
        EXPECT_EQ(refused.topLevelItemCount(), 1);
        EXPECT_EQ(refused.topLevelItem(0)->text(0), "3") << "not the row of the file";
        expectNamesForScreenReaders(import);
        expectUniqueMnemonics(import);
        takePicture(import, "registerimport");
        auto& second = control<QComboBox>(import, "Kolumn_2");
        second.setCurrentIndex(second.findText("Town"));
        EXPECT_FALSE(control<QPushButton>(import, "Skriv").isEnabled()) << "what was not looked at can be written";
        control<QPushButton>(import, "Prova").click();
        import.close();
    });
    button("Importera").click();
    EXPECT_TRUE(looked.came());
    EXPECT_FALSE(hasRow("888"));
    const WhenShown written("RegisterImport", [&](QDialog& import) {
        auto& second = control<QComboBox>(import, "Kolumn_2");
        second.setCurrentIndex(second.findText("Town"));
        control<QPushButton>(import, "Prova").click();
        world.boxPort.answers = {Answer::OK};
        control<QPushButton>(import, "Skriv").click();
    });
    button("Importera").click();
    EXPECT_TRUE(written.came());
    EXPECT_TRUE(hasRow("888"));
    EXPECT_FALSE(hasRow("FILEGROSS"));
    EXPECT_EQ(rows().findItems("FILEGROSS", Qt::MatchExactly, 3).size(), 1) << "bound by hand, and read by name";
    const std::filesystem::path output = world.folder / "out.csv";
    form->fileToWrite = [&](const FileQuestion& /*question*/) { return toQt(output.string()); };
    world.boxPort.answers = {Answer::OK};
    button("Exportera").click();
    EXPECT_GT(std::filesystem::file_size(output), 100U);
    QTest::keyClicks(&control<QLineEdit>(*form, "Sök"), "filegr");
    EXPECT_TRUE(eventually([&] { return rows().topLevelItemCount() == 1; }));
    expectTextsInBothLanguages(*form, world);
    expectUniqueMnemonics(*form);
    takePicture(*form, "registerswindow_en");
}

}  // namespace
}  // namespace kolmera
