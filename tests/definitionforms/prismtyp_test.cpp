#include "definitions/window/prismtyp.h"

#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QTest>

#include "definitions/jobfile.h"
#include "lang/keys/prismtyp.h"
#include "platform/lettercase.h"
#include "support/qt/formworld.h"
#include "ui/lists.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;

/// The mask editor's window over a sample file in the demo's data folder.
class PrisMTypTest : public testing::Test {
  protected:
    void open(FormWorld& world, const char* sample, int maskNumber = 0) {
        form.reset();
        ASSERT_TRUE(world.companies.ÖppnaDatabas("FTG1.MDB"));
        editor.emplace(world.texts, world.boxes, world.data, world.data / "Prisfiler" / sample, SampleLook());
        ASSERT_TRUE(editor->open(world.state.sql, maskNumber));
        form.emplace(world.program, *editor, nullptr);
        form->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&*form));
    }
    QListWidget& list(const char* name) { return control<QListWidget>(*form, name); }
    QTableView& relations() { return control<QTableView>(*form, "Relationer"); }
    int relationCount() { return relations().model()->rowCount(); }
    void chooseRelation(int row, int column = 0) {
        relations().setCurrentIndex(relations().model()->index(row, column));
    }
    /// What the cells show, with " | " between rows.
    std::string cells(int column) {
        QStringList texts;
        for (int row = 0; row < relationCount(); ++row)
            texts += relations().model()->index(row, column).data().toString().trimmed();
        return fromQt(texts.join(" | "));
    }
    /// Keys of the current cell's own editor.
    void edit(const QList<int>& keys) {
        QTest::keyClick(&relations(), Qt::Key_F2);
        for (const int key : keys) QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key));
        QCoreApplication::processEvents();
    }
    void chooseTarget(int code) {
        QListWidget& targets = list("TillLista");
        targets.setCurrentItem(targets.findItems(QString::number(code) + ".", Qt::MatchStartsWith).value(0));
    }
    void press(const char* name) { control<QPushButton>(*form, name).click(); }
    void check(const char* name) { control<QRadioButton>(*form, name).click(); }
    void type(const char* name, const char* text) {
        auto& field = control<QLineEdit>(*form, name);
        field.clear();
        QTest::keyClicks(&field, QString::fromUtf8(text));
    }
    void join(int source, int code) {
        list("FrånLista").setCurrentRow(source - 1);
        chooseTarget(code);
        press("Skapa");
    }
    static std::string stored(FormWorld& world, int mask) {
        std::string rows;
        const WholeMask whole = *MaskFile(world.data).read(mask);
        for (const Relation& relation : whole.relations) {
            rows += std::to_string(relation.Källa) + ">" + std::to_string(relation.Mål) + relation.TypKod +
                    relation.Division + " ";
        }
        return rows;
    }

    std::optional<MaskEditor> editor;
    std::optional<PrisMTyp> form;
};

TEST_F(PrisMTypTest, MakesChangesAndKeepsATabMask) {
    FormWorld world(Data::Demo);
    open(world, "SKRUV.TXT");
    EXPECT_EQ(form->windowTitle(), "Ny mask för prisfilen SKRUV.TXT");
    check("FilTyp_2");
    EXPECT_FALSE(control(*form, "Positioner").isVisible());
    EXPECT_FALSE(control(*form, "AntalRader").isEnabled());
    list("FrånLista").setCurrentRow(0);
    chooseTarget(1);
    const QPoint place = list("TillLista").visualItemRect(list("TillLista").currentItem()).center();
    QTest::mouseClick(list("TillLista").viewport(), Qt::LeftButton, {}, place);
    EXPECT_EQ(relationCount(), 0) << "created by a single click";
    QTest::mouseDClick(list("TillLista").viewport(), Qt::LeftButton, {}, place);
    EXPECT_EQ(control<QComboBox>(*form, "Division").currentText(), "Söknyckel");
    join(2, 24);
    chooseRelation(1);
    chooseTarget(6);
    QTest::mouseClick(relations().viewport(), Qt::LeftButton, {},
                      relations().visualRect(relations().currentIndex()).center());
    EXPECT_EQ(control<QComboBox>(*form, "TypKod").count(), 6) << "a click does not show the relation again";
    control<QComboBox>(*form, "TypKod").setCurrentIndex(1);
    control<QComboBox>(*form, "Division").setCurrentIndex(2);
    press("Skapa");
    world.boxPort.answers = {Answer::OK};
    press("Spara");
    EXPECT_EQ(world.boxPort.shown.back(), "Kolmera|" + world.texts.FormulärSträng(text::prismtyp::kNameMissing));
    EXPECT_TRUE(form->isVisible());
    EXPECT_EQ(form->focusWidget(), &control(*form, "Namn"));
    type("Namn", "Skruvar");
    press("Spara");
    EXPECT_FALSE(form->isVisible());
    EXPECT_EQ(stored(world, MaskFile(world.data).find("Skruvar")->mask.number), "1>1US 2>2412 ");
}

