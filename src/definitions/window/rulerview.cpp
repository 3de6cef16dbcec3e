#include "definitions/window/rulerview.h"

#include <QFontDatabase>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>

#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kMargin = 4, kRulerLines = 2, kTen = 10, kFive = 5;

}  // namespace

RulerView::RulerView(QWidget* parent) : QAbstractScrollArea(parent) {
    setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setCursor(Qt::IBeamCursor);
}

void RulerView::setLines(const std::vector<std::string>& lines) {
    lines_.clear();
    for (const std::string& line : lines) lines_.push_back(toQt(line));
    setScrollBars();
}

void RulerView::show(const Ruler& ruler, const Piece& chosen, int line) {
    ruler_ = ruler;
    chosen_ = chosen;
    line_ = line;
    setScrollBars();
    tellWhere();
    viewport()->update();
}

QSize RulerView::sizeHint() const {
    constexpr int kLines = 10, kLetters = 80;
    return {kLetters * letterWidth(), (kLines + kRulerLines) * lineHeight()};
}

int RulerView::lineHeight() const { return fontMetrics().lineSpacing(); }
int RulerView::letterWidth() const { return fontMetrics().horizontalAdvance('0'); }
int RulerView::left(int byte) const { return kMargin + (byte - 1) * letterWidth() - horizontalScrollBar()->value(); }

void RulerView::setScrollBars() {
    const int width = ruler_.length() * letterWidth() + 2 * kMargin;
    horizontalScrollBar()->setRange(0, std::max(0, width - viewport()->width()));
    horizontalScrollBar()->setPageStep(viewport()->width());
    horizontalScrollBar()->setSingleStep(letterWidth());
    const int visible = viewport()->height() / lineHeight() - kRulerLines;
    verticalScrollBar()->setRange(0, std::max(0, static_cast<int>(lines_.size()) - visible));
    verticalScrollBar()->setPageStep(std::max(1, visible));
}

/// For those who do not see it.
void RulerView::tellWhere() {
    const QString sign = ruler_.boundaries().contains(cursor_) ? QStringLiteral(" |") : QString();
    setAccessibleDescription(QString::number(cursor_) + sign);
}

void RulerView::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    setScrollBars();
}

void RulerView::focusInEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
}

void RulerView::focusOutEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

void RulerView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), palette().color(QPalette::Base));
    const QRect piece(left(chosen_.FrånPos), 0, chosen_.Längd * letterWidth(), viewport()->height());
    constexpr int kFaint = 50;
    QColor shade = palette().color(QPalette::Highlight);
    shade.setAlpha(kFaint);
    if (chosen_.Längd > 0) painter.fillRect(piece, shade);
    paintLines(painter);
    paintRuler(painter);
    paintBoundaries(painter);
}

void RulerView::paintRuler(QPainter& painter) const {
    const int bottom = kRulerLines * lineHeight();
    painter.setPen(palette().color(QPalette::Text));
    painter.drawLine(0, bottom - 1, viewport()->width(), bottom - 1);
    for (int byte = 1; byte <= ruler_.length(); ++byte) {
        const int x = left(byte) + letterWidth() / 2;
        if (x < -viewport()->width() || x > viewport()->width() + kTen * letterWidth()) continue;
        const int tick = byte % kTen == 0 ? lineHeight() / 2 : byte % kFive == 0 ? lineHeight() / 3 : lineHeight() / 6;
        painter.drawLine(x, bottom - 1 - tick, x, bottom - 1);
        if (byte % kTen != 0) continue;
        const QRect room(x - kFive * letterWidth(), 0, kTen * letterWidth(), lineHeight());
        painter.drawText(room, Qt::AlignCenter, QString::number(byte));
    }
}

void RulerView::paintLines(QPainter& painter) const {
    const int first = verticalScrollBar()->value();
    int top = kRulerLines * lineHeight();
    for (int line = first; line < static_cast<int>(lines_.size()) && top < viewport()->height(); ++line) {
        const bool current = line == line_;
        if (current) {
            painter.fillRect(0, top, viewport()->width(), lineHeight(), palette().color(QPalette::Highlight));
        }
        painter.setPen(palette().color(current ? QPalette::HighlightedText : QPalette::Text));
        const QString& text = lines_[static_cast<std::size_t>(line)];
        // A character at its place, also where the font has none of the common width.
        for (qsizetype byte = 0; byte < text.size(); ++byte) {
            if (text[byte] == ' ') continue;
            painter.drawText(QRect(left(static_cast<int>(byte) + 1), top, letterWidth(), lineHeight()),
                             Qt::AlignCenter | Qt::TextDontClip, text.mid(byte, 1));
        }
        top += lineHeight();
    }
}

