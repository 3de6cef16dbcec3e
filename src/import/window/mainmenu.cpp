#include "import/window/mainmenu.h"

#include <QAbstractButton>
#include <QAction>
#include <QActionGroup>
#include <QIcon>
#include <QMenu>
#include <QMenuBar>
#include <utility>

#include "ui/commands.h"
#include "ui/controls.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr struct { const char *code, *name; } kLanguages[] = {{"SE", "&Svenska"}, {"EN", "&English"}};

}  // namespace

MainMenu::MainMenu(Program& program, QWidget& form, const Buttons& buttons, Acts acts)
    : program_(program), form_(form), acts_(std::move(acts)), bar_(new QMenuBar(&form)) {
    fillFile(buttons);
    fillJob(buttons);
    fillRest(buttons);
    giveIcons();
}

QMenu* MainMenu::menu(const char* name, const char* caption) {
    auto* made = named(new QMenu(QString::fromUtf8(caption), &form_), name);
    bar_->addMenu(made);
    return made;
}

QAction* MainMenu::action(QMenu& menu, const char* name, const char* caption, const QKeySequence& key,
                          const std::function<void()>& act) {
    auto* made = new QAction(QString::fromUtf8(caption), &form_);
    made->setObjectName(QString::fromUtf8(name));
    made->setShortcut(key);
    QObject::connect(made, &QAction::triggered, &form_, act);
    menu.addAction(made);
    form_.addAction(made);
    return made;
}

void MainMenu::fillFile(const Buttons& buttons) {
    QMenu& file = *menu("MenyArkiv", "Arki&v");
    QAction* other = action(file, "BytDatamapp", "&Byt datamapp...", QKeySequence::Open, acts_.otherFolder);
    recent_ = named(new QMenu(QStringLiteral("&Senaste datamappar"), &form_), "SenasteMappar");
    file.addMenu(recent_);
    addRecent();
    language_ = named(new QMenu(QStringLiteral("S&pråk"), &form_), "Språk");
    file.addMenu(language_);
    addLanguages(*language_);
    file.addSeparator();
    file.addAction(new ButtonAction(buttons.avsluta, form_, {Qt::Key_F12, QKeySequence::Quit}));
    other->setVisible(static_cast<bool>(program_.chooseDataFolder));
    recent_->menuAction()->setVisible(!program_.recentFolders.empty());
    restful_ = {other, recent_->menuAction(), language_->menuAction()};
}

void MainMenu::addRecent() {
    int number = 0;
    for (const std::filesystem::path& folder : program_.recentFolders) {
        QString caption = toQt(folder.string()).replace(QLatin1Char('&'), QStringLiteral("&&"));
        if (++number < 10) caption = QStringLiteral("&%1 %2").arg(number).arg(caption);
        QObject::connect(recent_->addAction(caption), &QAction::triggered, &form_,
                         [this, folder] { acts_.openFolder(folder); });
    }
}

void MainMenu::addLanguages(QMenu& menu) {
    auto* group = new QActionGroup(&menu);
    for (const auto& language : kLanguages) {
        QAction* made = menu.addAction(QString::fromUtf8(language.name));
        made->setCheckable(true);
        made->setChecked(program_.texts.language() == language.code);
        group->addAction(made);
        const std::string code = language.code;
        QObject::connect(made, &QAction::triggered, &form_, [this, code] {
            if (program_.texts.language() != code) acts_.speak(code);
        });
    }
}

void MainMenu::fillJob(const Buttons& buttons) {
    QMenu& job = *menu("MenyInläsning", "&Inläsning");
    const auto ofButton = [&](QAbstractButton& button, const QList<QKeySequence>& keys, const char* icon) {
        auto* made = new ButtonAction(button, form_, keys);
        made->setIcon(QIcon::fromTheme(QLatin1String(icon)));
        job.addAction(made);
        return made;
    };
    ofButton(buttons.ny, {QKeySequence::New}, "document-new");
    QAction* open = ofButton(buttons.öppna, {}, "document-open");
    copyJob_ = action(job, "Duplicera", "&Duplicera...", Qt::CTRL | Qt::Key_D, acts_.copyJob);
    QAction* remove = ofButton(buttons.taBort, {QKeySequence::Delete, Qt::Key_F9}, "edit-delete");
    job.addSeparator();
    saveTemplate_ = action(job, "SparaMall", "Spara so&m mall...", {}, acts_.saveTemplate);
    QAction* openTemplate = action(job, "ÖppnaMall", "Öppna m&all...", {}, acts_.openTemplate);
    job.addSeparator();
    QAction* run = ofButton(buttons.utför, {Qt::CTRL | Qt::Key_R}, "media-playback-start");
    QAction* preview = ofButton(buttons.förhandsgranska, {Qt::Key_F5}, "document-print-preview");
    otherFile_ = action(job, "AnnanFil", "Läs en annan fi&l...", Qt::CTRL | Qt::Key_L, acts_.readOtherFile);
    job.addSeparator();
    copyRow_ = action(job, "KopieraRad", "&Kopiera rad", {}, acts_.copyRow);
    aboutJob_ = {run, preview, otherFile_, open, copyJob_, remove, copyRow_};
    restful_.push_back(openTemplate);
    search_ = action(job, "SökInläsning", "&Sök", {}, acts_.search);
}

void MainMenu::fillRest(const Buttons& buttons) {
    QMenu& tools = *menu("MenyVerktyg", "V&erktyg");
    tools.addAction(new ButtonAction(buttons.rabattbrev, form_, {}));
    tools.addAction(new ButtonAction(buttons.tidigare, form_, {Qt::CTRL | Qt::Key_H}));
    products_ = action(tools, "Produkter", "&Produkter...", Qt::CTRL | Qt::Key_P, acts_.products);
    registers_ = action(tools, "Register", "Företagets re&gister...", Qt::CTRL | Qt::Key_G, acts_.registers);
    QAction* access = action(tools, "AccessFil", "Företag från en &Access-fil...", {}, acts_.accessFile);
    access->setVisible(static_cast<bool>(program_.importAccess));
    restful_.insert(restful_.end(), {products_, registers_, access});
    QMenu& help = *menu("MenyHjälp", "&Hjälp");
    guide_ = action(help, "Handbok", "&Handbok", {}, acts_.guide);
    action(help, "Om", "&Om Kolmera", {}, acts_.about);
}

/// The desktop's own, where it has them and shows them in menus.
void MainMenu::giveIcons() {
    const std::pair<QAction*, const char*> icons[] = {
        {copyJob_, "edit-copy"}, {saveTemplate_, "document-save-as"}, {copyRow_, "edit-copy"},
        {search_, "edit-find"},  {products_, "system-search"},        {guide_, "help-contents"},
    };
    for (const auto& [action, icon] : icons) action->setIcon(QIcon::fromTheme(QLatin1String(icon)));
}

void MainMenu::name() {
    nameButtonActions(form_);
    guide_->setText(withKey(guide_->text(), QKeySequence::HelpContents));
    copyRow_->setText(withKey(copyRow_->text(), QKeySequence::Copy));
    search_->setText(withKey(search_->text(), QKeySequence::Find));
}

void MainMenu::present(bool running, bool canRun, bool canCopy) {
    for (QAction* action : restful_) action->setEnabled(!running);
    copyJob_->setEnabled(!running && canCopy);
    otherFile_->setEnabled(!running && canRun);
    copyRow_->setEnabled(!running && canRun);
    saveTemplate_->setEnabled(!running && canRun);
}

}  // namespace kolmera
