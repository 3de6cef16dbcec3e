#include "import/window/prismain.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QTreeView>
#include <QVBoxLayout>
#include <array>
#include <string>
#include <utility>

#include "history/runlist.h"
#include "import/window/firststepspanel.h"
#include "import/window/jobicons.h"
#include "import/window/joblistmodel.h"
#include "import/window/mainmenu.h"
#include "import/window/pricefiledrop.h"
#include "import/window/resultpanel.h"
#include "import/window/runpanel.h"
#include "lang/keys/mainmenu.h"
#include "lang/keys/prismain.h"
#include "platform/attempt.h"
#include "platform/lettercase.h"
#include "products/window/productwindow.h"
#include "registers/window/registerswindow.h"
#include "ui/controls.h"
#include "ui/copyrows.h"
#include "ui/forms.h"
#include "ui/guidewindow.h"
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
            .accessFile = [this] { program_.importAccess(this); },
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

void PrisMain::about() {
    program_.boxes.MeddelandeInfo(program_.texts.ModulTextMed(text::mainmenu::kAbout, KOLMERA_VERSION),
                                  program_.texts.ModulText(text::mainmenu::kAboutTitle));
}

void PrisMain::leaveFor(NextWindow next) {
    if (running_) return;
    next_ = std::move(next);
    close();
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
