#include "ui/lists.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QListWidget>
#include <QStandardItemModel>
#include <QTest>
#include <QTreeView>

#include "support/testcompany.h"
#include "ui/fields.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

std::string textOfSelected(const QAbstractItemView& list) { return fromQt(list.currentIndex().data().toString()); }

class ListsTest : public testing::Test {
  protected:
    ListsTest() { list.addItems({"Arken\tFTG1.MDB", "Berget\tFTG2.MDB", "berget AB\tFTG3.MDB", "Utan kod"}); }
    QListWidget list;
};

TEST_F(ListsTest, VäljListradEfterKod) {
    VäljListradEfterKod(list, "ftg2.mdb");
    EXPECT_EQ(selectedRow(list), 1);
    VäljListradEfterKod(list, "FTG9.MDB");
    EXPECT_EQ(selectedRow(list), 1) << "an unknown code moved the selection";
    VäljListradEfterKod(list, "Utan kod");
    EXPECT_EQ(selectedRow(list), 1) << "a row without a tab has no code";
    list.addItem("SQL;Dalen\tPå servern");
    VäljListradEfterKod(list, "Sql;dalen");
    EXPECT_EQ(selectedRow(list), 4) << "the description of a server's company is no code";
    QComboBox box;
    box.addItems({"Arken\tFTG1.MDB", "Berget\tFTG2.MDB"});
    VäljListradEfterKod(box, " FTG2.mdb");
    EXPECT_EQ(box.currentIndex(), 1);
}

TEST_F(ListsTest, VäljListradEfterText) {
    VäljListradEfterText(list, "ber");
    EXPECT_EQ(selectedRow(list), 2) << "letter case counts";
    EXPECT_TRUE(list.item(2)->isSelected());
    VäljListradEfterText(list, "get");
    EXPECT_EQ(selectedRow(list), -1) << "without a match nothing is selected";
    EXPECT_TRUE(list.selectedItems().isEmpty());
}

TEST(ListColumns, HeaderClicksSortAndReverse) {
    QStandardItemModel model(3, 2);
    const char* texts[] = {"b", "a", "c"};
    for (int row = 0; row < 3; ++row) {
        model.setItem(row, 0, new QStandardItem(texts[row]));
        model.setItem(row, 1, new QStandardItem(QString::number(row)));
    }
    QTreeView list;
    list.setModel(&model);
    sortByHeaderClicks(list);
    const auto order = [&model] {
        std::string rows;
        for (int row = 0; row < model.rowCount(); ++row) rows += fromQt(model.item(row, 0)->text());
        return rows;
    };
    EXPECT_EQ(order(), "bac") << "sorted before anybody asked";
    SorteraKolumn(list, 0);
    EXPECT_EQ(order(), "abc");
    SorteraKolumn(list, 0);
    EXPECT_EQ(order(), "cba");
    SorteraKolumn(list, 1);
    EXPECT_EQ(order(), "bac") << "another column begins ascending";
    list.show();
    const QHeaderView& header = *list.header();
    for (int clicks = 0; clicks < 2; ++clicks) {
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, QPoint(header.sectionViewportPosition(0) + 4, 4));
    }
    EXPECT_EQ(order(), "cba");
}

/// Three currencies with their IDs in a list, and fields that show them.
class RecordListTest : public testing::Test {
  protected:
    RecordListTest() {
        for (const char* code : {"SEK", "EUR", "D'X"}) company.add("Syvaluta", {{"Kod", code}, {"Kundreskontra", 2.5}});
        records =
            company.sql.FtgDB->open("SELECT ID, Kod, Kundreskontra FROM Syvaluta ORDER BY ID", RecordsetType::Dynaset);
        for (; !records->eof(); records->moveNext()) {
            auto* item = new QListWidgetItem(toQt(textOf(records->value("Kod"))), &list);
            item->setData(kIdRole, QVariant::fromValue<qlonglong>(recordId(*records)));
        }
        records->moveFirst();
    }

    test::TestCompany company;
    std::unique_ptr<Recordset> records;
    QListWidget list;
    QLineEdit id, kod, kurs;
    std::vector<QLineEdit*> fields{&id, &kod, &kurs};
};

TEST_F(RecordListTest, RowsAreFoundAndRemovedById) {
    records->findFirst("Kod = 'EUR'");
    VäljListradEfterId(*records, list);
    EXPECT_EQ(textOfSelected(list), "EUR");
    records->findFirst("Kod = 'SEK'");
    TaBortListradEfterId(*records, list);
    EXPECT_EQ(list.count(), 2);
    EXPECT_EQ(list.item(0)->text(), "EUR");
    VäljListradEfterId(*records, list);
    EXPECT_EQ(textOfSelected(list), "EUR") << "without its row the selection stays";
}

TEST_F(RecordListTest, SökPostShowsTheRecordOfTheFirstField) {
    const Locale swedish(Locale::Kind::Swedish);
    const struct {
        const char* fault;
        int from;
        const char* typed;
        const char* found;
    } cases[] = {
        {"text not in quotes", 1, "EUR", "EUR"},
        {"apostrophe ends the literal", 1, "D'X", "D'X"},
        {"unknown text changes the selection", 1, "QQQ", "D'X"},
        {"number in quotes", 0, "1", "SEK"},
        {"number text became part of the criterion", 0, "1 OR 1 = 1", "SEK"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        for (QLineEdit* field : fields) field->clear();
        fields[static_cast<std::size_t>(c.from)]->setText(c.typed);
        SökPost(c.from, 2, *records, fields, list, swedish);
        EXPECT_EQ(textOfSelected(list), c.found);
        EXPECT_EQ(kurs.text(), c.typed == std::string("QQQ") || c.typed == std::string("1 OR 1 = 1") ? "" : "2,5");
    }
}

TEST_F(RecordListTest, FieldsAreFilledEmptiedAndMarked) {
    FyllFältFrånPost(1, 2, *records, fields, Locale(Locale::Kind::Swedish));
    EXPECT_EQ(id.text() + kod.text() + kurs.text(), "SEK2,5");
    RensaFält(fields, 1, 1);
    EXPECT_EQ(kod.text() + kurs.text(), "2,5");
    MarkeraText(kurs, false);
    EXPECT_EQ(kurs.selectedText(), "2,5");
}

}  // namespace
}  // namespace kolmera
