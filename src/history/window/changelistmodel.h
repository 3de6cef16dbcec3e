#pragma once

#include <QAbstractTableModel>
#include <QCache>
#include <functional>
#include <vector>

#include "history/changetable.h"

namespace kolmera {

/// Shows a list of changes in a view. The rows are read a page at a time as the view asks for them, and the last pages
/// are kept, so that a million open and scroll at once.
class ChangeListModel final : public QAbstractTableModel {
  public:
    ChangeListModel(ChangeList& list, const ChangeTable& table, QObject* parent);

    std::function<void()> onSorted;

    /// Shows other rows, sorted as the headings were last asked for. The view begins anew.
    void show(ChangeQuery query);
    [[nodiscard]] const ChangeQuery& query() const { return query_; }
    /// The row at that place, until the next call.
    [[nodiscard]] const ChangeRow& row(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    void sort(int column, Qt::SortOrder order) override;

  private:
    struct Page {
        std::vector<ChangeRow> rows;
        std::vector<ChangeTable::Cells> cells;
    };
    [[nodiscard]] const Page& pageOf(int row) const;

    ChangeList& list_;
    const ChangeTable& table_;
    ChangeQuery query_;
    mutable QCache<int, Page> pages_;
};

}  // namespace kolmera
