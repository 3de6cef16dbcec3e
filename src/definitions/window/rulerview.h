#pragma once

#include <QAbstractScrollArea>
#include <functional>

#include "definitions/ruler.h"

namespace kolmera {

/// Records of fixed length, one below the other, under a ruler. A click between two characters sets a boundary or takes
/// it away, dragging moves it; the arrow keys move a cursor, Space does what a click does, Ctrl with an arrow key moves
/// the boundary at the cursor. Bytes are counted from 1, lines from 0.
class RulerView final : public QAbstractScrollArea {
  public:
    explicit RulerView(QWidget* parent);

    std::function<void(int byte)> picked;  ///< the cursor stands before that byte
    std::function<void(int byte)> toggled;
    std::function<void(int from, int to)> moved;
    std::function<void(int line)> linePicked;

    void setLines(const std::vector<std::string>& lines);
    void show(const Ruler& ruler, const Piece& chosen, int line);
    [[nodiscard]] int cursor() const { return cursor_; }
    [[nodiscard]] QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    void paintRuler(QPainter& painter) const;
    void paintLines(QPainter& painter) const;
    void paintBoundaries(QPainter& painter) const;
    void moveCursor(int byte);
    void moveBoundary(int step);
    void setScrollBars();
    void tellWhere();
    [[nodiscard]] int boundaryAt(const QPoint& point) const;
    [[nodiscard]] int lineAt(const QPoint& point) const;
    [[nodiscard]] int left(int byte) const;  ///< where that byte's character begins
    [[nodiscard]] int lineHeight() const;
    [[nodiscard]] int letterWidth() const;

    std::vector<QString> lines_;
    Ruler ruler_{0};
    Piece chosen_;
    int line_ = 0;
    int cursor_ = 1;
    int dragged_ = 0;  ///< the boundary that the mouse holds; 0 for none
    int dragsTo_ = 0;
    bool pressed_ = false;
};

}  // namespace kolmera
