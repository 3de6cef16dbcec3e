#include "history/window/runswindow.h"

#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <fstream>

#include "db/conversions.h"
#include "history/runrecord.h"
#include "support/qt/formworld.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;
using namespace std::string_literals;

/// Three runs that changed the price of the demo's first product by the second record of a file: two of one company,
/// one of another, which was cut short.
class RunsWindowTest : public testing::Test {
  protected:
    explicit RunsWindowTest(const char* language = "SE") : world(Data::Demo, language) {
        std::ofstream(priceFile, std::ios::binary) << "A0;1\r\nA1;2\r\n\xC5l;3\r\n";
        keep("Första", "Demoföretaget", true);
        keep("Andra", "Demoföretaget", true);
        keep("Tredje", "Annat företag", false);
        std::ofstream(world.data / "Körningar" / "20260101-000000-abcd.kmr") << "no record";
        form.emplace(world.program, nullptr);
        form->show();
        form->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&*form));
    }

    void keep(const char* job, const char* name, bool ends) {
        RunHeader head;
        head.job = job;
        head.companyName = name;
        head.companyFile = "FTG1.MDB";
        head.started = "2026-11-2" + std::to_string(++runs) + "T08:15:00";
        head.priceFile.path = priceFile.string();
        head.priceFile.size = 16;
        RunRecord record(world.data / "Körningar", head);
        const auto company = openFileDatabase(world.data / "FTG1.mdb", {});
        company->listen(&record);
        record.at({.record = 2, .offset = 6, .length = 6});
        const auto products = company->open("Produkt", RecordsetType::Table);
        product = TillText(products->value("Nummer"), world.state.locale);
        products->edit();
        products->set("Inpris", 1000.0 + runs);
        products->update();
        company->listen(nullptr);
        record.change([&](RunHeader& header) {
            header.counts = R"({"records": 1234, "new": 1, "changed": 7})";
            if (ends) header.ended = header.started;
            header.outcome = ends ? "done" : "";
        });
        record.close();
    }

    QTableView& list() { return control<QTableView>(*form, "Lista"); }
    std::string cell(int row, int column) { return fromQt(list().model()->index(row, column).data().toString()); }

    FormWorld world;
    std::filesystem::path priceFile = world.folder / "prices.txt";
    int runs = 0;
    std::string product;
    std::optional<RunsWindow> form;
};

TEST_F(RunsWindowTest, TakesARunBackAndTellsWhatStays) {
    std::string outcome, kept;
    world.boxPort.answers = {Answer::Yes};
    const WhenShown window("UndoWindow", [&](QDialog& told) {
        outcome = fromQt(control<QLabel>(told, "Utfall").text());
        kept = fromQt(control<QPlainTextEdit>(told, "Kvar").toPlainText());
        expectTextsInBothLanguages(told, world);
        takePicture(told, "undowindow");
        told.accept();
    });
    list().setCurrentIndex(list().model()->index(1, 0));  // the price that it left has been changed by the third run
    control<QPushButton>(*form, "Ångra").click();
    EXPECT_TRUE(window.came());
    EXPECT_NE(outcome.find("utom det som står kvar"), std::string::npos) << outcome;
    EXPECT_NE(kept.find("Inpris: \"1001\" > \"1002\" > \"1003\""), std::string::npos) << kept;
    EXPECT_EQ(list().model()->rowCount(), 3) << "nothing was taken back, and yet there is a record of it";
}

class RunsWindowInEnglish : public RunsWindowTest {
  protected:
    RunsWindowInEnglish() : RunsWindowTest("EN") {}
};

TEST_F(RunsWindowTest, ListsShowsAndForgetsRuns) {
    expectTextsInBothLanguages(*form, world);
    takePicture(*form, "runswindow");
    ASSERT_EQ(list().model()->rowCount(), 3);
    EXPECT_EQ(cell(0, RunList::kJob) + " " + cell(0, RunList::kOutcome), "Tredje Nådde inte sitt slut");
    EXPECT_EQ(cell(2, RunList::kRecords), "1\u00A0234");
    EXPECT_EQ(control<QLabel>(*form, "Anmärkning").text(), "Filer bland körningarna som inte går att läsa: 1");
    control<QComboBox>(*form, "Företag").setCurrentText("Demoföretaget");
    ASSERT_EQ(list().model()->rowCount(), 2);
    EXPECT_EQ(cell(0, RunList::kJob), "Andra");
    world.boxPort.answers = {Answer::No, Answer::Yes};
    QTest::keyClick(&list(), Qt::Key_F9);
    EXPECT_EQ(list().model()->rowCount(), 2);
    QTest::keyClick(&list(), Qt::Key_F9);
    EXPECT_EQ(list().model()->rowCount(), 1);
}

TEST_F(RunsWindowTest, TellsHowMuchAnUndoGaveBack) {
    RunHeader head;
    head.kind = RunKind::Undo;
    head.started = head.ended = "2026-11-29T08:15:00";
    head.outcome = "completed";
    head.counts = R"({"rows":9,"changed_back":3,"removed":1,"brought_back":2,"as_before":1,"kept":2})";
    head.priceFile.path = "/prisfiler/höst.txt";
    RunRecord(world.data / "Körningar", head).close();
    RunsWindow again(world.program, nullptr);
    const QAbstractItemModel& rows = *control<QTableView>(again, "Lista").model();
    EXPECT_EQ(rows.index(0, RunList::kOutcome).data().toString(), "Klar, rader tillbaka: 6, står kvar: 2");
    EXPECT_EQ(rows.index(0, RunList::kPriceFile).data().toString(), "höst.txt");
    EXPECT_EQ(rows.index(0, RunList::kPriceFile).data(Qt::ToolTipRole).toString(), "/prisfiler/höst.txt");
}

TEST_F(RunsWindowTest, ShowsTheRecordInItsPriceFile) {
    std::string shown, marked, remark;
    const WhenShown window("ChangeWindow", [&](QDialog& changes) {
        auto& rows = control<QTableView>(changes, "Lista");
        shown = fromQt(rows.model()->index(0, 0).data().toString() + ' ' + rows.model()->index(0, 4).data().toString());
        const WhenShown excerpt("ExcerptWindow", [&](QDialog& text) {
            marked = fromQt(control<QPlainTextEdit>(text, "Text").extraSelections().value(0).cursor.selectedText());
            remark = fromQt(control<QLabel>(text, "Anmärkning").text());
            expectTextsInBothLanguages(text, world);
            takePicture(text, "excerptwindow");
            text.reject();
        });
        control<QPushButton>(changes, "Visa").click();
        EXPECT_TRUE(excerpt.came());
        changes.reject();
    });
    QTest::keyClick(&list(), Qt::Key_Return);
    EXPECT_TRUE(window.came());
    EXPECT_EQ(shown, product + " 1003");
    EXPECT_EQ(marked, "A1;2\u2029");
    EXPECT_EQ(remark, "Prisfilen har ändrats sedan den lästes. Det som visas kan vara en annan post.");
}

TEST_F(RunsWindowInEnglish, ShowsItsTextsWhole) {
    expectTextsInBothLanguages(*form, world);
    takePicture(*form, "runswindow_en");
}

}  // namespace
}  // namespace kolmera
