#include "ui/copyrows.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QTableView>
#include <QTreeView>
#include <algorithm>
#include <vector>

namespace kolmera {
namespace {

const QHeaderView* headerOf(const QAbstractItemView& list) {
    if (const auto* table = dynamic_cast<const QTableView*>(&list)) return table->horizontalHeader();
    if (const auto* tree = dynamic_cast<const QTreeView*>(&list)) return tree->header();
    return nullptr;
}

/// The columns in the order shown.
std::vector<int> columnsOf(const QAbstractItemView& list) {
    const QHeaderView* header = headerOf(list);
    std::vector<int> columns;
    for (int place = 0; place < list.model()->columnCount(); ++place) {
        const int column = header == nullptr ? place : header->logicalIndex(place);
        if (header == nullptr || !header->isSectionHidden(column)) columns.push_back(column);
    }
    return columns;
}

class CopiesOnKey final : public QObject {
  public:
    explicit CopiesOnKey(QAbstractItemView& list) : QObject(&list), list_(list) { list.installEventFilter(this); }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() != QEvent::KeyPress || !static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy))
            return false;
        copyRows(list_);
        return true;
    }

  private:
    QAbstractItemView& list_;
};

}  // namespace

QString textOfRows(const QAbstractItemView& list) {
    std::vector<int> rows;
    const auto* table = dynamic_cast<const QTableView*>(&list);
    for (const QModelIndex& index : list.selectionModel()->selectedIndexes()) {
        if (table == nullptr || !table->isRowHidden(index.row())) rows.push_back(index.row());
    }
    std::ranges::sort(rows);
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    const std::vector<int> columns = columnsOf(list);
    QString text;
    for (const int row : rows) {
        QStringList cells;
        for (const int column : columns) {
            // A line end within a cell would begin another row.
            cells += list.model()->index(row, column).data().toString().replace(QLatin1Char('\n'), QLatin1Char(' '));
        }
        text += cells.join(QLatin1Char('\t')) + QLatin1Char('\n');
    }
    return text;
}

void copyRows(const QAbstractItemView& list) {
    if (const QString text = textOfRows(list); !text.isEmpty()) QApplication::clipboard()->setText(text);
}

void copyRowsOnKey(QAbstractItemView& list) { new CopiesOnKey(list); }

}  // namespace kolmera
