#pragma once

#include <QAbstractTableModel>
#include <QStyledItemDelegate>
#include <functional>

#include "definitions/relationtable.h"

namespace kolmera {

/// Shows a mask's relations to a table, whose cells are changed where they stand.
class RelationModel final : public QAbstractTableModel {
  public:
    RelationModel(RelationTable& relations, const MaskEditor& editor, QObject* parent)
        : QAbstractTableModel(parent), relations_(relations), editor_(editor) {}

    /// Told when the user has changed a cell, or could not.
    std::function<void()> changed;
    /// The relations are others, or show other texts.
    void refresh();
    [[nodiscard]] RelationTable& relations() const { return relations_; }
    [[nodiscard]] RelationTable::Column columnOf(const QModelIndex& index) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  private:
    RelationTable& relations_;
    const MaskEditor& editor_;
    int rows_ = 0;
    std::vector<RelationTable::Column> columns_;
};

/// Lets a cell be chosen from a list, or its number be typed.
class RelationDelegate final : public QStyledItemDelegate {
  public:
    RelationDelegate(const RelationModel& model, QObject* parent) : QStyledItemDelegate(parent), model_(model) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;
    bool eventFilter(QObject* editor, QEvent* event) override;

  private:
    const RelationModel& model_;
};

}  // namespace kolmera
