#pragma once

#include <QAbstractTableModel>
#include <vector>

#include "definitions/supplierlist.h"

namespace kolmera {

/// Shows a company's suppliers in a grid: number and search name. Rows are read from the list as the view asks for
/// them, so that a hundred thousand open at once.
class SupplierModel final : public QAbstractTableModel {
  public:
    SupplierModel(const std::vector<SupplierRow>& suppliers, QObject* parent)
        : QAbstractTableModel(parent), suppliers_(suppliers) {}

    /// The list has been read anew.
    void refresh();

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

  private:
    const std::vector<SupplierRow>& suppliers_;
    int rows_ = 0;
};

}  // namespace kolmera
