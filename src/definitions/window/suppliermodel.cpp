#include "definitions/window/suppliermodel.h"

#include "ui/qttext.h"

namespace kolmera {

void SupplierModel::refresh() {
    beginResetModel();
    rows_ = static_cast<int>(suppliers_.size());
    endResetModel();
}

int SupplierModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : rows_; }

int SupplierModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : 2; }

QVariant SupplierModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || role != Qt::DisplayRole) return {};
    // While the list is being read anew, the view still shows the rows of the old one.
    if (static_cast<std::size_t>(index.row()) >= suppliers_.size()) return {};
    const SupplierRow& supplier = suppliers_[static_cast<std::size_t>(index.row())];
    return toQt(index.column() == 0 ? supplier.number : supplier.searchName);
}

}  // namespace kolmera