void RulerView::paintBoundaries(QPainter& painter) const {
    const int bottom = viewport()->height(), halfRuler = lineHeight();
    painter.setPen(QPen(palette().color(QPalette::Link), 2));
    for (const int boundary : ruler_.boundaries()) {
        const int at = left(boundary == dragged_ && dragsTo_ != 0 ? dragsTo_ : boundary);
        painter.drawLine(at, halfRuler, at, bottom);
    }
    if (!hasFocus()) return;
    painter.setPen(QPen(palette().color(QPalette::Text), 1, Qt::DashLine));
    painter.drawLine(left(cursor_), 0, left(cursor_), bottom);
}

void RulerView::moveCursor(int byte) {
    cursor_ = std::clamp(byte, 1, std::max(1, ruler_.length()));
    QScrollBar& bar = *horizontalScrollBar();
    constexpr int kLettersAhead = 4;
    const int ahead = kLettersAhead * letterWidth();
    if (left(cursor_) < ahead) bar.setValue(bar.value() + left(cursor_) - ahead);
    if (left(cursor_) > viewport()->width() - ahead) {
        bar.setValue(bar.value() + left(cursor_) - viewport()->width() + ahead);
    }
    if (picked) picked(cursor_);
    tellWhere();
    viewport()->update();
}

void RulerView::moveBoundary(int step) {
    const int to = cursor_ + step;
    if (!ruler_.boundaries().contains(cursor_) || !moved) return;
    moved(cursor_, to);
    if (ruler_.boundaries().contains(to)) moveCursor(to);
}

void RulerView::keyPressEvent(QKeyEvent* event) {
    const bool control = (event->modifiers() & Qt::ControlModifier) != 0;
    switch (event->key()) {
        case Qt::Key_Left:
        case Qt::Key_Right: {
            const int step = event->key() == Qt::Key_Left ? -1 : 1;
            control ? moveBoundary(step) : moveCursor(cursor_ + step);
            break;
        }
        case Qt::Key_Home:
            moveCursor(1);
            break;
        case Qt::Key_End:
            moveCursor(ruler_.length());
            break;
        case Qt::Key_Up:
        case Qt::Key_Down:
            if (linePicked) linePicked(line_ + (event->key() == Qt::Key_Up ? -1 : 1));
            break;
        case Qt::Key_Space:
            if (toggled) toggled(cursor_);
            break;
        default:
            QAbstractScrollArea::keyPressEvent(event);
    }
}

int RulerView::boundaryAt(const QPoint& point) const {
    const int width = letterWidth();
    const int distance = point.x() - kMargin + horizontalScrollBar()->value() + width / 2;
    return std::clamp(distance / std::max(1, width) + 1, 1, std::max(1, ruler_.length()));
}

int RulerView::lineAt(const QPoint& point) const {
    return verticalScrollBar()->value() + point.y() / lineHeight() - kRulerLines;
}

void RulerView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    const int boundary = boundaryAt(event->position().toPoint());
    pressed_ = true;
    dragged_ = ruler_.boundaries().contains(boundary) ? boundary : 0;
    dragsTo_ = boundary;
    moveCursor(boundary);
}

void RulerView::mouseMoveEvent(QMouseEvent* event) {
    if (!pressed_ || dragged_ == 0) return;
    dragsTo_ = boundaryAt(event->position().toPoint());
    viewport()->update();
}

void RulerView::mouseReleaseEvent(QMouseEvent* event) {
    if (!pressed_ || event->button() != Qt::LeftButton) return;
    pressed_ = false;
    const QPoint point = event->position().toPoint();
    const int boundary = boundaryAt(point), from = std::exchange(dragged_, 0);
    dragsTo_ = 0;
    if (from != 0 && boundary != from) {
        if (moved) moved(from, boundary);
    } else if (toggled) {
        toggled(boundary);
    }
    moveCursor(boundary);
}

}  // namespace kolmera
