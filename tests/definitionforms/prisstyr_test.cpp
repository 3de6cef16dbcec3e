#include "definitions/window/prisstyr.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTreeView>
#include <fstream>

#include "definitions/joboptions.h"
#include "lang/keys/prisstyr.h"
#include "support/qt/formworld.h"
#include "ui/lists.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;

class PrisStyrTest : public testing::Test {
  protected:
    explicit PrisStyrTest(const char* language = "SE") : world(Data::Demo, language) {}

    void open(int JobbNr, bool ÄrStandardJobb = false) {
        form.reset();
        form.emplace(world.program, JobbNr, ÄrStandardJobb, nullptr);
        form->show();
        form->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&*form));
    }
    int job(const char* name) { return JobFile(world.data).find(name)->number; }
    QListWidget& list(const char* name) { return control<QListWidget>(*form, name); }
    QLineEdit& field(const char* name) { return control<QLineEdit>(*form, name); }
    bool enabled(const char* name) { return control(*form, name).isEnabled(); }
    void press(const char* name) { control<QPushButton>(*form, name).click(); }
    void type(const char* name, const char* text) {
        field(name).setFocus();
        field(name).selectAll();
        QTest::keyClicks(&field(name), QString::fromUtf8(text));
    }
    std::vector<std::string> couplings() {
        std::vector<std::string> rows;
        for (const Coupling& coupling : CouplingFile(world.data).ofJob("(EIO)")) {
            rows.push_back(coupling.code + "=" + coupling.supplier + (coupling.mainSupplier ? " H" : ""));
        }
        return rows;
    }

    FormWorld world;
    std::optional<PrisStyr> form;
};

TEST_F(PrisStyrTest, AsksForWhatIsMissingAndSaves) {
    world.state.StandardFöretag.clear();
    open(0);
    EXPECT_EQ(form->windowTitle(), "Ny inläsning");
    type("Namn", "Ny");
    type("FilNamn", "Prisfiler\\SKRUV.TXT");
    list("Mask_Lista").setCurrentRow(1);
    EXPECT_FALSE(enabled("NyMask")) << "no company yet";
    world.boxPort.answers = {Answer::OK};
    press("Spara");
    EXPECT_EQ(world.boxPort.shown.back(), "Kolmera|" + world.texts.FormulärSträng(text::prisstyr::kNoCompany));
    EXPECT_EQ(form->focusWidget(), &list("FTG_Lista"));
    list("FTG_Lista").setCurrentRow(0);
    EXPECT_TRUE(enabled("ÖppnaMask") && enabled("NyMask"));
    const QString company = list("FTG_Lista").item(0)->text().section('\t', 0, 0);
    EXPECT_EQ(control<QLabel>(*form, "Lbl_Lev_Lista").text(),
              "Från &leverantör " + QString(company).replace("&", "&&") + " (Ftg1.Mdb)");
    selectRow(control<QTreeView>(*form, "Lev_Lista"), 2);
    world.boxPort.answers = {Answer::No};
    form->close();
    EXPECT_TRUE(form->isVisible()) << "left without asking";
    press("Spara");
    EXPECT_FALSE(form->isVisible());
    ASSERT_TRUE(form->savedJob());

    open(*form->savedJob());
    EXPECT_EQ(form->windowTitle(), "Inläsning - Ny");
    EXPECT_EQ(list("Mask_Lista").currentRow(), 1);
    EXPECT_EQ(control<QTreeView>(*form, "Lev_Lista").currentIndex().row(), 2);
    EXPECT_FALSE(control(*form, "LevPanel").isVisible());
    form->reject();
    EXPECT_FALSE(form->savedJob());
}

TEST_F(PrisStyrTest, MakesOpensAndDeletesMasks) {
    open(0);
    type("FilNamn", "Prisfiler\\SKRUV.TXT");
    const int masks = list("Mask_Lista").count();
    {
        const WhenShown editor("PrisMTyp", [](QDialog& mask) {
            QTest::keyClicks(&control(mask, "Namn"), "Skruvar");
            control<QPushButton>(mask, "Spara").click();
        });
        press("NyMask");
        EXPECT_TRUE(editor.came());
    }
    ASSERT_EQ(list("Mask_Lista").count(), masks + 1);
    EXPECT_EQ(list("Mask_Lista").currentItem()->text(), "Skruvar");
    {
        const WhenShown editor("PrisMTyp", [](QDialog& mask) {
            EXPECT_EQ(control<QLineEdit>(mask, "Namn").text(), "Skruvar");
            QTest::keyClick(&mask, Qt::Key_Escape);
        });
        QTest::keyClick(&list("Mask_Lista"), Qt::Key_Return);
        EXPECT_TRUE(editor.came());
    }
    world.boxPort.answers = {Answer::Yes};
    press("TaBortMask");
    EXPECT_EQ(list("Mask_Lista").count(), masks);
    EXPECT_FALSE(enabled("TaBortMask"));
}

