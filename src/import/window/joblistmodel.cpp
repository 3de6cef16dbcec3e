#include "import/window/joblistmodel.h"

#include <utility>

#include "ui/plaintooltip.h"
#include "ui/qttext.h"
#include "ui/searchbox.h"

namespace kolmera {

void JobListModel::setHeaders(const std::array<QString, JobTable::kColumns>& headers) {
    headers_ = headers;
    emit headerDataChanged(Qt::Horizontal, 0, JobTable::kColumns - 1);
}

void JobListModel::setIcons(QIcon mask, QIcon tradeFormat) {
    mask_ = std::move(mask);
    tradeFormat_ = std::move(tradeFormat);
    if (rowCount() > 0) emit dataChanged(index(0, 0), index(rowCount() - 1, 0), {Qt::DecorationRole});
}

void JobListModel::fill(std::vector<JobRow> rows, int JobbNr, std::string_view savedName) {
    beginResetModel();
    table_.fill(std::move(rows), JobbNr, savedName);
    endResetModel();
}

void JobListModel::tellLastRuns(std::map<std::string, std::string> lastRuns) {
    table_.tellLastRuns(std::move(lastRuns));
    if (rowCount() > 0) emit dataChanged(index(0, JobTable::kLastRun), index(rowCount() - 1, JobTable::kLastRun));
}

int JobListModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : table_.count(); }

int JobListModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : JobTable::kColumns; }

QVariant JobListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const auto column = static_cast<JobTable::Column>(index.column());
    switch (role) {
        case Qt::DisplayRole:
            return toQt(table_.text(index.row(), column));
        case Qt::ToolTipRole:
            // A path is shown without its middle when the column is narrow.
            return column == JobTable::kPriceFile ? plainToolTip(toQt(table_.text(index.row(), column))) : QVariant();
        case Qt::DecorationRole:
            if (column != JobTable::kName) return {};
            return table_.row(index.row()).tradeFormat ? tradeFormat_ : mask_;
        case kSearchRole:
            return column == JobTable::kName ? toQt(table_.hiddenText(index.row())) : QVariant();
        default:
            return {};
    }
}

QVariant JobListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    return headers_.at(static_cast<std::size_t>(section));
}

void JobListModel::sort(int column, Qt::SortOrder order) {
    if (column < 0 || column >= JobTable::kColumns) return;
    emit layoutAboutToBeChanged();
    const QModelIndexList before = persistentIndexList();
    std::vector<int> jobs;
    for (const QModelIndex& index : before) jobs.push_back(table_.row(index.row()).job.number);
    table_.sort(static_cast<JobTable::Column>(column), order == Qt::DescendingOrder);
    QModelIndexList after;
    for (qsizetype i = 0; i < before.size(); ++i) {
        after.append(index(table_.rowOf(jobs[static_cast<std::size_t>(i)]), before[i].column()));
    }
    changePersistentIndexList(before, after);
    emit layoutChanged();
}

}  // namespace kolmera
