#pragma once

#include <QPointer>
#include <QStyle>
#include <QWidget>

#include "platform/locale.h"
#include "ui/spinsteps.h"

class QLabel;
class QLineEdit;

namespace kolmera {

/// Two arrows beside a text box: a press makes it the active one and steps its text, as if the user typed it. They can
/// be pressed while the box can be changed. Set `steps` before use.
class UCUppNer final : public QWidget {
  public:
    UCUppNer(const Locale& locale, QLineEdit& field);

    SpinSteps steps;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QLabel* makeArrow(QStyle::PrimitiveElement sign, const char* name);
    void press(QLabel& arrow);
    void release();
    void step();

    Locale locale_;
    QLineEdit& field_;
    QLabel* up_;
    QLabel* down_;
    QPointer<QLabel> pressed_;
    int timer_ = 0;

    void timerEvent(QTimerEvent* event) override;
};

}  // namespace kolmera
