#include "ui/lists.h"

#include <QHeaderView>
#include <QTreeView>

#include "ui/tabstopdelegate.h"

namespace kolmera {
namespace {

constexpr int kNone = -1;

}  // namespace

void selectRow(QAbstractItemView& list, int row) {
    const QModelIndex index = list.model()->index(row, 0);
    if (!index.isValid()) list.clearSelection();
    list.setCurrentIndex(index);
    if (index.isValid()) list.scrollTo(index);
}

void sortByHeaderClicks(QTreeView& list) {
    list.header()->setSortIndicator(kNone, Qt::AscendingOrder);
    list.setSortingEnabled(true);
}

void setTabStops(QAbstractItemView& list, std::vector<int> dialogUnits) {
    list.setItemDelegate(new TabStopDelegate(list, std::move(dialogUnits)));
}

}  // namespace kolmera
