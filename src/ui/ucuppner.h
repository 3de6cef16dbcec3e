#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>

#include "platform/locale.h"
#include "ui/rules/spinsteps.h"
#include "ui/rules/theme.h"

class QLabel;
class QLineEdit;

namespace kolmera {

/// Two arrows that step the text of the form's active text box. Set `steps` before use.
class UCUppNer final : public QWidget {
  public:
    UCUppNer(const Locale& locale, const Theme& theme, QWidget* parent = nullptr);

    SpinSteps steps;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QLabel* makeArrow(const QString& sign, const char* name);
    void press(QLabel& arrow);
    void release();
    void step();
    void showPressed(QLabel& arrow, bool pressed);

    Locale locale_;
    const Theme& theme_;
    QLabel* up_;
    QLabel* down_;
    QPointer<QLabel> pressed_;
    QPointer<QLineEdit> field_;  ///< the active text box while an arrow is pressed
    int timer_ = 0;

    void timerEvent(QTimerEvent* event) override;
};

}  // namespace kolmera
