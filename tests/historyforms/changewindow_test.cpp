#include "history/window/changewindow.h"

#include <fmt/format.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include "db/productcolumns.h"
#include "lang/keys/changes.h"
#include "platform/spreadsheet/workbook.h"
#include "platform/tsv.h"
#include "support/qt/formworld.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

using namespace test;
using namespace std::string_literals;

constexpr int kInpris = ordinal(kProdukt, "Inpris"), kUtpris = utprisOrdinal(1), kNumber = 1, kName = 6;

/// A preview: 200 products dearer by 0 to 30 per cent, one that is new and called like a formula, one ten times as
/// dear.
RecordSource preview() {
    RecordSource source;
    source.header.kind = RunKind::Preview;
    source.header.job = "Nordkabel";
    source.header.started = "2026-11-23T08:15:00";
    source.header.companyName = "Demoföretaget";
    source.header.priceFile.path = "/tmp/priser.txt";
    source.header.counts = R"({"records": 240, "skipped": 3, "changed": 236})";
    source.forEachChange = [](const auto& take) {
        const Value none;
        RowChange change;
        change.table = "Produkt";
        for (int id = 1; id <= 200; ++id) {
            change = {ChangeKind::Changed, "Produkt", id, id, fmt::format("E{}", id), {}};
            const double before = 10 + id;
            change.cells = {{kInpris, before, before * (1 + id % 31 / 100.0)}, {kUtpris, before * 2, before * 2.5}};
            take(change);
        }
        take({ChangeKind::Changed, "Produkt", 201, 201, "E201", {{kInpris, 12.5, 125.0}}});
        take({ChangeKind::Added,
              "Produkt",
              202,
              202,
              "E202",
              {{kNumber, none, "E202"s}, {kName, none, "=1+<b>1</b>"s}, {kInpris, none, 3.5}}});
    };
    source.forEachRemark = [](const auto& take) {
        for (const std::int64_t record : {7, 9}) {
            RecordRemark remark;
            remark.kind = "not_numbers";
            remark.record = record;
            take(remark);
        }
    };
    return source;
}

class ChangeWindowTest : public testing::Test {
  protected:
    explicit ChangeWindowTest(const char* language = "SE")
        : world(Data::Empty, language),
          report(preview(), world.texts, world.state.locale, [](std::string_view) { return "Inte tal"s; }) {
        report.read([](std::int64_t) { return true; });
        report.warn({{.warning = true, .name = {}, .text = "Ett pris blev tio gånger så högt", .records = {201}}});
        form.emplace(world.program, report, nullptr);
        form->fileToWrite = [this](const FileQuestion&) { return toQt((world.folder / file).string()); };
        form->showRecords = [this](QWidget*, const auto& records, std::size_t first) {
            shownRecord = records.at(first);
            shownRecords = records.size();
        };
        form->explainPrice = [this](QWidget*, const std::string& product, const std::string& column) {
            explained = product + ' ' + column;
        };
        form->load();
        form->show();
        form->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&*form));
    }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(form->focusWidget(), key, modifiers);
    }
    void type(const char* text) { QTest::keyClicks(form->focusWidget(), QString::fromUtf8(text)); }
    QTableView& list() { return control<QTableView>(*form, "Lista"); }
    int rows() { return list().model()->rowCount(); }
    std::string cell(int row, int column) { return fromQt(list().model()->index(row, column).data().toString()); }

    FormWorld world;
    ChangeReport report;
    std::optional<ChangeWindow> form;
    std::string file;
    std::int64_t shownRecord = 0;
    std::size_t shownRecords = 0;
    std::string explained;
};

class ChangeWindowInEnglish : public ChangeWindowTest {
  protected:
    ChangeWindowInEnglish() : ChangeWindowTest("EN") {}
};

