#pragma once

#include <QStringList>
#include <QWidget>
#include <vector>

namespace kolmera {

/// Bars side by side, with their counts above and their edges below, in the colours of the palette. Screen readers say
/// the description that the caller gives.
class Histogram final : public QWidget {
  public:
    explicit Histogram(QWidget* parent);

    /// `edges` stand between the bars: one less than bars. `names` are the bars' tool tips.
    void show(std::vector<double> bars, QStringList edges, QStringList names);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    [[nodiscard]] QRectF barRect(std::size_t bar) const;

    std::vector<double> bars_;
    QStringList edges_, names_;
};

}  // namespace kolmera
