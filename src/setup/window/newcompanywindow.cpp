#include "setup/window/newcompanywindow.h"

#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QStandardPaths>

#include "lang/errortext.h"
#include "lang/keys/startwindow.h"
#include "platform/error.h"
#include "setup/newfolder.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kNameLength = 50;  ///< of the company's name in its settings

QString documents() { return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation); }

}  // namespace

NewCompanyWindow::NewCompanyWindow(Program& program, QWidget* parent) : QDialog(parent), program_(program) {
    setObjectName(QStringLiteral("NewCompanyWindow"));
    setWindowTitle(QStringLiteral("Nytt företag"));
    name_ = named(new QLineEdit(this), "Namn");
    name_->setMaxLength(kNameLength);
    folder_ = named(new QLineEdit(this), "Mapp");
    browse_ = button(*this, "Bläddra", "&Bläddra...");
    create_ = button(*this, "Skapa", "&Skapa");
    create_->setDefault(true);
    cancel_ = button(*this, "Avbryt", "&Avbryt");
    browse_->setAutoDefault(false);
    cancel_->setAutoDefault(false);
    connect(name_, &QLineEdit::textChanged, this, [this] { proposeFolder(); });
    connect(folder_, &QLineEdit::textEdited, this, [this] { folderTyped_ = true; });
    connect(folder_, &QLineEdit::textChanged, this, [this] { present(); });
    connect(browse_, &QPushButton::clicked, this, [this] { chooseFolder(); });
    connect(create_, &QPushButton::clicked, this, [this] { make(); });
    connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
    layOut();
    loadForm(program_, *this);
    proposeFolder();
    name_->setFocus();
}

void NewCompanyWindow::layOut() {
    constexpr int kLetters = 60;
    folder_->setMinimumWidth(kLetters * fontMetrics().averageCharWidth());
    auto* name = label(*this, "Lbl_Namn", "&Företagets namn");
    name->setBuddy(name_);
    auto* folder = label(*this, "Lbl_Mapp", "&Datamapp");
    folder->setBuddy(folder_);
    auto* grid = new QGridLayout;
    grid->addWidget(name, 0, 0);
    grid->addWidget(name_, 0, 1, 1, 2);
    grid->addWidget(folder, 1, 0);
    grid->addWidget(folder_, 1, 1);
    grid->addWidget(browse_, 1, 2);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(create_);
    buttons->addWidget(cancel_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addStretch(1);
    layout->addLayout(buttons);
}

void NewCompanyWindow::present() {
    create_->setEnabled(!name_->text().trimmed().isEmpty() && QDir::isAbsolutePath(folder_->text().trimmed()));
}

/// Until it is typed, the folder is called as the company.
void NewCompanyWindow::proposeFolder() {
    if (!folderTyped_) {
        static const QRegularExpression unfit(QStringLiteral("[/\\\\:*?\"<>|]"));
        const QString name = name_->text().trimmed().replace(unfit, QStringLiteral("-"));
        folder_->setText(QDir(documents()).filePath(QStringLiteral("Kolmera/") + name));
    }
    present();
}

void NewCompanyWindow::chooseFolder() {
    const QString title = toQt(program_.texts.ModulText(text::startwindow::kChooseFolder));
    const QString chosen = QFileDialog::getExistingDirectory(this, title, documents());
    if (chosen.isEmpty()) return;
    folderTyped_ = true;
    folder_->setText(chosen);
}

void NewCompanyWindow::make() {
    const std::string folder = fromQt(folder_->text().trimmed());
    if (!mayBecomeDataFolder(folder)) {
        program_.boxes.MeddelandeVarning(program_.texts.ModulTextMed(text::startwindow::kNotEmpty, folder));
        return;
    }
    try {
        const Hourglass making(program_.boxes.port());
        makeNewFolder(folder, fromQt(name_->text().trimmed()));
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(program_.texts.ModulTextMed(text::startwindow::kNotMade, folder) + " " +
                                         errorText(program_.texts, error));
        return;
    }
    made_ = folder;
    accept();
}

}  // namespace kolmera
