#include "ui/ucuppner.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTimerEvent>
#include <QVBoxLayout>

#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kFirstPause = 200;   ///< milliseconds before the steps repeat
constexpr int kRepeatPause = 100;  ///< milliseconds between repeated steps

}  // namespace

UCUppNer::UCUppNer(const Locale& locale, const Theme& theme, QWidget* parent)
    : QWidget(parent),
      locale_(locale),
      theme_(theme),
      up_(makeArrow(QStringLiteral("▲"), "Upp")),
      down_(makeArrow(QStringLiteral("▼"), "Ner")) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(up_);
    layout->addWidget(down_);
    // The text box keeps the focus: it is what the arrows act on.
    setFocusPolicy(Qt::NoFocus);
}

QLabel* UCUppNer::makeArrow(const QString& sign, const char* name) {
    auto* arrow = new QLabel(sign, this);
    arrow->setObjectName(QString::fromLatin1(name));
    arrow->setAlignment(Qt::AlignCenter);
    arrow->setFrameStyle(QFrame::Panel | QFrame::Raised);
    QFont font = arrow->font();
    font.setPointSizeF(font.pointSizeF() / 2);
    arrow->setFont(font);
    arrow->installEventFilter(this);
    return arrow;
}

bool UCUppNer::eventFilter(QObject* watched, QEvent* event) {
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
    field_ = dynamic_cast<QLineEdit*>(QApplication::focusWidget());
    pressed_ = &arrow;
    showPressed(arrow, true);
    step();
    timer_ = startTimer(kFirstPause);
}

void UCUppNer::release() {
    if (pressed_) showPressed(*pressed_, false);
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
    if (!field_ || field_->isReadOnly()) return;
    field_->setText(toQt(steps.stepped(fromQt(field_->text()), pressed_ == up_, locale_)));
    field_->setFocus();
}

void UCUppNer::showPressed(QLabel& arrow, bool pressed) {
    arrow.setFrameShadow(pressed ? QFrame::Sunken : QFrame::Raised);
    if (!theme_.XPStil) return;
    const Colour border = theme_.colour(4);
    QPalette palette = arrow.palette();
    palette.setColor(QPalette::Dark, QColor(border.red, border.green, border.blue));
    arrow.setPalette(pressed ? palette : QPalette());
}

}  // namespace kolmera
