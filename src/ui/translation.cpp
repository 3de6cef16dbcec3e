#include "ui/translation.h"

#include <QAbstractButton>
#include <QAction>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QWidget>
#include <string>

#include "ui/qttext.h"

namespace kolmera {
namespace {

QString caption(const QWidget& control) {
    if (const auto* label = dynamic_cast<const QLabel*>(&control)) return label->text();
    if (const auto* button = dynamic_cast<const QAbstractButton*>(&control)) return button->text();
    if (const auto* group = dynamic_cast<const QGroupBox*>(&control)) return group->title();
    if (const auto* menu = dynamic_cast<const QMenu*>(&control)) return menu->title();
    return {};
}

std::string formKey(const QWidget& form) { return "SP_FRM_" + fromQt(form.objectName()); }

std::string controlKey(const QWidget& form, const QObject& control) {
    return formKey(form) + "_" + fromQt(control.objectName());
}

void translateControl(const QWidget& form, QWidget& control, LanguageTexts& texts) {
    const std::string key = controlKey(form, control);
    if (!caption(control).isEmpty()) {
        if (const auto text = texts.storedText(key)) setCaption(control, toQt(*text));
    }
    if (!control.toolTip().isEmpty()) {
        if (const auto text = texts.storedText(key + "_TT")) control.setToolTip(toQt(*text));
    }
}

}  // namespace

void setCaption(QWidget& control, const QString& text) {
    if (auto* label = dynamic_cast<QLabel*>(&control)) label->setText(text);
    if (auto* button = dynamic_cast<QAbstractButton*>(&control)) button->setText(text);
    if (auto* group = dynamic_cast<QGroupBox*>(&control)) group->setTitle(text);
    if (auto* menu = dynamic_cast<QMenu*>(&control)) menu->setTitle(text);
}

void ÖversättFormulär(QWidget& form, LanguageTexts& texts) {
    if (texts.language() != "SE") ÖversättFormulärAlltid(form, texts);
}

void ÖversättFormulärAlltid(QWidget& form, LanguageTexts& texts) {
    if (const auto text = texts.storedText(formKey(form))) form.setWindowTitle(toQt(*text));
    for (QWidget* control : form.findChildren<QWidget*>()) {
        if (!control->objectName().isEmpty()) translateControl(form, *control, texts);
    }
    for (QAction* action : form.findChildren<QAction*>()) {
        if (action->objectName().isEmpty()) continue;
        if (const auto text = texts.storedText(controlKey(form, *action))) action->setText(toQt(*text));
    }
}

}  // namespace kolmera
