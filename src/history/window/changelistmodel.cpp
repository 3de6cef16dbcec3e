#include "history/window/changelistmodel.h"

#include <QFont>
#include <QGuiApplication>
#include <QPalette>
#include <memory>
#include <utility>

#include "ui/plaintooltip.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kRowsOfPage = 128, kPages = 64;

bool isNumber(int column, const ChangeRow& row) {
    if (column == ChangeTable::kPercent || column == ChangeTable::kRecord) return true;
    if (column == ChangeTable::kBefore) return textOf(row.before).empty();
    return column == ChangeTable::kAfter && textOf(row.after).empty();
}

}  // namespace

ChangeListModel::ChangeListModel(ChangeList& list, const ChangeTable& table, QObject* parent)
    : QAbstractTableModel(parent), list_(list), table_(table), pages_(kPages) {}

void ChangeListModel::show(ChangeQuery query) {
    query.sort = query_.sort;
    query.descending = query_.descending;
    beginResetModel();
    pages_.clear();
    query_ = std::move(query);
    list_.show(query_);
    endResetModel();
}

const ChangeListModel::Page& ChangeListModel::pageOf(int row) const {
    const int number = row / kRowsOfPage;
    if (const Page* kept = pages_.object(number)) return *kept;
    auto page = std::make_unique<Page>();
    page->rows = list_.rows(std::int64_t{number} * kRowsOfPage, kRowsOfPage);
    for (const ChangeRow& each : page->rows) page->cells.push_back(table_.cells(each));
    const Page& made = *page;
    pages_.insert(number, page.release());
    return made;
}

const ChangeRow& ChangeListModel::row(int row) const {
    return pageOf(row).rows[static_cast<std::size_t>(row % kRowsOfPage)];
}

int ChangeListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(list_.count());
}

int ChangeListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ChangeTable::kColumns;
}

QVariant ChangeListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const auto place = static_cast<std::size_t>(index.row() % kRowsOfPage);
    const Page& page = pageOf(index.row());
    const ChangeRow& row = page.rows[place];
    switch (role) {
        case Qt::DisplayRole:
            return toQt(page.cells[place].at(static_cast<std::size_t>(index.column())));
        case Qt::ToolTipRole:
            return plainToolTip(toQt(page.cells[place].at(static_cast<std::size_t>(index.column()))));
        case Qt::TextAlignmentRole:
            return static_cast<int>(Qt::AlignVCenter |
                                    (isNumber(index.column(), row) ? Qt::AlignRight : Qt::AlignLeft));
        case Qt::FontRole: {
            if (row.members == 0) return {};
            QFont bold;
            bold.setBold(true);
            return bold;
        }
        case Qt::BackgroundRole:
            return row.members > 0 ? QVariant(QGuiApplication::palette().brush(QPalette::AlternateBase)) : QVariant();
        default:
            return {};
    }
}

QVariant ChangeListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    return toQt(table_.headings().at(static_cast<std::size_t>(section)));
}

void ChangeListModel::sort(int column, Qt::SortOrder order) {
    if (column < 0) return;
    query_.sort = ChangeTable::sortOf(column);
    query_.descending = order == Qt::DescendingOrder;
    show(query_);
    if (onSorted) onSorted();
}

}  // namespace kolmera