TEST_F(ChangeWindowTest, IsReadFilteredSortedAndCopiedByKeys) {
    expectTextsInBothLanguages(*form, world);
    takePicture(*form, "changewindow");
    EXPECT_EQ(rows(), 404);  // what did not change is not there: 6 of 200 are dearer by nothing
    type("e201");
    key(Qt::Key_Return);
    ASSERT_EQ(rows(), 1);
    EXPECT_EQ(cell(0, ChangeTable::kPercent), "+900,0 %");
    key(Qt::Key_A, Qt::ControlModifier);
    type("E20 inpris");
    EXPECT_TRUE(eventually([&] { return rows() == 4; })) << "not filtered as one types";  // E20, E200, E201, E202
    list().setFocus();
    list().setCurrentIndex(list().model()->index(0, ChangeTable::kBefore));
    key(Qt::Key_F7);
    EXPECT_EQ(cell(0, ChangeTable::kProduct), "E202");
    key(Qt::Key_F7);
    EXPECT_EQ(cell(0, ChangeTable::kProduct), "E200");
    key(Qt::Key_Return);
    EXPECT_EQ(shownRecord, 200);
    key(Qt::Key_F8);
    EXPECT_EQ(explained, "E200 Produkt.Inpris");
    key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_TRUE(QApplication::clipboard()->text().startsWith("E200\t")) << fromQt(QApplication::clipboard()->text());
}

TEST_F(ChangeWindowTest, ShowsTheRecordsOfANotice) {
    auto& notices = control<QListWidget>(*form, "Notiser");
    ASSERT_EQ(notices.count(), 2);
    EXPECT_EQ(notices.item(1)->text(), "Inte tal: 2");
    const int all = rows();
    notices.setFocus(Qt::TabFocusReason);
    EXPECT_EQ(rows(), all) << "filtered by going through with Tab";
    key(Qt::Key_Space);
    ASSERT_EQ(rows(), 1);
    EXPECT_EQ(cell(0, ChangeTable::kProduct), "E201");
    key(Qt::Key_Down);
    EXPECT_EQ(cell(0, ChangeTable::kProduct), "E7");
    key(Qt::Key_Return);
    EXPECT_EQ(std::pair(shownRecord, shownRecords), std::pair(std::int64_t{7}, std::size_t{2}))
        << "not from the notice";
    control<QComboBox>(*form, "Grupp").setCurrentIndex(1);
    EXPECT_EQ(cell(0, ChangeTable::kColumn), "ändringar: 2");
    takePicture(*form, "changewindow_grouped");
}

TEST_F(ChangeWindowTest, SavesWhatItShows) {
    type("e202");
    key(Qt::Key_Return);
    const auto save = [&](const char* name) {
        file = name;
        key(Qt::Key_S, Qt::ControlModifier);
        return readWholeFile(world.folder / name);
    };
    EXPECT_EQ(save("list.txt").substr(0, 18), "Produkt\tBenämning");
    const QModelIndex name = list().model()->index(0, ChangeTable::kName);
    EXPECT_EQ(name.data(Qt::ToolTipRole).toString(), "<qt>=1+&lt;b&gt;1&lt;/b&gt;</qt>") << "shown in bold letters";
    EXPECT_NE(save("list.txt").find("\t'=1+<b>1</b>\t"), std::string::npos);
    EXPECT_EQ(save("list.pdf").substr(0, 5), "%PDF-");
    save("list.xlsx");
    int cells = 0;
    readFirstSheet(world.folder / "list.xlsx", 5, [&](std::span<const Value> row) {
        cells += row[2] != Value("Inpris"s) || row[4] == Value(3.5) ? 1 : 0;
    });
    EXPECT_EQ(cells, 3);
    world.boxPort.answers = {Answer::OK};
    file = "no folder/list.txt";
    key(Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(world.boxPort.shown.size(), 1U);
}

TEST_F(ChangeWindowInEnglish, ShowsItsTextsWhole) {
    expectTextsInBothLanguages(*form, world);
    takePicture(*form, "changewindow_en");
    control<QPushButton>(*form, "Utför").click();
    EXPECT_TRUE(form->runs());
}

}  // namespace
}  // namespace kolmera
