#include "history/window/comparewindow.h"

#include <fmt/format.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTableView>
#include <QTest>

#include "definitions/targetcodes.h"
#include "history/runrecord.h"
#include "import/run/runcounts.h"
#include "platform/spreadsheet/workbook.h"
#include "platform/tsv.h"
#include "support/qt/formworld.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;
using namespace std::string_literals;

/// Two runs of one job through a mask that finds products by the supplier's article number: VF1 is another
/// supplier's article of the demo's first product; VF1 and VF2 are the supplier's of the next two.
class CompareWindowTest : public testing::Test {
  protected:
    explicit CompareWindowTest(const char* language = "SE") : world(Data::Demo, language) {
        const auto company = openFileDatabase(world.data / "FTG1.mdb", {});
        const auto products = company->open("Produkt", RecordsetType::Table);
        for (const auto& [article, supplier] : {std::pair("VF1", "9999"), std::pair("VF1", "3020"), {"VF2", "3020"}}) {
            numbers.emplace_back(textOf(products->value("Nummer")));
            products->edit();
            products->set("Levartikelnr", std::string(article));
            products->set("Leverantör", std::string(supplier));
            products->set("Benämning", fmt::format("Vara {} {}", article, supplier));
            products->update();
            products->moveNext();
        }
        keep("2026-11-21T08:15:00", {"VF1", "VF3", "=gone"});
        keep("2026-11-22T08:15:00", {"VF3", "VF2", "VF4"});
        form.emplace(world.program, folder, runs[1], std::vector{runs[0]}, nullptr);
        form->fileToWrite = [this](const FileQuestion&) { return toQt((world.folder / file).string()); };
        form->show();
        form->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&*form));
    }

    void keep(const char* started, const std::vector<std::string>& keys) {
        RunHeader head;
        head.job = "Höstlista";
        head.started = started;
        head.companyFile = "FTG1.MDB";
        head.priceFile.path = "/prisfiler/höst.txt";
        RunDefinition definition;
        definition.job.supplier = "3020";
        definition.mask.emplace().relations = {{.Källa = 1, .Mål = target("Nummer"), .Division = 'I'},
                                               {.Källa = 2, .Mål = target("Levartikelnr"), .Division = 'S'}};
        head.definition = definitionText(definition);
        RunRecord record(folder.path(), head);
        for (const std::string& key : keys) record.key(key);
        record.change([](RunHeader& header) { header.outcome = "completed"; });
        record.close();
        runs.push_back(record.header());
    }

    QTableView& list() { return control<QTableView>(*form, "Lista"); }
    std::string rows() {
        std::string text;
        for (int row = 0; row < list().model()->rowCount(); ++row) {
            for (int column = 0; column < ComparisonList::kColumns; ++column) {
                text += fromQt(list().model()->index(row, column).data().toString()) + '|';
            }
            text += '\n';
        }
        return text;
    }

    FormWorld world;
    RunFolder folder{world.data};
    std::vector<std::string> numbers;
    std::vector<RunHeader> runs;
    std::string file;
    std::optional<CompareWindow> form;
};

class CompareWindowInEnglish : public CompareWindowTest {
  protected:
    CompareWindowInEnglish() : CompareWindowTest("EN") {}
};

TEST_F(CompareWindowTest, ListsWhatCameAndWentWithTheirNames) {
    expectTextsInBothLanguages(*form, world);
    takePicture(*form, "comparewindow");
    const std::string second = fmt::format("Ny|VF2|{}|Vara VF2 3020|\n", numbers[2]);
    const std::string first = fmt::format("Inte i filen längre|VF1|{}|Vara VF1 3020|\n", numbers[1]);
    EXPECT_EQ(rows(), second + "Ny|VF4|||\nInte i filen längre|=gone|||\n" + first);
    control<QComboBox>(*form, "Slag").setCurrentIndex(2);
    EXPECT_EQ(control<QComboBox>(*form, "Slag").currentText(), "Inte längre i filen: 2");
    EXPECT_EQ(rows(), "Inte i filen längre|=gone|||\n" + first);
    list().setCurrentIndex(list().model()->index(0, ComparisonList::kName));
    QTest::keyClick(&list(), Qt::Key_F7);
    QTest::keyClick(&list(), Qt::Key_F7);
    EXPECT_EQ(rows(), first + "Inte i filen längre|=gone|||\n") << "not sorted by the name, backwards";
    QTest::keyClick(&list(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(fromQt(QApplication::clipboard()->text()),
              fmt::format("Inte i filen längre\tVF1\t{}\tVara VF1 3020\n", numbers[1]));
    QTest::keyClicks(&control<QLineEdit>(*form, "Filter"), "vara VF1");
    EXPECT_TRUE(eventually([&] { return rows() == first; })) << "not filtered as one types";
}

TEST_F(CompareWindowTest, SavesWhatItShows) {
    file = "articles.txt";
    QTest::keyClick(&list(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_NE(readWholeFile(world.folder / file).find("\r\nInte i filen längre\t'=gone\t\t\r\n"), std::string::npos);
    file = "articles.xlsx";
    QTest::keyClick(&list(), Qt::Key_S, Qt::ControlModifier);
    int articles = 0;
    readFirstSheet(world.folder / file, 4, [&](std::span<const Value> row) {
        articles += row[1] == Value("VF2"s) || row[1] == Value("=gone"s) ? 1 : 0;
    });
    EXPECT_EQ(articles, 2);
}

TEST_F(CompareWindowTest, TellsWhatCannotBeCompared) {
    keep("2026-11-23T08:15:00", {});
    CompareWindow none(world.program, folder, runs[2], {runs[1]}, nullptr);
    EXPECT_FALSE(control<QLabel>(none, "Anmärkning").text().isEmpty()) << "nothing left and nothing known look alike";
    world.boxPort.answers = {Answer::OK};
    compareRun(world.program, &*form, folder, runs[0], {runs[1], runs[0]});
    EXPECT_EQ(world.boxPort.shown.size(), 1U) << "compared with a later run";
}

TEST_F(CompareWindowInEnglish, ShowsItsTextsWhole) {
    expectTextsInBothLanguages(*form, world);
    takePicture(*form, "comparewindow_en");
}

}  // namespace
}  // namespace kolmera
