#pragma once

#include <QAction>
#include <QKeySequence>
#include <QList>

class QAbstractButton;

namespace kolmera {

/// A button's command in a menu: choosing it presses the button, and it is enabled while the button is.
class ButtonAction final : public QAction {
  public:
    ButtonAction(QAbstractButton& button, QWidget& form, const QList<QKeySequence>& keys);

    void takeCaption();
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QAbstractButton& button_;
};

/// Gives the commands of a form's buttons the captions that the buttons have in the language of the program.
void nameButtonActions(QWidget& form);

/// The caption with a key behind it that somebody else listens to.
QString withKey(const QString& caption, const QKeySequence& key);

}  // namespace kolmera
