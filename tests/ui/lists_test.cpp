#include "ui/lists.h"

#include <gtest/gtest.h>

#include <QHeaderView>
#include <QLineEdit>
#include <QStandardItemModel>
#include <QTest>
#include <QTreeView>

#include "ui/fields.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

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
    list.show();
    const QHeaderView& header = *list.header();
    const auto click = [&header](int column) {
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, QPoint(header.sectionViewportPosition(column) + 4, 4));
    };
    click(0);
    EXPECT_EQ(order(), "abc");
    click(0);
    EXPECT_EQ(order(), "cba");
    click(1);
    EXPECT_EQ(order(), "bac") << "another column begins ascending";
}

TEST(Fields, AreEmptiedAndMarked) {
    QLineEdit first("1"), second("SEK"), third("2,5");
    QLineEdit* const fields[] = {&first, &second, &third};
    RensaFält(fields, 0, 1);
    EXPECT_EQ(first.text() + second.text() + third.text(), "2,5");
    MarkeraText(third, false);
    EXPECT_EQ(third.selectedText(), "2,5");
}

}  // namespace
}  // namespace kolmera
