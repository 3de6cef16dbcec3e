#include "definitions/window/propertygrid.h"

#include <fmt/format.h>

#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>

#include "lang/keys/source.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr const char* kName = "property";
constexpr const char* kBefore = "before";

void removeAll(QLayout& layout) {
    while (QLayoutItem* item = layout.takeAt(0)) {
        delete item->widget();
        delete item;
    }
}

}  // namespace

PropertyGrid::PropertyGrid(Program& program, QWidget* parent) : QWidget(parent), program_(program) {
    auto* grid = new QGridLayout(this);
    grid->setColumnStretch(0, 2);
    grid->setColumnStretch(1, 3);
}

QString PropertyGrid::nameOfBox(int name) { return QStringLiteral("Egenskap_%1").arg(name); }

void PropertyGrid::begin(QWidget& before) {
    const QWidget* focused = window()->focusWidget();
    focused_ = focused != nullptr && isAncestorOf(focused) ? focused->objectName() : QString();
    removeAll(*layout());
    dynamic_cast<QGridLayout&>(*layout()).setRowStretch(lines_, 0);
    lines_ = 0;
    last_ = &before;
}

void PropertyGrid::addLine(const Line& line) {
    auto& grid = dynamic_cast<QGridLayout&>(*layout());
    const std::string doubt =
        line.sure ? std::string() : fmt::format(" {}", program_.texts.ModulText(text::source::kNotSure));
    auto* caption = new QLabel(toQt(line.caption + doubt), this);
    caption->setWordWrap(true);
    QWidget* value = line.choices.empty() ? field(line) : choices(line);
    value->setObjectName(nameOfBox(line.name));
    value->setProperty(kName, line.name);
    value->setEnabled(line.enabled);
    value->setAccessibleName(caption->text());
    caption->setBuddy(value);
    SättTypsnittKontroll(*caption, program_.state.TypsnittTahoma);
    SättTypsnittKontroll(*value, program_.state.TypsnittTahoma);
    grid.addWidget(caption, lines_, 0);
    grid.addWidget(value, lines_++, 1);
    setTabOrder(last_, value);
    last_ = value;
    installEnterSomTabOn(*value);
    caption->show();
    value->show();
    if (value->objectName() == focused_) value->setFocus();
}

void PropertyGrid::end(QWidget& behind) {
    dynamic_cast<QGridLayout&>(*layout()).setRowStretch(lines_, 1);
    setTabOrder(last_, &behind);
}

QWidget* PropertyGrid::choices(const Line& line) {
    auto* box = new QComboBox(this);
    for (const std::string& choice : line.choices) box->addItem(toQt(choice));
    box->setCurrentIndex(line.chosen);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    connect(box, &QComboBox::activated, this, [this, name = line.name](int choice) { later(name, choice, {}); });
    return box;
}

QWidget* PropertyGrid::field(const Line& line) {
    auto* field = new QLineEdit(toQt(line.text), this);
    field->setProperty(kBefore, field->text());
    connect(field, &QLineEdit::editingFinished, this, [this, field] { typed(*field); });
    return field;
}

void PropertyGrid::typed(const QLineEdit& field) {
    if (field.text() == field.property(kBefore).toString()) return;
    later(field.property(kName).toInt(), -1, fromQt(field.text()));
}

/// The box that was changed goes with the others, so not before it has done.
void PropertyGrid::later(int name, int choice, std::string typed) {
    QTimer::singleShot(0, this, [this, name, choice, typed = std::move(typed)] { changed(name, choice, typed); });
}

void PropertyGrid::commit() {
    for (const QLineEdit* field : findChildren<QLineEdit*>()) {
        if (field->text() == field->property(kBefore).toString() || !field->isEnabled()) continue;
        changed(field->property(kName).toInt(), -1, fromQt(field->text()));
        return;  // the boxes are others now
    }
}

}  // namespace kolmera
