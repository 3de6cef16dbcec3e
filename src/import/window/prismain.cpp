#include "import/window/prismain.h"

#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <string>
#include <utility>

#include "definitions/jobcopy.h"
#include "definitions/pricefilepath.h"
#include "definitions/savemessages.h"
#include "history/runlist.h"
#include "history/window/openrecord.h"
#include "history/window/runswindow.h"
#include "import/preview/limitedrun.h"
#include "import/preview/preview.h"
#include "import/run/runresult.h"
#include "import/window/firststepspanel.h"
#include "import/window/jobicons.h"
#include "import/window/joblistmodel.h"
#include "import/window/mainmenu.h"
#include "import/window/pricefiledrop.h"
#include "import/window/resultpanel.h"
#include "import/window/runpanel.h"
#include "import/window/templatefiles.h"
#include "lang/errortext.h"
#include "lang/keys/boxes.h"
#include "lang/keys/copies.h"
#include "lang/keys/definitions.h"
#include "lang/keys/mainmenu.h"
#include "lang/keys/prismain.h"
#include "lang/keys/prisstyr.h"
#include "platform/attempt.h"
#include "platform/lettercase.h"
#include "products/window/productwindow.h"
#include "registers/window/registerswindow.h"
#include "startup/suppliernames.h"
#include "ui/controls.h"
#include "ui/copyrows.h"
#include "ui/filedialogs.h"
#include "ui/forms.h"
#include "ui/guidewindow.h"
#include "ui/keys.h"
#include "ui/lists.h"
#include "ui/qttext.h"
#include "ui/searchbox.h"
#include "ui/ucfadeline.h"

namespace kolmera {
namespace {

constexpr std::string_view kForm = "PrisMain";
constexpr std::array<const char*, JobTable::kColumns> kDesignedHeaders{"Inläsning", "Typ", "Prisfil", "Fildatum",
                                                                       "Senast inläst"};
constexpr std::array<FormKey, JobTable::kColumns> kHeaders{
    text::prismain::kImportHeading, text::prismain::kKindHeading, text::prismain::kPriceFileHeading,
    text::prismain::kFileDateHeading, text::prismain::kLastRunHeading};

constexpr std::chrono::seconds kLookEvery{20};

/// "2026-11-23 08:15 Klar"
std::string lastRunText(LanguageTexts& texts, const LastRun& last) {
    constexpr std::size_t kToMinutes = 16;
    std::string text = last.run.started.substr(0, kToMinutes);
    std::ranges::replace(text, 'T', ' ');
    return text + " " + (last.takenBack ? texts.ModulText(text::mainmenu::kTakenBack) : outcomeText(texts, last.run));
}

}  // namespace

PrisMain::PrisMain(Program& program)
    : program_(program),
      Idag_(Date::today()),
      jobs_(program.state.locale),
      lastRuns_(RunFolder(program.state.dataFolder())),
      watch_(this, [this] { refresh(); }),
      model_(new JobListModel(jobs_, this)),
      lista_(new QTreeView(this)),
      stepsPanel_(new FirstStepsPanel(*this)),
      resultPanel_(new ResultPanel(program, this)),
      runPanel_(new RunPanel(program, this)) {
    setObjectName(toQt(kForm));
    setWindowTitle(QStringLiteral("Kolmera - Inläsning av prisfiler"));
    buildControls();
    buildList();
    buildSearch();
    buildMenu();
    beginWatching();
    layOut();
    loadForm(program_, *this);
    menu_->name();
    nameColumns();
    drawIcons();
    FyllJobbLista(0);
    setSizes();
    centreOnScreen(*this);
    lista_->setFocus();
}

// Child windows are destroyed behind the members: the list must not report its going to a form that is gone.
PrisMain::~PrisMain() { delete lista_; }

void PrisMain::buildControls() {
    ny_ = button(*this, "Ny", "&Ny inläsning...");
    öppna_ = button(*this, "Öppna", "&Öppna inläsning...");
    taBort_ = button(*this, "TaBort", "&Ta bort inläsning");
    utför_ = button(*this, "Utför", "&Utför...");
    rabattbrev_ = button(*this, "CmdRabattbrev", "&Rabattbrev...");
    förhandsgranska_ = button(*this, "Förhandsgranska", "&Förhandsgranska...");
    tidigare_ = button(*this, "TidigareKörningar", "Tidigare &körningar...");
    avsluta_ = button(*this, "Avsluta", "&Avsluta");
    connect(ny_, &QPushButton::clicked, this, [this] { ny(); });
    connect(öppna_, &QPushButton::clicked, this, [this] { öppna(); });
    connect(taBort_, &QPushButton::clicked, this, [this] { taBort(); });
    connect(utför_, &QPushButton::clicked, this, [this] { utför(); });
    connect(rabattbrev_, &QPushButton::clicked, this, [this] { rabattbrev(); });
    connect(förhandsgranska_, &QPushButton::clicked, this, [this] { förhandsgranska(false); });
    connect(tidigare_, &QPushButton::clicked, this, [this] { tidigareKörningar(); });
    connect(avsluta_, &QPushButton::clicked, this, [this] { close(); });
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, this, [this] {
        if (running_) runPanel_->cancel();
    });
    runPanel_->onRunMode = [this] { centreOnScreen(*this); };
    runPanel_->onOpenJobSettings = [this] { öppna(); };
    stepsPanel_->onSuppliers = [this] { openRegisters("suppliers"); };
    stepsPanel_->onLetters = [this] { openRegisters("letters"); };
    stepsPanel_->onNewJob = [this] { ny(); };
    stepsPanel_->onCouplings = [this] { openRegisters(kCouplings); };
    resultPanel_->onShowChanges = [this] { visaÄndringar(); };
}

