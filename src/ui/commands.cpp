#include "ui/commands.h"

#include <QAbstractButton>
#include <QEvent>
#include <QWidget>

namespace kolmera {

ButtonAction::ButtonAction(QAbstractButton& button, QWidget& form, const QList<QKeySequence>& keys)
    : QAction(button.text(), &form), button_(button) {
    setShortcuts(keys);
    setEnabled(button.isEnabled());
    button.installEventFilter(this);
    connect(this, &QAction::triggered, &button, [&button] { button.click(); });
    form.addAction(this);
}

void ButtonAction::takeCaption() { setText(button_.text()); }

bool ButtonAction::eventFilter(QObject* /*watched*/, QEvent* event) {
    if (event->type() == QEvent::EnabledChange) setEnabled(button_.isEnabled());
    return false;
}

void nameButtonActions(QWidget& form) {
    for (QAction* action : form.actions()) {
        auto* const command = dynamic_cast<ButtonAction*>(action);
        if (command != nullptr) command->takeCaption();
    }
}

QString withKey(const QString& caption, const QKeySequence& key) {
    return caption + QLatin1Char('\t') + key.toString(QKeySequence::NativeText);
}

}  // namespace kolmera
