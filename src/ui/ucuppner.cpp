#include "ui/ucuppner.h"

#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QStyleOption>
#include <QTimerEvent>
#include <QVBoxLayout>

#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kFirstPause = 200;   ///< milliseconds before the steps repeat
constexpr int kRepeatPause = 100;  ///< milliseconds between repeated steps

/// An arrow as the desktop draws it.
class Arrow final : public QLabel {
  public:
    Arrow(QStyle::PrimitiveElement sign, QWidget* parent) : QLabel(parent), sign_(sign) {
        setFrameStyle(QFrame::Panel | QFrame::Raised);
    }
    [[nodiscard]] QSize sizeHint() const override { return {fontMetrics().height(), fontMetrics().height() / 2}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {sizeHint().width(), 0}; }

  protected:
    void paintEvent(QPaintEvent* event) override {
        QLabel::paintEvent(event);
        QPainter painter(this);
        QStyleOption option;
        option.initFrom(this);
        option.rect = contentsRect();
        style()->drawPrimitive(sign_, &option, &painter, this);
    }

  private:
    QStyle::PrimitiveElement sign_;
};

}  // namespace

UCUppNer::UCUppNer(const Locale& locale, QLineEdit& field)
    : QWidget(field.parentWidget()),
      locale_(locale),
      field_(field),
      up_(makeArrow(QStyle::PE_IndicatorArrowUp, "Upp")),
      down_(makeArrow(QStyle::PE_IndicatorArrowDown, "Ner")) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(up_);
    layout->addWidget(down_);
    setFocusPolicy(Qt::NoFocus);
    setFixedHeight(field.sizeHint().height());
    setEnabled(field.isEnabled());
    field.installEventFilter(this);
}

QLabel* UCUppNer::makeArrow(QStyle::PrimitiveElement sign, const char* name) {
    auto* arrow = new Arrow(sign, this);
    arrow->setObjectName(QString::fromLatin1(name));
    arrow->installEventFilter(this);
    return arrow;
}

bool UCUppNer::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &field_) {
        if (event->type() == QEvent::EnabledChange) setEnabled(field_.isEnabled());
        return false;
    }
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            press(watched == up_ ? *up_ : *down_);
            return true;
        case QEvent::MouseButtonRelease:
            release();
            return true;
        default:
            return false;
    }
}

void UCUppNer::press(QLabel& arrow) {
    release();
    if (!field_.isEnabled() || field_.isReadOnly()) return;
    pressed_ = &arrow;
    arrow.setFrameShadow(QFrame::Sunken);
    step();
    timer_ = startTimer(kFirstPause);
}

void UCUppNer::release() {
    if (pressed_) pressed_->setFrameShadow(QFrame::Raised);
    pressed_.clear();
    if (timer_ != 0) killTimer(timer_);
    timer_ = 0;
}

void UCUppNer::timerEvent(QTimerEvent* event) {
    if (event->timerId() != timer_) return;
    killTimer(timer_);
    step();
    timer_ = startTimer(kRepeatPause);
}

void UCUppNer::step() {
    const std::string stepped = steps.stepped(fromQt(field_.text()), pressed_ == up_, locale_);
    field_.setFocus();
    field_.selectAll();
    field_.insert(toQt(stepped));
}

}  // namespace kolmera