void PrisMain::buildMenu() {
    menu_ = std::make_unique<MainMenu>(
        program_, *this,
        MainMenu::Buttons{.ny = *ny_,
                          .öppna = *öppna_,
                          .taBort = *taBort_,
                          .utför = *utför_,
                          .förhandsgranska = *förhandsgranska_,
                          .rabattbrev = *rabattbrev_,
                          .tidigare = *tidigare_,
                          .avsluta = *avsluta_},
        MainMenu::Acts{
            .copyJob = [this] { duplicera(); },
            .readOtherFile = [this] { läsAnnanFil(); },
            .copyRow = [this] { copyRows(*lista_); },
            .search = [this] { search_->setFocus(Qt::ShortcutFocusReason); },
            .saveTemplate = [this] { sparaMall(); },
            .openTemplate = [this] { öppnaMall(); },
            .guide = [this] { openGuide(this, program_.texts, program_.state.programFolder(), kForm); },
            .about = [this] { about(); },
            .otherFolder =
                [this] {
                    const auto folder = program_.chooseDataFolder(this);
                    if (folder) leaveFor({.dataFolder = *folder, .language = {}});
                },
            .products = [this] { showProducts(program_, this); },
            .registers = [this] { openRegisters(); },
            .openFolder =
                [this](const std::filesystem::path& folder) { leaveFor({.dataFolder = folder, .language = {}}); },
            .speak = [this](const std::string& language) { leaveFor({.dataFolder = {}, .language = language}); }});
    lista_->setContextMenuPolicy(Qt::ActionsContextMenu);
    for (QAction* action : menu_->aboutJob()) lista_->addAction(action);
}

void PrisMain::buildSearch() {
    searchLabel_ = label(*this, "Lbl_Sök", "&Sök");
    search_ = named(new SearchBox(*lista_, *this), "Sök");
    searchLabel_->setBuddy(search_);
    search_->takeFindKey(*this);
    companyLabel_ = label(*this, "Lbl_FöretagVal", "Företa&g");
    company_ = named(new QComboBox(this), "FöretagVal");
    companyLabel_->setBuddy(company_);
    connect(search_, &QLineEdit::textEdited, this, [this] { nameSuppliers(); });
    stepsPanel_->goOnTo(*search_);
    setTabOrder(search_, company_);
    setTabOrder(company_, lista_);
    setTabOrder(lista_, ny_);
    connect(company_, &QComboBox::activated, this, [this] {
        const std::string company = fromQt(company_->currentData().toString());
        search_->alsoShows = nullptr;
        if (!company.empty())
            search_->alsoShows = [this, company](int row) { return equalNoCase(jobs_.row(row).job.company, company); };
        search_->apply();
    });
}

