#include "definitions/window/sourcewindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <fstream>

#include "definitions/window/columnswindow.h"
#include "definitions/window/leftoutwindow.h"
#include "definitions/window/propertygrid.h"
#include "support/qt/formworld.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;
using Name = SourceEditor::Property::Name;

TargetLayout textColumns(std::size_t count) {
    TargetLayout layout;
    layout.records = TargetLayout::Records::Tabs;
    layout.columns.assign(count, {.use = ColumnUse::Text});
    return layout;
}

/// The window's own button asks when something has been changed, and No keeps the window.
void expectAsksBeforeClosing(QDialog& form, FormWorld& world) {
    world.boxPort.answers = {Answer::No};
    form.close();
    EXPECT_TRUE(form.isVisible()) << "changes thrown away";
    EXPECT_TRUE(world.boxPort.answers.empty());
}

std::string box(int name) { return fromQt(PropertyGrid::nameOfBox(name)); }

TEST(SourceWindow, CorrectsWhatWasFoundByKeysAlone) {
    for (const char* language : {"SE", "EN"}) {
        FormWorld world(Data::Empty, language);
        const auto file = world.folder / "pris.csv";
        std::ofstream(file) << "Prislista;;\nArtikelnr;Ben\xC3\xA4mning;Pris\nA1;Skruv;1 250,50\nA2;Mutter;12,50\n"
                               "A3;Bult;3,00\nA4;Bricka;4,00\n";
        SourceEditor editor(world.texts, file, std::nullopt);
        ASSERT_TRUE(editor.detect());
        SourceWindow form(world.program, editor, true, textColumns, nullptr);
        form.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
        expectTextsInBothLanguages(form, world);
        takePicture(form, std::string("sourcewindow-") + language);
        auto& rows = control<QTableWidget>(form, "Rader");
        EXPECT_EQ(rows.horizontalHeaderItem(1)->text(), "2 Benämning");
        EXPECT_EQ(rows.item(0, 2)->text(), "1 250,50");

        const auto box = [](Name name) { return kolmera::box(static_cast<int>(name)); };
        auto& skip = control<QLineEdit>(form, box(Name::Skip).c_str());
        skip.setFocus();
        skip.selectAll();
        QTest::keyClicks(&skip, "2");
        QTest::keyClick(&skip, Qt::Key_Tab);
        EXPECT_TRUE(eventually([&] { return rows.item(0, 0) != nullptr && rows.item(0, 0)->text() == "A2"; }));
        auto* focused = form.focusWidget();
        ASSERT_NE(focused, nullptr);
        EXPECT_EQ(fromQt(focused->objectName()), box(Name::Headings)) << "the focus is lost with the old boxes";
        QTest::keyClick(focused, Qt::Key_Up);
        EXPECT_TRUE(eventually([&] { return rows.item(0, 0) != nullptr && rows.item(0, 0)->text() == "A1"; }));
        EXPECT_FALSE(editor.format().headings);
        EXPECT_TRUE(form.converts());
        editor.choose(Name::Kind, 5);
        control<QCheckBox>(form, "Omvandla").setChecked(false);
        EXPECT_FALSE(control(form, "OK").isEnabled())
            << "what the job has is thrown away with a file that is unreadable";
        editor.choose(Name::Kind, 0);
        control<QCheckBox>(form, "Omvandla").setChecked(true);
        EXPECT_TRUE(control(form, "OK").isEnabled());
        control<QCheckBox>(form, "Omvandla").setChecked(false);
        EXPECT_FALSE(control(form, box(Name::Skip).c_str()).isEnabled());
        EXPECT_FALSE(form.converts());
        expectAsksBeforeClosing(form, world);
        world.boxPort.answers = {Answer::Yes};
        form.close();
        EXPECT_FALSE(form.isVisible());
    }
}

TEST(ColumnsWindow, TakesWhatIsStillBeingTyped) {
    FormWorld world(Data::Empty);
    const auto file = world.folder / "pris.csv";
    std::ofstream(file) << "Artikelnr;Enhet\nA1;styck\n";
    SourceSettings settings;
    settings.format.headings = true;
    ColumnEditor editor(world.texts, file, settings, textColumns(2));
    ColumnsWindow form(world.program, editor, nullptr);
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    auto& replaced = control<QTableWidget>(form, "Ersätt");
    replaced.setFocus();
    replaced.setCurrentCell(0, 0);
    QTest::keyClick(&replaced, Qt::Key_F2);
    auto* cell = dynamic_cast<QLineEdit*>(form.focusWidget());
    ASSERT_NE(cell, nullptr);
    QTest::keyClicks(cell, "A1");
    control<QPushButton>(form, "OK").click();  // as by its letter: the focus stays in the cell
    EXPECT_EQ(editor.replacements(), (ColumnEditor::Replacements{{"A1", ""}}));
}