TEST_F(PrisMTypTest, MakesAFixedLengthMaskPieceByPiece) {
    FormWorld world(Data::Demo);
    open(world, "FJORDPRI.DAT");
    check("FilTyp_3");
    EXPECT_TRUE(control(*form, "Positioner").isVisible());
    type("Postlängd", "69");
    QTest::mouseClick(&control<QLabel>(control(*form, "UppNer_Postlängd"), "Upp"), Qt::LeftButton);
    EXPECT_EQ(editor->mask().Postlängd, "70") << "the arrows step a text that the editor does not hear of";
    EXPECT_FALSE(control(*form, "UppNer_AntalRader").isEnabled());
    type("FrånPos", "3");
    type("Längd", "13");
    chooseTarget(1);
    press("Skapa");
    EXPECT_EQ(control<QLineEdit>(*form, "FrånPos").text(), "16");
    EXPECT_EQ(list("FrånLista").count(), 2);
    chooseRelation(0);
    press("Tabort");
    EXPECT_EQ(relationCount(), 0);
    EXPECT_FALSE(control(*form, "Tabort").isEnabled());
    EXPECT_EQ(control<QLineEdit>(*form, "FrånPos").text(), "1");
}

TEST_F(PrisMTypTest, ChangesCellsByKeysAlone) {
    FormWorld world(Data::Demo);
    open(world, "SKRUV.TXT");
    check("FilTyp_2");
    for (const int code : {1, 6, 24}) join(code == 24 ? 3 : 1, code);
    EXPECT_EQ(cells(1), "-->  1. Nummer | -->  6. Benämning | -->  24. 1Utpris");
    relations().setFocus();
    chooseRelation(1, 0);
    edit({Qt::Key_Down, Qt::Key_Return});
    EXPECT_EQ(cells(0).substr(0, 19), "1. SB-10000.. | 2. ") << "by a key and Enter";
    EXPECT_EQ(relations().currentIndex(), relations().model()->index(1, 0)) << "the place is lost";
    edit({Qt::Key_Down, Qt::Key_Escape});
    EXPECT_EQ(editor->relations()[1].relation.Källa, 2) << "Escape keeps what was chosen";
    EXPECT_TRUE(form->isVisible());
    chooseRelation(1, 1);
    edit({Qt::Key_Home, Qt::Key_Down, Qt::Key_Return});
    EXPECT_EQ(editor->relations()[1].relation.Mål, 6) << "a target of another relation";
    EXPECT_NE(control<QLabel>(*form, "Anmärkning").text(), "") << "refused in silence";

    // Several rows at once, and back.
    QTest::keyClick(&relations(), Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(&relations(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text().count('\n'), 2);
    QTest::keyClick(&relations(), Qt::Key_Delete);
    EXPECT_EQ(cells(1), "-->  1. Nummer");
    QTest::keyClick(&relations(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(relationCount(), 3);
    type("Namn", "Skruv");
    QTest::keyClick(&control(*form, "Namn"), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(control<QLineEdit>(*form, "Namn").text(), "");
    QTest::keyClick(&control(*form, "Namn"), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(editor->mask().Namn, "Skruv");
    while (control(*form, "Ångra").isEnabled()) press("Ångra");
    EXPECT_TRUE(control<QRadioButton>(*form, "FilTyp_3").isChecked() ||
                control<QRadioButton>(*form, "FilTyp_1").isChecked());
    EXPECT_FALSE(editor->changed());
}

TEST_F(PrisMTypTest, ShowsEveryDemoMaskAsItIsStored) {
    FormWorld world(Data::Demo, "EN");
    for (const Job& job : JobFile(world.data).all()) {
        const auto found = MaskFile(world.data).find(job.mask);
        if (!found) continue;  // a trade format
        const Mask& mask = found->mask;
        SCOPED_TRACE(mask.Namn);
        const std::string before = stored(world, mask.number);
        open(world, split(job.priceFile, "\\").back().c_str(), mask.number);
        EXPECT_EQ(control<QLineEdit>(*form, "Namn").text(), toQt(mask.Namn));
        for (int row = 0; row < relationCount(); ++row) {
            chooseRelation(row);
            EXPECT_GE(control<QComboBox>(*form, "TypKod").currentIndex(), 0) << "rule not offered, row " << row;
            EXPECT_GE(control<QComboBox>(*form, "Division").currentIndex(), 0) << "rule not offered, row " << row;
        }
        press("Spara");
        EXPECT_EQ(stored(world, mask.number), before);
    }
}

TEST_F(PrisMTypTest, EscapeChangesNothing) {
    FormWorld world(Data::Demo);
    open(world, "SKRUV.TXT");
    type("Namn", "Ny");
    QTest::keyClick(&control(*form, "Namn"), Qt::Key_Return);
    EXPECT_TRUE(form->isVisible()) << "Enter moves on";
    world.boxPort.answers = {Answer::No, Answer::Yes};
    QTest::keyClick(&*form, Qt::Key_Escape);
    EXPECT_TRUE(form->isVisible()) << "left without asking";
    form->close();
    EXPECT_FALSE(form->isVisible());
    EXPECT_FALSE(MaskFile(world.data).find("Ny"));
}

TEST_F(PrisMTypTest, SpeaksBothLanguages) {
    for (const char* language : {"SE", "EN"}) {
        FormWorld world(Data::Demo, language);
        open(world, "DJURKAMP.DAT", 4);
        expectTextsInBothLanguages(*form, world);
        for (const char* name : {"FrånLista", "TillLista"}) EXPECT_NE(list(name).accessibleName(), "");
        takePicture(*form, std::string("prismtyp-fixed-") + language);
        open(world, "SKRUV.TXT", 1);
        chooseRelation(2);
        takePicture(*form, std::string("prismtyp-tabs-") + language);
    }
}

}  // namespace
}  // namespace kolmera