TEST_F(PrisStyrTest, TakesAChosenFile) {
    open(0);
    std::vector<QString> asked;
    QString answer = "/priser/a.txt";
    form->chooseFile = [&](const QString& title, const QString& filter) {
        asked = {title, filter};
        return answer;
    };
    press("VäljFil");
    EXPECT_EQ(field("FilNamn").text(), answer);
    EXPECT_EQ(asked, (std::vector<QString>{"Sökväg och filnamn vid inläsning",
                                           toQt(world.texts.FormulärSträng(text::prisstyr::kPriceFileFilter))}));
    press("KompFil");
    EXPECT_EQ(field("KompFilNamn").text(), answer);
    EXPECT_EQ(asked[0], "Komprimerad fil");
    answer.clear();
    press("VäljFil");
    EXPECT_EQ(field("FilNamn").text(), "/priser/a.txt") << "cancelling empties the box";
    answer = QString(101, 'x');
    world.boxPort.answers = {Answer::OK};
    press("KompFil");
    EXPECT_EQ(field("KompFilNamn").text(), "/priser/a.txt") << "a path cut to the record's width";
}

TEST_F(PrisStyrTest, ShowsWhatAFileIsThatTheMaskCannotRead) {
    open(0);
    const QString csv = toQt((world.folder / "pris.csv").string());
    std::ofstream(world.folder / "pris.csv") << "Artikelnr;Namn;Pris\nA1;Sm\xC3\xB6rj;1,50\nA2;R\xC3\xB6r;2,50\n";
    form->chooseFile = [&](const QString&, const QString&) { return csv; };
    const WhenShown shown("SourceWindow", [](QDialog& window) { control<QPushButton>(window, "OK").click(); });
    press("VäljFil");
    EXPECT_TRUE(shown.came()) << "read as it is";
    const WhenShown again("SourceWindow", [](QDialog& window) {
        EXPECT_TRUE(control<QCheckBox>(window, "Omvandla").isChecked()) << "what was agreed to is not kept";
        QTest::keyClick(&window, Qt::Key_Escape);
    });
    press("Filformat");
    EXPECT_TRUE(again.came());
    world.boxPort.answers = {Answer::OK};
    type("FilNamn", "saknas.csv");
    press("Filformat");
}

TEST_F(PrisStyrTest, KeepsCouplingsByKeys) {
    open(job("(EIO)"), true);
    EXPECT_FALSE(enabled("Namn"));
    EXPECT_FALSE(control(*form, "Mask_Lista").isVisible());
    EXPECT_FALSE(control(*form, "Lev_Lista").isVisible());
    EXPECT_FALSE(control(*form, "AltPanel").isVisible());
    const int rows = list("LevLista").count();

    type("LevKod", "NYKOD");
    QTest::keyClick(&field("LevKod"), Qt::Key_Return);
    EXPECT_EQ(form->focusWidget(), &field("LevNummer"));
    type("LevNummer", "saknas");
    control<QCheckBox>(*form, "HuvudLev").setChecked(true);
    world.boxPort.answers = {Answer::Yes};
    QTest::keyClick(&*form, Qt::Key_F7);
    EXPECT_EQ(couplings().back(), "NYKOD=saknas H");
    EXPECT_EQ(list("LevLista").count(), rows + 1);
    EXPECT_EQ(list("LevLista").currentRow(), rows);
    EXPECT_EQ(form->focusWidget(), &field("LevKod"));

    type("LevKod", "nykod");
    world.boxPort.answers = {Answer::Yes};
    QTest::keyClick(&*form, Qt::Key_F7);
    EXPECT_EQ(couplings().back(), "NYKOD=saknas H") << "saved before it was looked up";
    type("LevKod", "nykod");
    QTest::keyClick(&field("LevKod"), Qt::Key_Return);
    EXPECT_EQ(field("LevNummer").text(), "saknas");
    QTest::keyClick(&*form, Qt::Key_Escape);
    EXPECT_TRUE(form->isVisible()) << "Escape cancels the coupling, not the window";
    EXPECT_EQ(field("LevNummer").text(), "");
    QTest::keyClick(&*form, Qt::Key_L, Qt::AltModifier);
    EXPECT_EQ(form->focusWidget(), &list("LevLista"));
    world.boxPort.answers = {Answer::Yes};
    QTest::keyClick(&*form, Qt::Key_F9);
    EXPECT_EQ(list("LevLista").count(), rows);
}