/// The first letter of a search opens the companies for the names of their suppliers, once until the list is read anew.
void PrisMain::nameSuppliers() {
    if (std::exchange(suppliersNamed_, true)) return;
    const Hourglass reading(program_.boxes.port());
    for (const std::string& company : jobs_.companies())
        jobs_.tellSuppliers(company, supplierNames(program_.state, company));
    search_->apply();
}

/// A choice among the companies of the jobs, where there is one to make.
void PrisMain::offerCompanies() {
    suppliersNamed_ = false;
    const std::vector<std::string> companies = jobs_.companies();
    const QVariant chosen = company_->currentData();
    company_->clear();
    company_->addItem(toQt(program_.texts.ModulText(text::mainmenu::kAllCompanies)), QString());
    for (const std::string& company : companies) company_->addItem(toQt(properCase(company)), toQt(company));
    company_->setCurrentIndex(std::max(company_->findData(chosen), 0));
    if (company_->currentIndex() == 0) search_->alsoShows = nullptr;
    companyLabel_->setVisible(companies.size() > 1);
    company_->setVisible(companies.size() > 1);
}

void PrisMain::buildList() {
    lista_->setObjectName(QStringLiteral("Lista"));
    lista_->setToolTip(QStringLiteral("Inläsningar"));
    lista_->setModel(model_);
    lista_->setRootIsDecorated(false);
    lista_->setUniformRowHeights(true);
    lista_->setAllColumnsShowFocus(true);
    lista_->setTextElideMode(Qt::ElideMiddle);
    lista_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    QHeaderView& header = *lista_->header();
    header.setStretchLastSection(false);
    header.setSectionResizeMode(JobTable::kPriceFile, QHeaderView::Stretch);
    sortByHeaderClicks(*lista_);
    connect(lista_->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this](const QModelIndex& row) {
        jobs_.select(row.row());
        present();
    });
    connect(lista_, &QTreeView::doubleClicked, this, [this] { öppna(); });
    takeDroppedFiles(*lista_, {.accepts = [this](const QModelIndex& /*row*/) { return !running_; },
                               .take =
                                   [this](const QModelIndex& row, const std::string& file) {
                                       lista_->setCurrentIndex(row.siblingAtColumn(0));
                                       askWhatToDoWith(file);
                                   }});
    for (const Qt::Key enter : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* shortcut = new QShortcut(enter, lista_);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, [this] { öppna(); });
    }
}

void PrisMain::nameColumns() {
    std::array<QString, JobTable::kColumns> headers;
    for (std::size_t column = 0; column < headers.size(); ++column) {
        const std::string text = program_.texts.FormulärSträng(kHeaders.at(column));
        headers.at(column) = text.empty() ? QString::fromUtf8(kDesignedHeaders.at(column)) : toQt(text);
    }
    model_->setHeaders(headers);
}

void PrisMain::setSizes() {
    constexpr int kNameLetters = 32, kLastRunLetters = 28, kWindowLetters = 150, kWindowLines = 30;
    const QFontMetrics metrics = fontMetrics();
    lista_->setColumnWidth(JobTable::kName, kNameLetters * metrics.averageCharWidth());
    lista_->setColumnWidth(JobTable::kLastRun, kLastRunLetters * metrics.averageCharWidth());
    for (const int column : {JobTable::kKind, JobTable::kFileState}) lista_->resizeColumnToContents(column);
    const QSize wanted(kWindowLetters * metrics.averageCharWidth(), kWindowLines * metrics.lineSpacing());
    resize(wanted.boundedTo(screen()->availableSize()));
}

