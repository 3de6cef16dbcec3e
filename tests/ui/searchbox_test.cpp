#include "ui/searchbox.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QStandardItemModel>
#include <QTest>
#include <QTreeView>

#include "ui/copyrows.h"
#include "ui/lists.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

class SearchBoxTest : public testing::Test {
  protected:
    SearchBoxTest() {
        const char* rows[][2] = {{"Skruv", "FTG1"}, {"Spik", "FTG2"}, {"Såg för trä", "FTG1"}};
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 2; ++column)
                model.setItem(row, column, new QStandardItem(QString::fromUtf8(rows[row][column])));
        }
        model.item(1, 0)->setData("4711", kSearchRole);
        list.setModel(&model);
        box = new SearchBox(list, form);
        list.setParent(&form);
        form.show();
    }
    std::string shown() {
        std::string names;
        for (int row = 0; row < model.rowCount(); ++row) {
            if (!list.isRowHidden(row, {})) names += fromQt(model.item(row, 0)->text()) + " ";
        }
        return names;
    }

    QStandardItemModel model{3, 2};
    QWidget form;
    QTreeView list;
    SearchBox* box;
};

TEST_F(SearchBoxTest, HidesWhatItDoesNotFind) {
    selectRow(list, 1);
    QTest::keyClicks(box, "s ftg1");
    EXPECT_EQ(shown(), "Skruv Såg för trä ");
    EXPECT_EQ(list.currentIndex().row(), 0) << "a row that is not seen is still worked on";
    box->setText("4711");
    EXPECT_EQ(shown(), "Spik ");
    box->setText("inget");
    EXPECT_FALSE(list.currentIndex().isValid());
    QTest::keyClick(box, Qt::Key_Escape);
    EXPECT_EQ(shown(), "Skruv Spik Såg för trä ");
    box->alsoShows = [](int row) { return row != 1; };
    box->apply();
    EXPECT_EQ(shown(), "Skruv Såg för trä ");
    box->setText("sp");
    model.appendRow(new QStandardItem("Spade"));
    EXPECT_EQ(shown(), "Spade ") << "a row that came later, or one that somebody else hides";
}

TEST_F(SearchBoxTest, KeysGoBetweenBoxAndList) {
    box->takeFindKey(form);
    static_cast<void>(QTest::qWaitForWindowActive(&form));
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(box->hasFocus());
    QTest::keyClick(box, Qt::Key_Down);
    EXPECT_TRUE(list.hasFocus());
}

TEST_F(SearchBoxTest, RowsAreCopiedAsTheyAreShown) {
    copyRowsOnKey(list);
    list.setSelectionMode(QAbstractItemView::ExtendedSelection);
    list.selectAll();
    list.header()->moveSection(1, 0);
    model.item(2, 0)->setText(QString::fromUtf8("Såg\nför trä"));
    QTest::keyClick(&list, Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(fromQt(QApplication::clipboard()->text()), "FTG1\tSkruv\nFTG2\tSpik\nFTG1\tSåg för trä\n");
    list.setColumnHidden(1, true);
    list.selectionModel()->select(model.index(1, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    EXPECT_EQ(fromQt(textOfRows(list)), "Spik\n");
}

}  // namespace
}  // namespace kolmera
