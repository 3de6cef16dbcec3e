#include "import/window/jobicons.h"

#include <QPainter>
#include <QPalette>
#include <QPixmap>

namespace kolmera {
namespace {

constexpr int kGrid = 16;  ///< the icons are drawn on 16 by 16 units
constexpr int kSizes[] = {16, 24, 32, 48, 64};

using Draw = void (*)(QPainter& painter, const QPalette& palette);

QIcon icon(const QPalette& palette, Draw draw) {
    QIcon result;
    for (const int size : kSizes) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(static_cast<double>(size) / kGrid, static_cast<double>(size) / kGrid);
        draw(painter, palette);
        painter.end();
        result.addPixmap(pixmap);
        // Selected rows show the same picture: it is meant to be told apart, not to change.
        result.addPixmap(pixmap, QIcon::Selected);
    }
    return result;
}

void drawTable(QPainter& painter, const QPalette& palette) {
    painter.setPen(QPen(palette.color(QPalette::Text), 1));
    painter.setBrush(palette.color(QPalette::Base));
    painter.drawRect(QRectF(1.5, 2.5, 13, 11));
    painter.fillRect(QRectF(2, 3, 12, 3), palette.color(QPalette::Highlight));
    for (const double x : {5.5, 9.5}) painter.drawLine(QPointF(x, 3), QPointF(x, 13));
    for (const double y : {6.5, 10.0}) painter.drawLine(QPointF(2, y), QPointF(14, y));
}

void drawSheet(QPainter& painter, const QPalette& palette) {
    painter.setPen(QPen(palette.color(QPalette::Text), 1));
    painter.setBrush(palette.color(QPalette::Base));
    painter.drawPolygon(QPolygonF({{3.5, 1.5}, {9.5, 1.5}, {12.5, 4.5}, {12.5, 14.5}, {3.5, 14.5}}));
    painter.drawPolyline(QPolygonF({{9.5, 1.5}, {9.5, 4.5}, {12.5, 4.5}}));
    painter.setPen(QPen(palette.color(QPalette::Highlight), 1));
    for (const double y : {7.0, 9.5, 12.0}) painter.drawLine(QPointF(5.5, y), QPointF(10.5, y));
}

}  // namespace

QIcon maskJobIcon(const QPalette& palette) { return icon(palette, drawTable); }

QIcon tradeFormatJobIcon(const QPalette& palette) { return icon(palette, drawSheet); }

}  // namespace kolmera