void PrisMain::layOut() {
    auto* buttons = new QVBoxLayout;
    for (QPushButton* each : {ny_, öppna_, taBort_}) buttons->addWidget(each);
    buttons->addSpacing(style()->pixelMetric(QStyle::PM_LayoutVerticalSpacing) * 2);
    buttons->addWidget(utför_);
    buttons->addSpacing(style()->pixelMetric(QStyle::PM_LayoutVerticalSpacing) * 2);
    buttons->addWidget(rabattbrev_);
    buttons->addSpacing(style()->pixelMetric(QStyle::PM_LayoutVerticalSpacing) * 2);
    buttons->addWidget(förhandsgranska_);
    buttons->addWidget(tidigare_);
    buttons->addStretch(1);
    buttons->addWidget(avsluta_);
    auto* search = new QHBoxLayout;
    search->addWidget(searchLabel_);
    search->addWidget(search_, 1);
    search->addWidget(companyLabel_);
    search->addWidget(company_);
    auto* list = new QVBoxLayout;
    list->addLayout(search);
    list->addWidget(lista_, 1);
    auto* upper = new QHBoxLayout;
    upper->addLayout(list, 1);
    upper->addLayout(buttons);
    auto* layout = new QVBoxLayout(this);
    layout->setMenuBar(menu_->bar());
    layout->addWidget(stepsPanel_);
    layout->addLayout(upper, 1);
    layout->addWidget(resultPanel_);
    layout->addWidget(new UCFadeLine(this));
    layout->addWidget(runPanel_);
}

void PrisMain::drawIcons() {
    model_->setIcons(maskJobIcon(palette()), tradeFormatJobIcon(palette()));
    setWindowIcon(maskJobIcon(palette()));
}

void PrisMain::FyllJobbLista(int JobbNr) { fill(JobbNr, program_.state.settings.get("Start", "Kolmera")); }

std::vector<JobRow> PrisMain::readRows() {
    const StartState& state = program_.state;
    return jobRows(program_.texts, {.drives = state.drives,
                                    .dataFolder = state.dataFolder(),
                                    .programFolder = state.programFolder(),
                                    .locale = state.locale});
}

/// Below 1 the job of that name is selected.
void PrisMain::fill(int JobbNr, const std::string& otherwise) {
    std::vector<JobRow> rows;
    try {
        rows = readRows();
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(
            program_.texts.ModulTextMed(text::prismain::kCannotShowImports, errorText(program_.texts, error)));
    }
    showRows(std::move(rows), JobbNr, otherwise);
    // A job that is to be seen, and that the search does not find, ends the search.
    const int row = jobs_.selected();
    if (JobbNr >= 1 && row != JobTable::kNoRow && lista_->isRowHidden(row, {})) {
        company_->setCurrentIndex(0);
        search_->alsoShows = nullptr;
        search_->clear();
    }
    search_->apply();
}

void PrisMain::showRows(std::vector<JobRow> rows, int JobbNr, const std::string& otherwise) {
    model_->fill(std::move(rows), JobbNr, otherwise);
    offerCompanies();
    showSelection();
    showFirstSteps();
    present();
    watchFolders();
}

void PrisMain::showFirstSteps() {
    steps_ = firstSteps(program_.state, jobs_.jobs());
    stepsPanel_->present(steps_, !running_);
}

void PrisMain::openRegisters(std::string_view name) {
    showRegisters(program_, this, name);
    showFirstSteps();
}

void PrisMain::beginWatching() {
    readsLastRuns_.setSingleShot(true);
    connect(&readsLastRuns_, &QTimer::timeout, this, [this] { readLastRuns(); });
    connect(&looks_, &QTimer::timeout, this, [this] {
        if (isActiveWindow()) watch_.look();
    });
    looks_.start(kLookEvery);
}

/// Several programs change a data folder: what the list shows is looked up again when something moves there.
void PrisMain::watchFolders() {
    const StartState& state = program_.state;
    const RunFolder runs(state.dataFolder());
    std::vector<std::filesystem::path> paths{state.dataFolder(), runs.path()};
    for (const Job& job : jobs_.jobs()) {
        const bool removable = state.drives.kind(job.priceFile) == DriveKind::Removable;
        if (job.priceFile.empty() || removable) continue;
        const auto file = findPriceFile(job.priceFile, state.drives, state.dataFolder(), state.programFolder());
        paths.push_back(file);
        paths.push_back(file.parent_path());
    }
    watch_.watch(paths);
    lastRuns_.look();
    readsLastRuns_.start();
}

/// Never under a run, or under a window that works on the selected job.
void PrisMain::refresh() {
    if (running_ || QApplication::activeModalWidget() != nullptr || QApplication::activePopupWidget() != nullptr)
        return;
    try {
        std::vector<JobRow> rows = readRows();
        if (jobs_.has(rows)) {
            watchFolders();
            return;
        }
        constexpr int kNoJob = std::numeric_limits<int>::max();
        const int selected = jobs_.selectedAmong(rows);
        const int scrolled = lista_->verticalScrollBar()->value();
        showRows(std::move(rows), selected > 0 ? selected : kNoJob, {});
        search_->apply();
        lista_->verticalScrollBar()->setValue(scrolled);
    } catch (const PlatformError&) {
        // The folder cannot be read now. What the list shows stays; who does something with it is told.
    }
}

