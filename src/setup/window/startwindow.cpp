#include "setup/window/startwindow.h"

#include <QCommandLinkButton>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "lang/errortext.h"
#include "lang/keys/startwindow.h"
#include "lang/keys/terminal.h"
#include "platform/error.h"
#include "setup/newfolder.h"
#include "setup/window/newcompanywindow.h"
#include "startup/startplace.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/qttext.h"

namespace kolmera {

std::filesystem::path demoFolder(Program& program) {
    std::filesystem::path folder = userDemoFolder();
    if (!mayBecomeDataFolder(folder)) return folder;
    const Hourglass making(program.boxes.port());
    makeDemoFolder(folder, program.texts.ModulText(text::terminal::kDemoCompany),
                   program.state.programFolder() / "demo", program.state.locale);
    return folder;
}

StartWindow::StartWindow(Program& program, bool ownFolder, QWidget* parent) : QDialog(parent), program_(program) {
    setObjectName(QStringLiteral("StartWindow"));
    setWindowTitle(QStringLiteral("Välkommen till Kolmera"));
    buildControls(ownFolder);
    layOut();
    loadForm(program_, *this);
    demo_->setFocus();
}

QCommandLinkButton* StartWindow::choice(const char* name, const char* caption, const std::string& description) {
    auto* made = named(new QCommandLinkButton(QString::fromUtf8(caption), toQt(description), this), name);
    made->setAccessibleDescription(made->description());
    return made;
}

void StartWindow::buildControls(bool ownFolder) {
    LanguageTexts& texts = program_.texts;
    demo_ = choice("Demo", "&Prova med exempelföretaget",
                   texts.ModulTextMed(text::startwindow::kDemo, userDemoFolder().string()));
    new_ = choice("Nytt", "&Nytt företag...", texts.ModulText(text::startwindow::kNew));
    existing_ = choice("Befintlig", "&Öppna en datamapp...", texts.ModulText(text::startwindow::kExisting));
    own_ = choice("Egen", "Använd programmets &egen mapp",
                  texts.ModulTextMed(text::startwindow::kOwn, program_.state.programFolder().string()));
    own_->setVisible(ownFolder);
    recent_ = named(new QListWidget(this), "Senaste");
    recent_->setTextElideMode(Qt::ElideMiddle);
    for (const std::filesystem::path& folder : program_.recentFolders) recent_->addItem(toQt(folder.string()));
    cancel_ = button(*this, "Avsluta", "&Avbryt");
    connect(demo_, &QPushButton::clicked, this, [this] { tryDemo(); });
    connect(new_, &QPushButton::clicked, this, [this] { makeNew(); });
    connect(existing_, &QPushButton::clicked, this, [this] { openExisting(); });
    connect(own_, &QPushButton::clicked, this, [this] {
        answer_ = StartAnswer{};
        accept();
    });
    connect(recent_, &QListWidget::itemDoubleClicked, this, [this] { openRecent(); });
    actOnEnter(*recent_, [this] { openRecent(); });
    connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
    cancel_->setAutoDefault(false);
}

void StartWindow::layOut() {
    constexpr int kLetters = 70, kRecentLines = 6;
    auto* guiding = label(*this, "Ledtext",
                          "Kolmera arbetar med en datamapp, som har företagets register, inläsningar och masker.");
    guiding->setWordWrap(true);
    guiding->setMinimumWidth(kLetters * fontMetrics().averageCharWidth());
    auto* recentLabel = label(*this, "Lbl_Senaste", "&Senaste datamappar");
    recentLabel->setBuddy(recent_);
    recent_->setMaximumHeight(kRecentLines * fontMetrics().lineSpacing());
    for (QWidget* each : {static_cast<QWidget*>(recentLabel), static_cast<QWidget*>(recent_)})
        each->setVisible(recent_->count() > 0);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cancel_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(guiding);
    for (QCommandLinkButton* each : {demo_, new_, existing_, own_}) layout->addWidget(each);
    layout->addWidget(recentLabel);
    layout->addWidget(recent_);
    layout->addStretch(1);
    layout->addLayout(buttons);
}

void StartWindow::tryDemo() {
    try {
        choose(demoFolder(program_));
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(
            program_.texts.ModulTextMed(text::startwindow::kNotMade, userDemoFolder().string()) + " " +
            errorText(program_.texts, error));
    }
}

void StartWindow::makeNew() {
    NewCompanyWindow form(program_, this);
    if (VisaFormulär(program_, form, true) && !form.made().empty()) choose(form.made());
}

void StartWindow::openExisting() {
    const QString folder =
        QFileDialog::getExistingDirectory(this, toQt(program_.texts.ModulText(text::startwindow::kChooseFolder)));
    if (folder.isEmpty()) return;
    const std::string name = fromQt(folder);
    if (!isDataFolder(name) && program_.boxes.MeddelandeJaNejNej(program_.texts.ModulTextMed(
                                   text::startwindow::kAskToOpenEmpty, name)) != Answer::Yes) {
        return;
    }
    choose(name);
}

void StartWindow::openRecent() {
    const int row = recent_->currentRow();
    if (row >= 0) choose(program_.recentFolders[static_cast<std::size_t>(row)]);
}

void StartWindow::choose(const std::filesystem::path& folder) {
    std::error_code unreachable;
    if (!std::filesystem::is_directory(folder, unreachable)) {
        program_.boxes.MeddelandeVarning(program_.texts.ModulTextMed(text::startwindow::kCannotOpen, folder.string()));
        return;
    }
    answer_ = StartAnswer{.dataFolder = folder};
    accept();
}

std::optional<StartAnswer> askWhereToStart(Program& program, bool ownFolder, QWidget* parent) {
    StartWindow form(program, ownFolder, parent);
    if (!VisaFormulär(program, form, true)) return std::nullopt;
    return form.answer();
}

}  // namespace kolmera
