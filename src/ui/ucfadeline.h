#pragma once

#include <QWidget>
#include <vector>

namespace kolmera {

/// A separator line whose colour fades across its width, in the colours of the palette: one row of segments, two where
/// the control is high enough.
class UCFadeLine final : public QWidget {
  public:
    explicit UCFadeLine(QWidget* parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    std::vector<QRect> segments_;  ///< of one row, from left to right
};

}  // namespace kolmera