/// A few records at a time, so that the window stays alive while there are many.
void PrisMain::readLastRuns() {
    constexpr int kAtATime = 4;
    std::vector<std::string> names;
    for (const Job& job : jobs_.jobs()) names.push_back(job.name);
    if (lastRuns_.read(kAtATime, names)) readsLastRuns_.start();
    std::map<std::string, std::string> texts;
    for (const std::string& name : names) {
        if (const auto last = lastRuns_.of(name)) texts[name] = lastRunText(program_.texts, *last);
    }
    model_->tellLastRuns(std::move(texts));
}

/// Whether the selected job is stored as the list shows it. If not, the user is told, and the list is read again.
bool PrisMain::isAsShown() {
    const Job shown = jobs_.row(jobs_.selected()).job;
    std::optional<Job> stored;
    PassedOverSilently passedOver;  // filling the list tells of it
    attempt(passedOver, shown.name, [&] { stored = JobFile(program_.state.dataFolder()).read(shown.number); });
    if (stored == shown) return true;
    program_.boxes.MeddelandeVarning(
        program_.texts.ModulTextMed(text::definitions::kImportChangedNothingDone, shown.name));
    fill(0, shown.name);
    return false;
}

// The view shows the row that the table has selected.
void PrisMain::showSelection() { selectRow(*lista_, jobs_.selected()); }

// The one place that enables: while a run is on, only its Cancel button acts.
void PrisMain::present() {
    lista_->setEnabled(!running_);
    ny_->setEnabled(!running_);
    öppna_->setEnabled(!running_ && jobs_.canOpen());
    taBort_->setEnabled(!running_ && jobs_.canDelete());
    utför_->setEnabled(!running_ && jobs_.canRun());
    förhandsgranska_->setEnabled(!running_ && jobs_.canRun());
    search_->setEnabled(!running_);
    company_->setEnabled(!running_);
    stepsPanel_->present(steps_, !running_);
    menu_->present(running_, jobs_.canRun(), jobs_.canCopy());
    tidigare_->setEnabled(!running_);
    rabattbrev_->setEnabled(!running_ && program_.showPrisRab);
    avsluta_->setEnabled(!running_);
}

/// Offers the jobs of the trade formats to a list that has lost them.
bool PrisMain::addsTradeJobs() {
    const std::vector<std::string> missing = missingTradeJobs(jobs_.jobs());
    if (missing.empty()) return false;
    std::string names;
    for (const std::string& name : missing) names.append(names.empty() ? "" : ", ").append(name);
    const std::string question = program_.texts.ModulTextMed(text::definitions::kAskToAddTradeFormats, names);
    if (program_.boxes.MeddelandeJaNej(question) != Answer::Yes) return false;
    try {
        JobFile(program_.state.dataFolder()).addTradeJobs(program_.state.StandardFöretag);
    } catch (const PlatformError& error) {
        tellNotSaved(error, {}, program_.texts, program_.boxes);
    }
    fill(0, missing.front());
    return true;
}

void PrisMain::ny() {
    if (!addsTradeJobs()) openSettings(0, false);
}

void PrisMain::öppna() {
    if (!jobs_.canOpen() || !isAsShown()) return;
    openSettings(jobs_.JobbNr(), ÄrStandardFormat(jobs_.jobName()));
}

void PrisMain::openSettings(int JobbNr, bool ÄrStandardJobb) {
    if (!program_.showPrisStyr) return;
    if (const auto saved = program_.showPrisStyr(this, JobbNr, ÄrStandardJobb)) FyllJobbLista(*saved);
    showFirstSteps();
}

