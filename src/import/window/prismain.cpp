#include "import/window/prismain.h"

#include <QCloseEvent>
#include <QEvent>
#include <QHeaderView>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QTreeView>
#include <QVBoxLayout>
#include <array>
#include <string>

#include "definitions/savemessages.h"
#include "history/window/openrecord.h"
#include "history/window/runswindow.h"
#include "import/preview/limitedrun.h"
#include "import/preview/preview.h"
#include "import/window/jobicons.h"
#include "import/window/joblistmodel.h"
#include "import/window/runpanel.h"
#include "lang/errortext.h"
#include "lang/keys/definitions.h"
#include "lang/keys/prismain.h"
#include "platform/attempt.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/lists.h"
#include "ui/qttext.h"
#include "ui/ucfadeline.h"

namespace kolmera {
namespace {

constexpr std::string_view kForm = "PrisMain";
constexpr std::array<const char*, JobTable::kColumns> kDesignedHeaders{"Inläsning", "Typ", "Prisfil", "Fildatum"};
constexpr std::array<FormKey, JobTable::kColumns> kHeaders{text::prismain::kImportHeading, text::prismain::kKindHeading,
                                                           text::prismain::kPriceFileHeading,
                                                           text::prismain::kFileDateHeading};

}  // namespace

PrisMain::PrisMain(Program& program)
    : program_(program),
      Idag_(Date::today()),
      jobs_(program.state.locale),
      model_(new JobListModel(jobs_, this)),
      lista_(new QTreeView(this)),
      runPanel_(new RunPanel(program, this)) {
    setObjectName(toQt(kForm));
    setWindowTitle(QStringLiteral("Kolmera - Inläsning av prisfiler"));
    buildControls();
    buildList();
    layOut();
    loadForm(program_, *this);
    nameColumns();
    drawIcons();
    FyllJobbLista(0);
    setSizes();
    centreOnScreen(*this);
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
    pressOnKey(*this, QKeySequence(Qt::Key_F5), *förhandsgranska_);
    pressOnKey(*this, QKeySequence(Qt::Key_F9), *taBort_);
    pressOnKey(*this, QKeySequence(Qt::Key_F12), *avsluta_);
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, this, [this] {
        if (running_) runPanel_->cancel();
    });
    runPanel_->onRunMode = [this] { centreOnScreen(*this); };
    runPanel_->onOpenJobSettings = [this] { öppna(); };
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
    constexpr int kNameLetters = 32, kWindowLetters = 120, kWindowLines = 28;
    const QFontMetrics metrics = fontMetrics();
    lista_->setColumnWidth(JobTable::kName, kNameLetters * metrics.averageCharWidth());
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
    auto* upper = new QHBoxLayout;
    upper->addWidget(lista_, 1);
    upper->addLayout(buttons);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(upper, 1);
    layout->addWidget(new UCFadeLine(this));
    layout->addWidget(runPanel_);
}

void PrisMain::drawIcons() {
    model_->setIcons(maskJobIcon(palette()), tradeFormatJobIcon(palette()));
    setWindowIcon(maskJobIcon(palette()));
}

void PrisMain::FyllJobbLista(int JobbNr) { fill(JobbNr, program_.state.settings.get("Start", "Kolmera")); }

/// Below 1 the job of that name is selected.
void PrisMain::fill(int JobbNr, const std::string& otherwise) {
    const StartState& state = program_.state;
    const std::filesystem::path programFolder = state.programFolder();
    std::vector<JobRow> rows;
    try {
        rows = jobRows(program_.texts, {.drives = state.drives,
                                        .dataFolder = state.dataFolder(),
                                        .programFolder = programFolder,
                                        .locale = state.locale});
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(
            program_.texts.ModulTextMed(text::prismain::kCannotShowImports, errorText(program_.texts, error)));
    }
    model_->fill(std::move(rows), JobbNr, otherwise);
    showSelection();
    present();
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
    present();
    runPanel_->clearCancel();
    work();
    running_ = false;
    if (runPanel_->isVisible()) runPanel_->runMode(false);
    present();
    lista_->setFocus();
}

void PrisMain::utför() {
    if (!jobs_.canRun() || running_ || !isAsShown()) return;
    ImportContext context = this->context();
    RecordKeeping record = keptInDataFolder(program_.state);
    context.record = &record;
    whileRunning([&] { runWithinLimits(context, jobs_.jobName()); });
    if (closeAfterRun_) {
        close();
    } else if (const auto emptyTables = runPanel_->takePreviewWish()) {
        förhandsgranska(*emptyTables);
    }
}

/// Whether the job's preparation command is carried out for a preview.
bool PrisMain::asksForCommand() {
    const std::string& command = jobs_.row(jobs_.selected()).job.command;
    return !command.empty() && program_.boxes.MeddelandeJaNejNej(program_.texts.ModulTextMed(
                                   text::prismain::kAskToRunCommand, command)) == Answer::Yes;
}

void PrisMain::förhandsgranska(bool emptyTables) {
    if (!jobs_.canRun() || running_ || !isAsShown()) return;
    const bool runsCommand = asksForCommand();
    ImportContext context = this->context();
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
    utför();
}

void PrisMain::tidigareKörningar() {
    RunsWindow form(program_, this);
    VisaFormulär(program_, form, true);
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
    QWidget::changeEvent(event);
}

}  // namespace kolmera
