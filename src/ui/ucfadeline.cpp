#include "ui/ucfadeline.h"

#include <QPainter>

namespace kolmera {
namespace {

constexpr int kSegment = 6;      ///< pixels
constexpr int kTwoRowsFrom = 2;  ///< pixels of height

QColor mixed(const QColor& from, const QColor& to, double share) {
    const auto channel = [share](float a, float b) { return a + (b - a) * static_cast<float>(share); };
    return QColor::fromRgbF(channel(from.redF(), to.redF()), channel(from.greenF(), to.greenF()),
                            channel(from.blueF(), to.blueF()));
}

}  // namespace

UCFadeLine::UCFadeLine(QWidget* parent) : QWidget(parent) { setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed); }

QSize UCFadeLine::sizeHint() const { return {kSegment, kTwoRowsFrom}; }

void UCFadeLine::resizeEvent(QResizeEvent* /*event*/) {
    segments_.clear();
    for (int left = 0; left < width(); left += kSegment) segments_.emplace_back(left, 0, kSegment, 1);
}

void UCFadeLine::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QColor background = palette().color(QPalette::Window);
    const auto paintRow = [&](int top, QPalette::ColorRole role) {
        for (std::size_t i = 0; i < segments_.size(); ++i) {
            const double share = static_cast<double>(i) / static_cast<double>(segments_.size());
            painter.fillRect(segments_[i].translated(0, top), mixed(palette().color(role), background, share));
        }
    };
    paintRow(0, QPalette::Mid);
    if (height() >= kTwoRowsFrom) paintRow(1, QPalette::Light);
}

}  // namespace kolmera