void PrisMain::taBort() {
    if (!jobs_.canDelete()) return;
    const std::string title = program_.texts.FormulärSträng(text::prismain::kDeleteTitle);
    const std::vector<Job> shown = jobs_.namesakes();
    const std::string& name = shown.front().name;
    std::string question = title + " " + name + " ?";
    if (shown.size() > 1) {
        question +=
            "\r\n\r\n" + program_.texts.ModulTextMed(text::definitions::kSeveralImports, std::to_string(shown.size()));
    }
    if (program_.boxes.MeddelandeJaNejNej(question, title) != Answer::Yes) return;
    try {
        JobFile(program_.state.dataFolder()).remove(shown);
    } catch (const PlatformError& error) {
        tellNotSaved(error, {.changedElsewhere = text::definitions::kImportChangedNothingDone, .name = name},
                     program_.texts, program_.boxes);
    }
    FyllJobbLista(0);
}

ImportContext PrisMain::context() {
    return {.state = program_.state,
            .texts = program_.texts,
            .boxes = program_.boxes,
            .companies = program_.companies,
            .port = *runPanel_,
            .Idag = Idag_,
            .JobbNr = jobs_.JobbNr(),
            .shown = jobs_.row(jobs_.selected()).job};
}

void PrisMain::whileRunning(const std::function<void()>& work) {
    running_ = true;
    resultPanel_->hide();
    present();
    runPanel_->begin();
    work();
    running_ = false;
    if (runPanel_->isVisible()) runPanel_->runMode(false);
    present();
    lista_->setFocus();
    watch_.look();
}

void PrisMain::utför(const std::string& otherFile) {
    if (!jobs_.canRun() || running_ || !isAsShown()) return;
    ImportContext context = this->context();
    RecordKeeping record = keptInDataFolder(program_.state);
    context.record = &record;
    context.otherFile = otherFile;
    RunSummary summary;
    whileRunning([&] { summary = runWithinLimits(context, jobs_.jobName()); });
    lastRecord_ = record.failure ? std::string() : record.id;
    resultPanel_->tell(runResult(program_.texts, program_.state.locale, jobs_.jobName(), summary, runPanel_->seconds()),
                       !lastRecord_.empty());
    if (closeAfterRun_) {
        close();
    } else if (const auto emptyTables = runPanel_->takePreviewWish()) {
        förhandsgranska(*emptyTables, otherFile);
    }
}

void PrisMain::visaÄndringar() {
    try {
        showRecord(program_, this, RunFolder(program_.state.dataFolder()).file(lastRecord_));
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(errorText(program_.texts, error));
    }
}

void PrisMain::duplicera() {
    if (!jobs_.canCopy() || running_ || !isAsShown()) return;
    const Job shown = jobs_.row(jobs_.selected()).job;
    const bool withMask = !shown.mask.empty() && program_.boxes.MeddelandeJaNejNej(program_.texts.ModulTextMed(
                                                     text::mainmenu::kAskToCopyMask, shown.mask)) == Answer::Yes;
    int made = 0;
    try {
        made = copyJob(program_.state.dataFolder(), shown, withMask, program_.texts.ModulText(text::copies::kWord));
    } catch (const PlatformError& error) {
        tellNotSaved(error, {.changedElsewhere = text::definitions::kImportChangedNothingDone, .name = shown.name},
                     program_.texts, program_.boxes);
    }
    FyllJobbLista(made);
    if (made > 0) öppna();
}

void PrisMain::sparaMall() {
    if (!jobs_.canRun() || running_ || !isAsShown()) return;
    saveTemplate(program_, jobs_.row(jobs_.selected()).job, [this](const FileQuestion& question) {
        return askForFileToSave(this, question, [](const QString& /*file*/) { return false; });
    });
}

void PrisMain::öppnaMall() {
    if (running_) return;
    const auto ask = [this](const FileQuestion& question) { return askForFileToOpen(this, question); };
    if (const int made = openTemplate(program_, this, ask); made > 0) FyllJobbLista(made);
}

void PrisMain::läsAnnanFil() {
    if (!jobs_.canRun() || running_) return;
    const Job& job = jobs_.row(jobs_.selected()).job;
    const StartState& state = program_.state;
    const auto file = findPriceFile(job.priceFile, state.drives, state.dataFolder(), state.programFolder());
    FileQuestion question;
    question.title = toQt(job.name);
    question.filters = toQt(program_.texts.FormulärSträng(text::prisstyr::kPriceFileFilter));
    question.path = toQt((job.priceFile.empty() ? state.dataFolder() : file.parent_path()).string());
    if (const QString chosen = askForFileToOpen(this, question, program_.memory); !chosen.isEmpty())
        askWhatToDoWith(fromQt(chosen));
}

