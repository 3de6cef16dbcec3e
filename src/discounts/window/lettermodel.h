#pragma once

#include <QAbstractTableModel>
#include <QStringList>

#include "discounts/letterrows.h"

namespace kolmera {

/// Shows a letter's groups in a list. Rows are read as the view asks for them, so that a hundred thousand open at once.
class LetterModel final : public QAbstractTableModel {
  public:
    LetterModel(const LetterRows& rows, QObject* parent) : QAbstractTableModel(parent), rows_(rows) {}

    void setHeaders(QStringList headers) { headers_ = std::move(headers); }
    /// The groups have changed.
    void refresh();

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;

  private:
    const LetterRows& rows_;
    QStringList headers_;
    int count_ = 0;
};

}  // namespace kolmera
