#include "definitions/window/limitswindow.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>

#include "ui/controls.h"
#include "ui/fields.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/qttext.h"

namespace kolmera {

LimitsWindow::LimitsWindow(Program& program, const Limits& limits, QWidget* parent)
    : QDialog(parent),
      program_(program),
      editor_(program.texts, program.state.locale, limits),
      asItCame_(editor_.rows) {
    constexpr int kDigits = 12, kLetters = 60;
    setObjectName(QStringLiteral("LimitsWindow"));
    setWindowTitle(QStringLiteral("Gränser"));
    auto* grid = new QGridLayout(this);
    QLabel* what = label(*this, "Ledtext",
                         "En körning som skulle gå utanför en gräns frågar först, och ändrar ingenting så länge. Ett "
                         "tomt fält är ingen gräns.");
    what->setWordWrap(true);
    what->setMinimumWidth(kLetters * fontMetrics().averageCharWidth());
    grid->addWidget(what, 0, 0, 1, 2);
    int line = 1;
    for (const LimitsEditor::Row& row : editor_.rows) {
        auto* caption = new QLabel(toQt(row.caption), this);
        auto* field = new QLineEdit(toQt(row.text), this);
        field->setFixedWidth(kDigits * fontMetrics().horizontalAdvance('0'));
        allowNumbersOnly(*field, program.state.locale.decimalSign(), true, false);
        caption->setBuddy(field);
        fields_.push_back(field);
        grid->addWidget(caption, line, 0);
        grid->addWidget(field, line++, 1);
    }
    QPushButton* ok = button(*this, "OK", "&OK");
    ok->setDefault(true);
    QPushButton* cancel = button(*this, "Avbryt", "&Avbryt");
    connect(ok, &QPushButton::clicked, this, [this] { agree(); });
    connect(cancel, &QPushButton::clicked, this, [this] { QDialog::reject(); });
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    grid->addLayout(buttons, line, 0, 1, 2);
    grid->setColumnStretch(0, 1);
    installEnterSomTab(*this);
    loadForm(program, *this);
    fields_.front()->setFocus();
}

// Esc and the window's own button; "Avbryt" says what it does.
void LimitsWindow::reject() {
    const auto isAsItCame = [](const QLineEdit* field, const LimitsEditor::Row& row) {
        return fromQt(field->text()) == row.text;
    };
    if (!std::ranges::equal(fields_, asItCame_, isAsItCame) && !leaveUnsaved(program_)) return;
    QDialog::reject();
}

void LimitsWindow::agree() {
    for (std::size_t row = 0; row < fields_.size(); ++row) editor_.rows[row].text = fromQt(fields_[row]->text());
    if (const auto wrong = editor_.unreadable()) {
        program_.boxes.MeddelandeVarning(
            program_.texts.FormulärSträngMed1(text::limits::kNotANumber, editor_.rows[*wrong].caption));
        MarkeraText(*fields_[*wrong], true);
        return;
    }
    accept();
}

}  // namespace kolmera