/// The price file of one run: it may be read or be looked at, and the job stays as it is.
void PrisMain::askWhatToDoWith(const std::string& otherFile) {
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("AnnanFilVal"));
    const std::string name = std::filesystem::path(otherFile).filename().string();
    const auto add = [&](ModuleKey caption) {
        return menu.addAction(toQt(program_.texts.ModulTextMed(caption, replaceAll(name, "&", "&&"))));
    };
    const QAction* preview = add(text::mainmenu::kPreviewFile);
    const QAction* run = add(text::mainmenu::kReadFile);
    menu.addSeparator();
    menu.addAction(toQt(program_.texts.ModulText(text::boxes::kCancel)));
    const QRect row = lista_->visualRect(lista_->currentIndex());
    const QAction* chosen = menu.exec(lista_->viewport()->mapToGlobal(row.bottomLeft()));
    if (chosen == preview) förhandsgranska(false, otherFile);
    if (chosen == run && leavesCommandOut()) utför(otherFile);
}

/// Whether a run goes on though the job's preparation command makes another file than the one that is read.
bool PrisMain::leavesCommandOut() {
    if (jobs_.row(jobs_.selected()).job.command.empty()) return true;
    return program_.boxes.MeddelandeOKAvbryt(program_.texts.ModulText(text::mainmenu::kCommandLeftOut)) == Answer::OK;
}

void PrisMain::about() {
    program_.boxes.MeddelandeInfo(program_.texts.ModulTextMed(text::mainmenu::kAbout, KOLMERA_VERSION),
                                  program_.texts.ModulText(text::mainmenu::kAboutTitle));
}

void PrisMain::leaveFor(NextWindow next) {
    if (running_) return;
    next_ = std::move(next);
    close();
}

/// Whether the job's preparation command is carried out for a preview.
bool PrisMain::asksForCommand() {
    const std::string& command = jobs_.row(jobs_.selected()).job.command;
    return !command.empty() && program_.boxes.MeddelandeJaNejNej(program_.texts.ModulTextMed(
                                   text::prismain::kAskToRunCommand, command)) == Answer::Yes;
}

void PrisMain::förhandsgranska(bool emptyTables, const std::string& otherFile) {
    if (!jobs_.canRun() || running_ || !isAsShown()) return;
    const bool runsCommand = otherFile.empty() && asksForCommand();
    ImportContext context = this->context();
    context.otherFile = otherFile;
    Preview preview;
    whileRunning([&] {
        preview = previewRun(context, jobs_.jobName(), {.emptyTables = emptyTables, .runsCommand = runsCommand});
    });
    if (closeAfterRun_) {
        close();
        return;
    }
    // What stopped it has been told.
    if (!preview.summary.completed || preview.summary.cancelled) return;
    if (!preview.record) {
        for (const std::string& told : preview.told) program_.boxes.MeddelandeVarning(told);
        return;
    }
    if (!showRecord(program_, this, *preview.record, preview.told)) return;
    runPanel_->proposeEmptyTables(emptyTables);
    utför(otherFile);
}

void PrisMain::tidigareKörningar() {
    RunsWindow form(program_, this);
    VisaFormulär(program_, form, true);
    watch_.look();
}

void PrisMain::rabattbrev() { program_.showPrisRab(this, jobs_.JobbNr()); }

void PrisMain::closeEvent(QCloseEvent* event) {
    if (running_) {
        // The run is cancelled first; what it has read is closed properly.
        runPanel_->cancel();
        closeAfterRun_ = true;
        event->ignore();
        return;
    }
    if (const std::string name = jobs_.jobName(); !name.empty()) {
        PassedOverSilently passedOver;
        attempt(passedOver, "Kolmera", [&] { program_.state.settings.set("Start", "Kolmera", name); });
    }
    program_.texts.StängSpråk();
    QWidget::closeEvent(event);
}

void PrisMain::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange) drawIcons();
    // Folders on a network do not tell of what others change there.
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) watch_.look();
    QWidget::changeEvent(event);
}

}  // namespace kolmera
