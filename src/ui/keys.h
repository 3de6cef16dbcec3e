#pragma once

#include <QKeySequence>
#include <QObject>
#include <functional>

class QAbstractButton;
class QLineEdit;
class QWidget;

namespace kolmera {

/// Enter moves to the next field and Shift+Enter back, as Tab does. Installed on the form's text boxes, lists of
/// choices, check boxes and option buttons; push buttons and row lists keep their Enter. Call when the controls exist.
void installEnterSomTab(QWidget& form);
/// The same for one control, a row list for example.
void installEnterSomTabOn(QWidget& control);

/// Lets a text box take the keys of NumeriskTangent only. Point and comma both type the decimal sign.
void allowNumbersOnly(QLineEdit& field, char Decimaltecken, bool allowDecimal, bool allowMinus);

/// A key that presses a button as the mouse would: only while the button is shown and enabled.
void pressOnKey(QWidget& form, const QKeySequence& key, QAbstractButton& button);
/// A key that does something while the window is active, or, with another context, while the control has the focus.
void onKey(QWidget& control, const QKeySequence& key, const std::function<void()>& act,
           Qt::ShortcutContext context = Qt::WindowShortcut);
/// Enter and the space bar in a list do what a double click does.
void actOnEnter(QWidget& list, std::function<void()> act);
/// Alt+L gives the focus to a list, beside the accelerator that its label may have.
void focusOnAltL(QWidget& form, QWidget& list);

}  // namespace kolmera
