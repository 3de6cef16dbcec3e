#include "discounts/window/lettermodel.h"

#include "ui/lists.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

QVariant alignment(int column) {
    return QVariant::fromValue(Qt::AlignVCenter | (column == 0 ? Qt::AlignLeft : Qt::AlignRight));
}

}  // namespace

void LetterModel::refresh() {
    beginResetModel();
    count_ = rows_.count();
    endResetModel();
}

int LetterModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : count_; }

int LetterModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : LetterRows::kColumns; }

QVariant LetterModel::data(const QModelIndex& index, int role) const {
    // While the letter is being read anew, the view still shows the rows of the old one.
    if (!index.isValid() || index.row() >= rows_.count()) return {};
    if (role == Qt::DisplayRole) return toQt(rows_.text(index.row(), index.column()));
    if (role == Qt::TextAlignmentRole) return alignment(index.column());
    if (role == kIdRole) return QVariant::fromValue<qlonglong>(rows_.id(index.row()));
    return {};
}

QVariant LetterModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::DisplayRole) return headers_.value(section);
    return role == Qt::TextAlignmentRole ? alignment(section) : QVariant();
}

}  // namespace kolmera