TEST(ColumnsWindow, ShowsBeforeAndAfterByKeysAlone) {
    for (const char* language : {"SE", "EN"}) {
        FormWorld world(Data::Empty, language);
        const auto file = world.folder / "pris.csv";
        std::ofstream(file) << "Artikelnr;Ben\xC3\xA4mning;Pris\nA1;Skruv;1 250,50 kr\nA2;Mutter;SEK 12,50-\n"
                               "A3;Bult;p\xC3\xA5 beg\xC3\xA4ran\nSumma;;3\n";
        SourceSettings settings;
        settings.format.headings = true;
        settings.format.decimalSign = ',';
        SourceEditor editor(world.texts, file, settings);
        ASSERT_TRUE(editor.detect());
        SourceWindow form(world.program, editor, true, textColumns, nullptr);
        form.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
        const WhenShown columns("ColumnsWindow", [&](QDialog& window) {
            expectTextsInBothLanguages(window, world);
            QTest::keyClick(&control<QListWidget>(window, "Kolumner"), Qt::Key_End);
            auto& values = control<QTableWidget>(window, "Värden");
            EXPECT_EQ(values.item(0, 2)->text(), "1 250,50 kr");
            const auto at = [&](ColumnProperty name) { return box(static_cast<int>(name)); };
            auto* meaning = &control(window, at(ColumnProperty::Meaning).c_str());
            QTest::keyClick(meaning, Qt::Key_Down);
            QTest::keyClick(meaning, Qt::Key_Down);
            EXPECT_TRUE(eventually([&] { return values.item(0, 2)->text() == "1250.50"; }));
            EXPECT_EQ(values.item(1, 2)->text(), "-12.50");
            EXPECT_NE(values.item(2, 2)->text(), "på begäran") << "what does not fit is not marked";
            takePicture(window, std::string("columnswindow-") + language);
            auto& replaced = control<QTableWidget>(window, "Ersätt");
            replaced.item(0, 0)->setText("på begäran");
            replaced.item(0, 1)->setText("0");
            EXPECT_TRUE(eventually([&] { return values.item(2, 2)->text() == "0"; }));
            EXPECT_EQ(replaced.rowCount(), 2) << "no empty row for the next one";
            expectAsksBeforeClosing(window, world);
            auto& suffix = control<QLineEdit>(window, at(ColumnProperty::AddSuffix).c_str());
            suffix.setFocus();
            QTest::keyClicks(&suffix, "0");
            control<QPushButton>(window, "OK").click();  // what is typed counts, though the box has the focus
        });
        control<QPushButton>(form, "Kolumner").click();
        EXPECT_TRUE(columns.came());
        ASSERT_EQ(editor.settings().columns.size(), 1U);
        const SourceColumn price = editor.settings().columns.front();
        EXPECT_EQ(price.from, (ColumnName{.heading = "Pris", .number = 3}));
        EXPECT_EQ(price.rule.addSuffix, "0");
        EXPECT_EQ(price.rule.replace.size(), 1U);

        const WhenShown rows("LeftOutWindow", [&](QDialog& window) {
            expectTextsInBothLanguages(window, world);
            control<QPushButton>(window, "Föreslå").click();
            auto& text = control<QLineEdit>(window, "Text");
            QTest::keyClicks(&text, "m?tter");
            QTest::keyClick(&text, Qt::Key_Return);
            takePicture(window, std::string("leftoutwindow-") + language);
            expectAsksBeforeClosing(window, world);
            EXPECT_EQ(control<QListWidget>(window, "Mönster").count(), 2);
            EXPECT_EQ(control<QListWidget>(window, "Rader").count(), 2);
            QTest::keyClicks(&text, "inget");
            control<QPushButton>(window, "OK").click();
            EXPECT_EQ(control<QListWidget>(window, "Mönster").count(), 3) << "what was typed counts unseen";
            control<QListWidget>(window, "Mönster").setCurrentRow(2);
            control<QPushButton>(window, "TaBort").click();
            control<QPushButton>(window, "OK").click();
        });
        control<QPushButton>(form, "Utelämnade").click();
        EXPECT_TRUE(rows.came());
        EXPECT_EQ(editor.settings().leaveOut,
                  (std::vector<LeftOutRows>{{.column = {}, .pattern = "summa*"}, {.column = {}, .pattern = "m?tter"}}));
        expectAsksBeforeClosing(form, world);
        world.boxPort.answers = {Answer::Yes};
        form.close();
        EXPECT_FALSE(form.isVisible());
    }
}

}  // namespace
}  // namespace kolmera
