#include "ui/tabstopdelegate.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QPainter>
#include <algorithm>

namespace kolmera {
namespace {

constexpr int kUnitsALetter = 4;
constexpr int kGap = 2;  ///< letters between two columns, at least

}  // namespace

TabStopDelegate::TabStopDelegate(QAbstractItemView& list, std::vector<int> dialogUnits)
    : QStyledItemDelegate(&list), list_(list), dialogUnits_(std::move(dialogUnits)) {
    listenTo(list.model());
}

void TabStopDelegate::listenTo(QAbstractItemModel* model) {
    const auto forget = [this] { starts_.clear(); };
    connect(model, &QAbstractItemModel::modelReset, this, forget);
    connect(model, &QAbstractItemModel::rowsInserted, this, forget);
    connect(model, &QAbstractItemModel::dataChanged, this, forget);
}

const std::vector<int>& TabStopDelegate::starts(const QFontMetrics& metrics) const {
    const int letter = metrics.averageCharWidth();
    if (!starts_.empty() && letterWidth_ == letter) return starts_;
    letterWidth_ = letter;
    starts_.assign(1, 0);
    for (const int units : dialogUnits_) starts_.push_back(units * letter / kUnitsALetter);
    const QAbstractItemModel& model = *list_.model();
    for (int row = 0; row < model.rowCount(); ++row) widen(starts_, metrics, model.index(row, 0).data().toString());
    return starts_;
}

void TabStopDelegate::widen(std::vector<int>& starts, const QFontMetrics& metrics, const QString& text) const {
    const QStringList columns = text.split('\t');
    const auto last = std::min(static_cast<std::size_t>(columns.size()), starts.size()) - 1;
    for (std::size_t i = 0; i < last; ++i) {
        const int end = starts[i] + metrics.horizontalAdvance(columns[static_cast<qsizetype>(i)]) + kGap * letterWidth_;
        const int push = end - starts[i + 1];
        if (push <= 0) continue;
        for (std::size_t behind = i + 1; behind < starts.size(); ++behind) starts[behind] += push;
    }
}

void TabStopDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QStyleOptionViewItem item(option);
    initStyleOption(&item, index);
    const QStringList columns = item.text.split('\t');
    item.text.clear();
    const QStyle& style = item.widget != nullptr ? *item.widget->style() : *QApplication::style();
    style.drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);

    const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, &item, item.widget) + 1;
    const QRect row = style.subElementRect(QStyle::SE_ItemViewItemText, &item, item.widget).isEmpty()
                          ? item.rect
                          : item.rect.adjusted(margin, 0, -margin, 0);
    const QPalette::ColorGroup group =
        item.state.testFlag(QStyle::State_Enabled) ? QPalette::Active : QPalette::Disabled;
    const bool selected = item.state.testFlag(QStyle::State_Selected);
    painter->save();
    painter->setFont(item.font);
    painter->setPen(item.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text));
    const std::vector<int>& columnStarts = starts(item.fontMetrics);
    for (qsizetype i = 0; i < columns.size(); ++i) {
        const int start = columnStarts[std::min(static_cast<std::size_t>(i), columnStarts.size() - 1)];
        painter->drawText(row.adjusted(start, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                          columns[i]);
    }
    painter->restore();
}

QSize TabStopDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QStyleOptionViewItem item(option);
    initStyleOption(&item, index);
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    const QStringList columns = item.text.split('\t');
    const std::vector<int>& columnStarts = starts(item.fontMetrics);
    const std::size_t last = std::min(static_cast<std::size_t>(columns.size()), columnStarts.size()) - 1;
    size.setWidth(columnStarts[last] + item.fontMetrics.horizontalAdvance(columns.back()) + kGap * letterWidth_);
    return size;
}

}  // namespace kolmera