TEST_F(PrisStyrTest, FunctionKeysAreTheTradeFormatsOnly) {
    open(job("(EIO)"));
    QTest::keyClick(&*form, Qt::Key_L, Qt::AltModifier);
    EXPECT_EQ(form->focusWidget(), &control(*form, "Lev_Lista"));
    QTest::keyClick(&*form, Qt::Key_F9);
    QTest::keyClick(&*form, Qt::Key_Escape);
    EXPECT_FALSE(form->isVisible());
}

TEST_F(PrisStyrTest, SavesTheSettingsOfFinfo) {
    open(job("(FINFO)"), true);
    EXPECT_TRUE(control(*form, "AltPanel").isVisible());
    type("FromGrp", "1000");
    type("TomGrp", "1999");
    control<QComboBox>(*form, "CmbAltprodnr_1").setCurrentIndex(2);
    control<QComboBox>(*form, "CmbAltprodnr_2").setCurrentIndex(0);
    press("Spara");
    const Job saved = *JobFile(world.data).find("(FINFO)");
    EXPECT_EQ(saved.fromGroup + "-" + saved.toGroup, "1000-1999");
    EXPECT_EQ(std::pair(saved.heading1, saved.heading2), std::pair(2, 0));
}

TEST_F(PrisStyrTest, OpensManySuppliersAtOnce) {
    {
        ASSERT_TRUE(world.companies.ÖppnaDatabas("FTG1.MDB"));
        world.state.sql.FtgDB->execute(
            "INSERT INTO Leverantör (Nummer, Söknamn) WITH RECURSIVE n(i) AS (SELECT 100000 UNION ALL SELECT i + 1 "
            "FROM n WHERE i < 199999) SELECT i, 'Leverantör ' || i FROM n");
        world.state.sql.FtgDB.reset();
    }
    open(0);
    EXPECT_GE(control<QTreeView>(*form, "Lev_Lista").model()->rowCount(), 100000);
}

class PrisStyrTexts : public PrisStyrTest, public testing::WithParamInterface<const char*> {
  protected:
    PrisStyrTexts() : PrisStyrTest(GetParam()) {}
};

TEST_P(PrisStyrTexts, AreThoseOfTheLanguage) {
    const std::string language = GetParam();
    world.state.StandardFöretag.clear();  // a company would stand behind its label
    open(0);
    expectTextsInBothLanguages(*form, world);
    open(job("(EIO)") + 3);
    takePicture(*form, "prisstyr-mask-" + language);
    for (const char* name : {"(EIO)", "(FINFO)"}) {
        open(job(name), true);
        list("LevLista").setCurrentRow(0);
        takePicture(*form, std::string("prisstyr-") + (name[1] == 'E' ? "eio-" : "finfo-") + language);
    }
}

INSTANTIATE_TEST_SUITE_P(, PrisStyrTexts, testing::Values("SE", "EN"));

TEST_F(PrisStyrTest, KeepsTheLimitsOfAJob) {
    open(job("Smedhult verktyg"));
    const WhenShown asked("LimitsWindow", [&](QDialog& limits) {
        expectTextsInBothLanguages(limits, world);
        takePicture(limits, "limitswindow");
        const QList<QLineEdit*> fields = limits.findChildren<QLineEdit*>();
        ASSERT_EQ(static_cast<std::size_t>(fields.size()), std::size(kLimits));
        fields[2]->setText("1,2,3");
        world.boxPort.answers = {Answer::OK};
        control<QPushButton>(limits, "OK").click();
        EXPECT_TRUE(limits.isVisible()) << "what is no number was taken";
        world.boxPort.answers = {Answer::No};
        limits.close();
        EXPECT_TRUE(limits.isVisible()) << "changes thrown away";
        fields[2]->setText("12,5");
        control<QPushButton>(limits, "OK").click();
    });
    press("Gränser");
    EXPECT_TRUE(asked.came());
    press("Spara");
    EXPECT_EQ(JobOptionsFile(world.data).limits("Smedhult verktyg"), (Limits{.largestChange = 12.5}));
}

}  // namespace
}  // namespace kolmera
