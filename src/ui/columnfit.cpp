#include "ui/columnfit.h"

#include <QHeaderView>
#include <QScopedValueRollback>
#include <QTreeView>
#include <algorithm>

namespace kolmera {

ColumnFit::ColumnFit(QTreeView& list) : QObject(&list), list_(list) {
    connect(list.header(), &QHeaderView::sectionResized, this, [this](int section) {
        // The last one follows the window.
        const QHeaderView& header = *list_.header();
        if (!fits_ && header.visualIndex(section) != header.count() - 1) given_ = true;
    });
}

void ColumnFit::fit(int most) {
    if (given_) return;
    const QScopedValueRollback fits(fits_, true);
    for (int column = 0; column < list_.header()->count(); ++column) {
        list_.resizeColumnToContents(column);
        list_.setColumnWidth(column, std::min(list_.columnWidth(column), most));
    }
}

}  // namespace kolmera
