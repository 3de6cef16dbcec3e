#include "definitions/window/masksamplewindow.h"

#include <QComboBox>
#include <QPushButton>
#include <QTableView>
#include <QTableWidget>
#include <QTest>
#include <fstream>

#include "definitions/window/rulerview.h"
#include "import/masks/samplerun.h"
#include "support/qt/formworld.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;

/// The try-out of a mask on a sample in the demo's data folder.
class MaskSampleWindowTest : public testing::Test {
  protected:
    void open(FormWorld& world, const char* file, int maskNumber, const char* supplier = "") {
        form.reset();
        ASSERT_TRUE(world.companies.ÖppnaDatabas("FTG1.MDB"));
        editor.emplace(world.texts, world.boxes, world.data, world.data / "Prisfiler" / file, SampleLook());
        ASSERT_TRUE(editor->open(world.state.sql, maskNumber));
        if (maskNumber == 0) {
            editor->setFilTyp('P');
            editor->setPostlängd("23");
        }
        const SampleRun run = [&world, supplier](const auto& mask, const auto& relations, const auto& path,
                                                 auto record) {
            return readSample(world.state.sql, world.texts, *Date::fromIso("2026-11-23"), supplier, mask, relations,
                              path, record);
        };
        sample.emplace(openMaskSample(world.state.sql, world.texts, world.boxes, world.data, *editor, run));
        form.emplace(world.program, *sample, nullptr);
        form->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&*form));
    }
    QTableWidget& fields() { return control<QTableWidget>(*form, "Fält"); }
    QString cell(int row, int column) { return fields().item(row, column)->text(); }

    std::optional<MaskEditor> editor;
    std::optional<MaskSample> sample;
    std::optional<MaskSampleWindow> form;
};

TEST_F(MaskSampleWindowTest, ShowsWhatEachColumnGives) {
    for (const char* language : {"SE", "EN"}) {
        FormWorld world(Data::Demo, language);
        open(world, "SKRUV.TXT", 2, "3020");
        expectTextsInBothLanguages(*form, world);
        EXPECT_NE(fields().accessibleName(), "");
        EXPECT_EQ(cell(3, 1), "4906");
        EXPECT_EQ(cell(3, 4), "49,06") << "taken as";
        auto& records = control<QTableView>(*form, "Poster");
        records.setFocus();
        QTest::keyClick(&records, Qt::Key_Down);
        QTest::keyClick(&records, Qt::Key_Right);
        EXPECT_EQ(sample->record(), 1);
        EXPECT_EQ(fields().currentRow(), 1);
        EXPECT_EQ(cell(0, 1), "SB-10012");
        QTest::keyClick(&*form, Qt::Key_N, Qt::AltModifier);
        EXPECT_TRUE(eventually([&] { return cell(0, 1) == "SB-10024"; }))
            << "the button for the next record has no key";
        EXPECT_EQ(records.currentIndex().row(), 2) << "the record is not marked";
        takePicture(*form, std::string("masksample-tabs-") + language);
    }
}

TEST_F(MaskSampleWindowTest, MakesAMaskUnderTheRulerByKeysAlone) {
    FormWorld world(Data::Demo);
    std::ofstream(world.data / "Prisfiler" / "FAST.TXT") << "ARTNR  NAMN        PRIS\n4711   Skruv      12.50\n"
                                                            "4712   Mutter    112.50\n";
    open(world, "FAST.TXT", 0);
    auto& ruler = control<RulerView>(*form, "Linjal");
    QTest::keyClick(&*form, Qt::Key_G, Qt::AltModifier);
    EXPECT_TRUE(eventually([&] { return sample->ruler().boundaries() == std::set{8, 18}; }));
    EXPECT_EQ(sample->suggestions(), 3U) << "the line of headings is not seen";
    takePicture(*form, "masksample-ruler-SE");
    fields().setFocus();
    const std::size_t suggested = sample->suggestions();
    for (int row = 0; row < fields().rowCount() && !sample->canAccept(); ++row)
        QTest::keyClick(&fields(), Qt::Key_Down);
    QTest::keyClick(&fields(), Qt::Key_Return);
    EXPECT_EQ(editor->relations().size(), 1U);
    EXPECT_EQ(sample->suggestions(), suggested - 1);
    EXPECT_TRUE(form->isVisible()) << "Enter closes";

    ruler.setFocus();
    QTest::keyClick(&ruler, Qt::Key_Home);
    const auto before = sample->ruler().boundaries();
    QTest::keyClick(&ruler, Qt::Key_Right);
    QTest::keyClick(&ruler, Qt::Key_Right);
    QTest::keyClick(&ruler, Qt::Key_Space);
    EXPECT_TRUE(sample->ruler().boundaries().contains(3));
    QTest::keyClick(&ruler, Qt::Key_Right, Qt::ControlModifier);
    EXPECT_TRUE(sample->ruler().boundaries().contains(4));
    EXPECT_EQ(ruler.cursor(), 4) << "the cursor stays behind";
    QTest::keyClick(&ruler, Qt::Key_Space);
    EXPECT_EQ(sample->ruler().boundaries(), before);

    const int letter = ruler.fontMetrics().horizontalAdvance('0'), line = ruler.fontMetrics().lineSpacing();
    const auto point = [&](int byte) { return QPoint(5 + (byte - 1) * letter, 4 * line); };
    ASSERT_FALSE(before.contains(6));
    QTest::mouseClick(ruler.viewport(), Qt::LeftButton, {}, point(6));
    EXPECT_TRUE(sample->ruler().boundaries().contains(6));
    QTest::mousePress(ruler.viewport(), Qt::LeftButton, {}, point(6));
    QTest::mouseMove(ruler.viewport(), point(7));
    QTest::mouseRelease(ruler.viewport(), Qt::LeftButton, {}, point(7));
    EXPECT_TRUE(sample->ruler().boundaries().contains(7) && !sample->ruler().boundaries().contains(6));
    QTest::mouseClick(ruler.viewport(), Qt::LeftButton, {}, point(7));
    EXPECT_EQ(sample->ruler().boundaries(), before);

    auto& target = control<QComboBox>(*form, "Mål");
    ruler.setFocus();
    QTest::keyClick(&ruler, Qt::Key_Home);
    const std::size_t relations = editor->relations().size();
    QTest::keyClick(&*form, Qt::Key_T, Qt::AltModifier);
    EXPECT_TRUE(target.hasFocus());
    QTest::keyClicks(&target, "99");
    EXPECT_EQ(editor->relations().size(), relations) << "the accepted target is not replaced";
    EXPECT_EQ(editor->relations().back().relation.Mål, 99);
}

}  // namespace
}  // namespace kolmera
