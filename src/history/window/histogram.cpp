#include "history/window/histogram.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHelpEvent>
#include <QPainter>
#include <QStyleOptionFocusRect>
#include <QToolTip>
#include <algorithm>
#include <cmath>
#include <utility>

namespace kolmera {
namespace {

constexpr int kLettersOfBar = 5, kLines = 7;

QAccessibleInterface* asChart(const QString& /*className*/, QObject* object) {
    auto* histogram = dynamic_cast<Histogram*>(object);
    return histogram == nullptr ? nullptr : new QAccessibleWidget(histogram, QAccessible::Chart);
}

}  // namespace

Histogram::Histogram(QWidget* parent) : QWidget(parent) {
    setFocusPolicy(Qt::TabFocus);
    QAccessible::installFactory(asChart);  // once, however often it is installed
}

void Histogram::show(std::vector<double> bars, QStringList edges, QStringList names) {
    bars_ = std::move(bars);
    edges_ = std::move(edges);
    names_ = std::move(names);
    updateGeometry();
    update();
}

QSize Histogram::sizeHint() const {
    const QFontMetrics metrics = fontMetrics();
    const int bars = static_cast<int>(std::max<std::size_t>(bars_.size(), 1));
    return {bars * kLettersOfBar * metrics.horizontalAdvance('0'), kLines * metrics.lineSpacing()};
}

QSize Histogram::minimumSizeHint() const { return {sizeHint().width() * 3 / 4, sizeHint().height() * 3 / 4}; }

/// Lines of numbers are left free above and below. A bar that is not empty can be seen.
QRectF Histogram::barRect(std::size_t bar) const {
    const double line = fontMetrics().lineSpacing();
    const double room = height() - 2 * line;
    const double most = *std::ranges::max_element(bars_);
    const double width = static_cast<double>(this->width()) / static_cast<double>(bars_.size());
    const double tall = most > 0 && bars_[bar] > 0 ? std::max(2.0, room * bars_[bar] / most) : 0;
    return {width * static_cast<double>(bar) + 1, line + room - tall, width - 2, tall};
}

void Histogram::paintEvent(QPaintEvent* /*event*/) {
    if (bars_.empty()) return;
    QPainter painter(this);
    const double line = fontMetrics().lineSpacing();
    const double floor = height() - line;
    const double width = static_cast<double>(this->width()) / static_cast<double>(bars_.size());
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawLine(QPointF(0, floor + 0.5), QPointF(this->width(), floor + 0.5));
    for (std::size_t bar = 0; bar < bars_.size(); ++bar) {
        const QRectF rect = barRect(bar);
        painter.fillRect(rect, palette().color(QPalette::Highlight));
        if (bars_[bar] > 0) {
            const QString count = QString::number(bars_[bar], 'f', 0);
            const QRectF above(rect.center().x() - width, rect.top() - line, 2 * width, line);
            // Neighbours' long numbers would run into each other; the tool tip has them all.
            if (fontMetrics().horizontalAdvance(count) <= width) painter.drawText(above, Qt::AlignCenter, count);
        }
        if (bar == 0) continue;
        const QRectF below(width * static_cast<double>(bar) - width / 2, floor + 1, width, line);
        painter.drawText(below, Qt::AlignCenter, edges_.value(static_cast<qsizetype>(bar) - 1));
    }
    if (hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

bool Histogram::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip || bars_.empty()) return QWidget::event(event);
    const auto& help = static_cast<const QHelpEvent&>(*event);
    const auto bar = static_cast<std::size_t>(std::clamp(help.pos().x(), 0, width() - 1)) * bars_.size() /
                     static_cast<std::size_t>(width());
    QToolTip::showText(help.globalPos(), names_.value(static_cast<qsizetype>(bar)), this);
    return true;
}

}  // namespace kolmera
