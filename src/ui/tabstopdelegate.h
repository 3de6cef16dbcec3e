#pragma once

#include <QStyledItemDelegate>
#include <vector>

class QAbstractItemView;

namespace kolmera {

/// Draws the rows of a list with their tabs as columns. Made by `setTabStops`.
class TabStopDelegate final : public QStyledItemDelegate {
  public:
    TabStopDelegate(QAbstractItemView& list, std::vector<int> dialogUnits);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

  private:
    void listenTo(QAbstractItemModel* model);
    /// Where the columns begin, in pixels from the row's text: the designed stops, moved right as far as the widest
    /// text before them asks for.
    [[nodiscard]] const std::vector<int>& starts(const QFontMetrics& metrics) const;
    void widen(std::vector<int>& starts, const QFontMetrics& metrics, const QString& text) const;

    QAbstractItemView& list_;
    std::vector<int> dialogUnits_;
    mutable std::vector<int> starts_;  ///< empty: to be worked out again
    mutable int letterWidth_ = 0;      ///< for which `starts_` holds
};

}  // namespace kolmera
