#include "signin/window/loggain.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "lang/keys/loggain.h"
#include "platform/lettercase.h"
#include "signin/signin.h"
#include "ui/controls.h"
#include "ui/fields.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr std::string_view kForm = "Loggain";

QLabel* labelOf(QWidget& field, const char* name, const char* caption) {
    QLabel* made = label(*field.window(), name, caption);
    made->setBuddy(&field);
    return made;
}

}  // namespace

Loggain::Loggain(Program& program, std::span<const User> users, QWidget* parent)
    : QDialog(parent), program_(program), users_(users), namn_(new QLineEdit(this)), lösen_(new QLineEdit(this)) {
    setObjectName(toQt(kForm));
    setWindowTitle(QStringLiteral("Inloggning i Kolmera"));
    buildControls();
    layOut();
    loadForm(program_, *this);
    LösenStil(*lösen_);
    namn_->setFocus();
}

void Loggain::buildControls() {
    namn_->setObjectName(QStringLiteral("Namn"));
    lösen_->setObjectName(QStringLiteral("Lösen"));
    lösen_->setEchoMode(QLineEdit::Password);
    // Of the box alone: it loses the focus once more when the form is destroyed.
    connect(namn_, &QLineEdit::editingFinished, namn_, [field = namn_] { field->setText(field->text().toUpper()); });
    // In the password box Enter presses the default button.
    installEnterSomTabOn(*namn_);
}

void Loggain::layOut() {
    auto* buttons = new QDialogButtonBox(this);
    cmdOk_ = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    cmdOk_->setObjectName(QStringLiteral("CmdOK"));
    cmdOk_->setDefault(true);
    cmdAvbryt_ = buttons->addButton(QStringLiteral("Avbryt"), QDialogButtonBox::RejectRole);
    cmdAvbryt_->setObjectName(QStringLiteral("CmdAvbryt"));
    connect(cmdOk_, &QPushButton::clicked, this, [this] { tryTyped(); });
    connect(cmdAvbryt_, &QPushButton::clicked, this, [this] { reject(); });

    auto* fields = new QFormLayout;
    fields->addRow(labelOf(*namn_, "Lbl_Namn", "&Signatur"), namn_);
    fields->addRow(labelOf(*lösen_, "Lbl_Lösen", "&Lösenord"), lösen_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addStretch(1);
    layout->addWidget(buttons);
    constexpr int kLetters = 32;  ///< wide enough for the window's caption
    namn_->setMinimumWidth(kLetters * fontMetrics().averageCharWidth());
}

void Loggain::tryTyped() {
    const std::string sign = upperCase(trimmed(fromQt(namn_->text())));
    LanguageTexts& texts = program_.texts;
    switch (tryToSignIn(users_, sign, fromQt(lösen_->text()))) {
        case SignInResult::SignedIn:
            program_.state.Signatur = sign;
            accept();
            return;
        case SignInResult::UnknownSign:
            warn(texts.FormulärSträng(text::loggain::kUnknownSign), *namn_);
            return;
        case SignInResult::WrongPassword:
            warn(texts.FormulärSträng(text::loggain::kWrongPassword), *lösen_);
            return;
        case SignInResult::NoRight: {
            const std::string text = texts.FormulärSträngMed1(text::loggain::kNoRight, sign);
            // Without language texts too the user is told why the right password is refused.
            warn(text.empty() ? "Signaturen " + sign + " saknar rättighet för att använda Kolmera." : text, *namn_);
            return;
        }
    }
}

void Loggain::warn(const std::string& text, QLineEdit& field) {
    program_.boxes.MeddelandeVarning(text);
    MarkeraText(field, true);
}

}  // namespace kolmera
