#include "definitions/window/sourcewindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QTableWidget>
#include <QTest>
#include <fstream>

#include "support/qt/formworld.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;
using Name = SourceEditor::Property::Name;

TEST(SourceWindow, CorrectsWhatWasFoundByKeysAlone) {
    for (const char* language : {"SE", "EN"}) {
        FormWorld world(Data::Empty, language);
        const auto file = world.folder / "pris.csv";
        std::ofstream(file) << "Prislista;;\nArtikelnr;Ben\xC3\xA4mning;Pris\nA1;Skruv;1 250,50\nA2;Mutter;12,50\n"
                               "A3;Bult;3,00\nA4;Bricka;4,00\n";
        SourceEditor editor(world.texts, file, std::nullopt);
        ASSERT_TRUE(editor.detect());
        SourceWindow form(world.program, editor, true, nullptr);
        form.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
        expectTextsInBothLanguages(form, world);
        takePicture(form, std::string("sourcewindow-") + language);
        auto& rows = control<QTableWidget>(form, "Rader");
        EXPECT_EQ(rows.horizontalHeaderItem(1)->text(), "2 Benämning");
        EXPECT_EQ(rows.item(0, 2)->text(), "1 250,50");

        const auto box = [](Name name) { return "Egenskap_" + std::to_string(static_cast<int>(name)); };
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
        control<QCheckBox>(form, "Omvandla").setChecked(false);
        EXPECT_FALSE(control(form, box(Name::Skip).c_str()).isEnabled());
        EXPECT_FALSE(form.converts());
        form.close();
    }
}

}  // namespace
}  // namespace kolmera
