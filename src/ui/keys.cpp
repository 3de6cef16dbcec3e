#include "ui/keys.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QRadioButton>
#include <QShortcut>
#include <functional>

#include "ui/keyrules.h"
#include "ui/qttext.h"
#include "ui/searchbox.h"

namespace kolmera {
namespace {

class EnterSomTab final : public QObject {
  public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::KeyPress) return false;
        const auto& key = static_cast<const QKeyEvent&>(*event);
        if (key.key() != Qt::Key_Return && key.key() != Qt::Key_Enter) return false;
        const Qt::KeyboardModifiers shift = key.modifiers() & ~Qt::KeyboardModifiers(Qt::KeypadModifier);
        if (shift == Qt::NoModifier) {
            QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier, QStringLiteral("\t"));
            QCoreApplication::sendEvent(watched, &tab);
        } else if (shift == Qt::ShiftModifier) {
            QKeyEvent backtab(QEvent::KeyPress, Qt::Key_Backtab, Qt::ShiftModifier);
            QCoreApplication::sendEvent(watched, &backtab);
        }
        return true;
    }
};

/// Passes typed characters through a rule that answers 0 for those to be dropped, or another character in their place.
class KeyGate final : public QObject {
  public:
    KeyGate(QLineEdit& field, std::function<int(const std::string& text, int key)> rule)
        : QObject(&field), field_(field), rule_(std::move(rule)) {
        field.installEventFilter(this);
    }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() != QEvent::KeyPress) return false;
        const auto& key = static_cast<const QKeyEvent&>(*event);
        const QString typed = key.text();
        // Keys without a printable character (arrows, Ctrl+C ...) are the field's own. Ctrl+Alt types characters.
        const bool command = (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) == Qt::ControlModifier;
        if (command || typed.size() != 1 || !typed[0].isPrint()) return false;
        const int taken = rule_(textThatStays(), typed[0].unicode());
        if (taken == typed[0].unicode()) return false;
        if (taken != keys::kRejected) field_.insert(QChar(taken));
        return true;
    }

  private:
    // A selection is replaced by what is typed: its decimal sign does not count.
    [[nodiscard]] std::string textThatStays() const {
        QString text = field_.text();
        if (field_.hasSelectedText()) {
            text.remove(field_.selectionStart(), field_.selectionLength());
        }
        return fromQt(text);
    }

    QLineEdit& field_;
    std::function<int(const std::string&, int)> rule_;
};

/// Enter and the space bar in a list do what a double click does.
class ActsOnKey final : public QObject {
  public:
    ActsOnKey(QWidget& list, std::function<void()> act) : QObject(&list), act_(std::move(act)) {
        list.installEventFilter(this);
    }

    bool eventFilter(QObject* /*watched*/, QEvent* event) override {
        if (event->type() != QEvent::KeyPress) return false;
        const int key = static_cast<const QKeyEvent&>(*event).key();
        if (key != Qt::Key_Return && key != Qt::Key_Enter && key != Qt::Key_Space) return false;
        act_();
        return true;
    }

  private:
    std::function<void()> act_;
};

bool isField(const QWidget& control) {
    if (dynamic_cast<const SearchBox*>(&control) != nullptr) return false;  // its Enter goes to its list
    return dynamic_cast<const QLineEdit*>(&control) != nullptr || dynamic_cast<const QComboBox*>(&control) != nullptr ||
           dynamic_cast<const QCheckBox*>(&control) != nullptr ||
           dynamic_cast<const QRadioButton*>(&control) != nullptr;
}

}  // namespace

void installEnterSomTab(QWidget& form) {
    auto* filter = new EnterSomTab(&form);
    for (QWidget* control : form.findChildren<QWidget*>()) {
        if (isField(*control)) control->installEventFilter(filter);
    }
}

void installEnterSomTabOn(QWidget& control) { control.installEventFilter(new EnterSomTab(&control)); }

void allowNumbersOnly(QLineEdit& field, char Decimaltecken, bool allowDecimal, bool allowMinus) {
    new KeyGate(field, [=](const std::string& text, int key) {
        // Keyboards and habits differ from the locale: a point that were dropped would make 1.5 into 15.
        if (key == '.' || key == ',') key = Decimaltecken;
        return NumeriskTangent(text, key, Decimaltecken, allowDecimal, allowMinus);
    });
}

void pressOnKey(QWidget& form, const QKeySequence& key, QAbstractButton& button) {
    auto* shortcut = new QShortcut(key, &form);
    QObject::connect(shortcut, &QShortcut::activated, &button, [&button] {
        if (button.isVisible()) button.click();
    });
}

void onKey(QWidget& control, const QKeySequence& key, const std::function<void()>& act, Qt::ShortcutContext context) {
    auto* shortcut = new QShortcut(key, &control);
    shortcut->setContext(context);
    QObject::connect(shortcut, &QShortcut::activated, &control, act);
}

void actOnEnter(QWidget& list, std::function<void()> act) { new ActsOnKey(list, std::move(act)); }

void focusOnAltL(QWidget& form, QWidget& list) {
    auto* shortcut = new QShortcut(QKeySequence(Qt::ALT | Qt::Key_L), &form);
    const auto focus = [&list] {
        if (list.isVisible()) list.setFocus(Qt::ShortcutFocusReason);
    };
    QObject::connect(shortcut, &QShortcut::activated, &list, focus);
    QObject::connect(shortcut, &QShortcut::activatedAmbiguously, &list, focus);
}

}  // namespace kolmera
