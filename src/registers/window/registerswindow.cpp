#include "registers/window/registerswindow.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScreen>
#include <QTreeWidget>
#include <algorithm>
#include <utility>

#include "lang/errortext.h"
#include "lang/keys/registers.h"
#include "lang/keys/registerswindow.h"
#include "platform/searchwords.h"
#include "registers/registertexts.h"
#include "registers/window/importwindow.h"
#include "registers/window/rowwindow.h"
#include "ui/columnfit.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr std::chrono::milliseconds kTyping{250};

}  // namespace

RegistersWindow::RegistersWindow(Program& program, QWidget* parent, std::string_view name)
    : QDialog(parent), program_(program) {
    const Hourglass loading(program.boxes.port());
    setObjectName(QStringLiteral("RegistersWindow"));
    setWindowTitle(QStringLiteral("Företagets register"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    fileToRead = [this](const FileQuestion& question) { return askForFileToOpen(this, question, program_.memory); };
    fileToWrite = [this](const FileQuestion& question) {
        return askForFileToSave(
            this, question, [](const QString& /*file*/) { return false; }, program_.memory);
    };
    buildControls();
    layOut();
    loadForm(program_, *this);
    for (const RegisterDefinition& each : registerDefinitions())
        registers_->addItem(toQt(program_.texts.FormulärSträng(each.title)));
    registers_->addItem(toQt(program_.texts.FormulärSträng(text::registerswindow::kCouplings)));
    setSizes();
    companies_ = companyList(program.companies, program.state.dataFolder());
    for (const Company& company : companies_) companyBox_->addItem(toQt(company.name));
    companyBox_->setCurrentIndex(std::max(placeOfDatabase(companies_, program.state.StandardFöretag), 0));
    companyLabel_->setVisible(companies_.size() > 1);
    companyBox_->setVisible(companies_.size() > 1);
    const RegisterDefinition* named = registerNamed(name);
    registers_->setCurrentRow(name == kCouplings ? registers_->count() - 1
                              : named == nullptr ? 0
                                                 : static_cast<int>(named - registerDefinitions().data()));
    connect(companyBox_, &QComboBox::activated, this, [this] { openCompany(); });
    connect(registers_, &QListWidget::currentRowChanged, this, [this] {
        search_->clear();
        openRegister();
    });
    openCompany();
    registers_->setFocus();
}

RegistersWindow::~RegistersWindow() {
    const QSignalBlocker quiet(registers_);
    editor_.reset();
    program_.state.sql.FtgDB.reset();
}

void RegistersWindow::buildControls() {
    companyLabel_ = label(*this, "Lbl_Företag", "&Företag");
    companyBox_ = named(new QComboBox(this), "Företag");
    companyLabel_->setBuddy(companyBox_);
    registers_ = named(new QListWidget(this), "Register");
    search_ = named(new QLineEdit(this), "Sök");
    search_->setClearButtonEnabled(true);
    list_ = named(new QTreeWidget(this), "Rader");
    fit_ = new ColumnFit(*list_);
    list_->setToolTip(QStringLiteral("Rader"));
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->setAllColumnsShowFocus(true);
    list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    remark_ = named(new QLabel(this), "Anmärkning");
    remark_->setWordWrap(true);
    new_ = button(*this, "Ny", "&Ny rad...");
    edit_ = button(*this, "Ändra", "Än&dra...");
    remove_ = button(*this, "TaBort", "&Ta bort");
    import_ = button(*this, "Importera", "&Importera fil...");
    export_ = button(*this, "Exportera", "&Exportera...");
    close_ = button(*this, "Stäng", "&Stäng");
    for (QPushButton* each : {new_, edit_, remove_, import_, export_, close_}) each->setAutoDefault(false);
    searches_.setSingleShot(true);
    connect(search_, &QLineEdit::textEdited, this, [this] { searches_.start(kTyping); });
    connect(&searches_, &QTimer::timeout, this, [this] { readRows(); });
    connect(list_, &QTreeWidget::currentItemChanged, this, [this] { present(); });
    connect(list_, &QTreeWidget::itemDoubleClicked, this, [this] { edit(false); });
    connect(new_, &QPushButton::clicked, this, [this] { edit(true); });
    connect(edit_, &QPushButton::clicked, this, [this] { edit(false); });
    connect(remove_, &QPushButton::clicked, this, [this] { remove(); });
    connect(import_, &QPushButton::clicked, this, [this] { importFile(); });
    connect(export_, &QPushButton::clicked, this, [this] { exportFile(); });
    connect(close_, &QPushButton::clicked, this, [this] { reject(); });
    pressOnKey(*this, QKeySequence::New, *new_);
    pressOnKey(*this, QKeySequence(Qt::Key_F9), *remove_);
    for (const Qt::Key enter : {Qt::Key_Return, Qt::Key_Enter}) {
        onKey(
            *list_, enter, [this] { edit(false); }, Qt::WidgetShortcut);
    }
    onKey(
        *list_, Qt::Key_Delete, [this] { remove_->click(); }, Qt::WidgetShortcut);
    onKey(*this, QKeySequence::Find, [this] { search_->setFocus(Qt::ShortcutFocusReason); });
}

void RegistersWindow::layOut() {
    QLabel* registersLabel = label(*this, "Lbl_Register", "&Register");
    registersLabel->setBuddy(registers_);
    QLabel* searchLabel = label(*this, "Lbl_Sök", "S&ök");
    searchLabel->setBuddy(search_);
    auto* left = new QVBoxLayout;
    left->addWidget(companyLabel_);
    left->addWidget(companyBox_);
    left->addWidget(registersLabel);
    left->addWidget(registers_, 1);
    auto* search = new QHBoxLayout;
    search->addWidget(searchLabel);
    search->addWidget(search_, 1);
    auto* right = new QVBoxLayout;
    right->addLayout(search);
    right->addWidget(list_, 1);
    right->addWidget(remark_);
    auto* halves = new QHBoxLayout;
    halves->addLayout(left);
    halves->addLayout(right, 1);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* each : {new_, edit_, remove_, import_, export_}) buttons->addWidget(each);
    buttons->addStretch(1);
    buttons->addWidget(close_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(halves, 1);
    layout->addLayout(buttons);
    QWidget* before = companyBox_;
    for (QWidget* next :
         std::initializer_list<QWidget*>{registers_, search_, list_, new_, edit_, remove_, import_, export_, close_}) {
        setTabOrder(before, next);
        before = next;
    }
}

void RegistersWindow::setSizes() {
    constexpr int kWindowLetters = 150, kWindowLines = 28;
    const QFontMetrics metrics = fontMetrics();
    registers_->setFixedWidth(registers_->sizeHintForColumn(0) + 5 * metrics.averageCharWidth());
    const QSize size(kWindowLetters * metrics.averageCharWidth(), kWindowLines * metrics.lineSpacing());
    resize(size.boundedTo(screen()->availableSize() - QSize(2, 4) * metrics.averageCharWidth()));
}

bool RegistersWindow::attemptTo(const std::function<void()>& work) {
    try {
        const Hourglass working(program_.boxes.port());
        work();
        return true;
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(errorText(program_.texts, error));
        return false;
    }
}

void RegistersWindow::openCompany() {
    editor_.reset();
    const auto place = static_cast<std::size_t>(companyBox_->currentIndex());
    if (place < companies_.size() && program_.companies.ÖppnaDatabas(companies_[place].database)) {
        editor_ = std::make_unique<RegisterEditor>(program_.state.sql, program_.texts, program_.state.dataFolder(),
                                                   companies_[place].database);
    }
    openRegister();
}

void RegistersWindow::openRegister() {
    const int row = registers_->currentRow();
    {
        const QSignalBlocker quiet(list_);
        list_->clear();
        list_->setColumnCount(0);
    }
    fit_->forget();
    if (editor_ && row >= 0 && !ofCouplings())
        attemptTo([&] { editor_->open(registerDefinitions()[static_cast<std::size_t>(row)]); });
    readRows();
}

bool RegistersWindow::ofCouplings() const { return registers_->currentRow() == registers_->count() - 1; }

void RegistersWindow::showCouplings() {
    list_->setColumnCount(4);
    QStringList headings;
    for (const FormKey key : {text::registerswindow::kJob, text::registers::kCode, text::registerswindow::kSupplier,
                              text::registerswindow::kMainSupplier})
        headings.push_back(toQt(program_.texts.FormulärSträng(key)));
    list_->setHeaderLabels(headings);
    const SearchWords wanted(fromQt(search_->text()));
    const auto place = static_cast<std::size_t>(companyBox_->currentIndex());
    coupled_.clear();
    attemptTo([&] {
        if (place < companies_.size()) coupled_ = coupledJobs(program_.state, companies_[place].database);
    });
    std::erase_if(coupled_, [&](const CoupledJob& one) {
        return !wanted.in(fmt::format("{} {} {}", one.name, one.coupling.code, one.coupling.supplier));
    });
    for (const CoupledJob& one : coupled_)
        new QTreeWidgetItem(list_, {toQt(one.name), toQt(one.coupling.code), toQt(one.coupling.supplier),
                                    one.coupling.mainSupplier ? QStringLiteral("H") : QString()});
    remark_->setText(toQt(program_.texts.FormulärSträng(text::registerswindow::kCouplingsAreChanged)));
}

/// Couplings are changed where their job is. The company is opened anew then, because the job window closes it.
void RegistersWindow::openJob() {
    const auto row = static_cast<std::size_t>(currentRow());
    if (currentRow() < 0 || row >= coupled_.size() || !program_.showPrisStyr) return;
    editor_.reset();
    program_.state.sql.FtgDB.reset();
    program_.showPrisStyr(this, coupled_[row].number, true);
    openCompany();
}

void RegistersWindow::showRows() {
    QStringList headings;
    for (const int column : editor_->shown()) headings.push_back(toQt(editor_->opened().column(column).caption));
    list_->setColumnCount(static_cast<int>(headings.size()));
    list_->setHeaderLabels(headings);
    QList<QTreeWidgetItem*> rows;
    for (std::size_t row = 0; row < editor_->count(); ++row) {
        QStringList cells;
        for (const int column : editor_->shown()) cells.push_back(toQt(editor_->cell(row, column)));
        rows.push_back(new QTreeWidgetItem(cells));
    }
    list_->addTopLevelItems(rows);
    if (editor_->more())
        remark_->setText(
            toQt(program_.texts.FormulärSträngMed1(text::registerswindow::kMore, fmt::format("{}", editor_->count()))));
}

void RegistersWindow::readRows() {
    constexpr int kLetters = 30;
    const int current = std::max(currentRow(), 0);
    {
        const QSignalBlocker quiet(list_);
        list_->clear();
        remark_->clear();
        if (ofCouplings()) {
            showCouplings();
        } else if (editor_ && editor_->isOpen() && attemptTo([&] { editor_->read(fromQt(search_->text())); })) {
            showRows();
        }
        fit_->fit(kLetters * fontMetrics().averageCharWidth());
        list_->setCurrentItem(list_->topLevelItem(std::min(current, list_->topLevelItemCount() - 1)));
    }
    remark_->setVisible(!remark_->text().isEmpty());
    present();
}

int RegistersWindow::currentRow() const {
    const QModelIndex current = list_->currentIndex();
    return current.isValid() ? current.row() : -1;
}

// The one place that enables.
void RegistersWindow::present() {
    const bool open = editor_ && editor_->isOpen() && !ofCouplings();
    const bool takesRows = open && editor_->opened().takesRows();
    const bool onRow = open && currentRow() >= 0;
    new_->setEnabled(takesRows);
    edit_->setEnabled(onRow || (ofCouplings() && currentRow() >= 0 && program_.showPrisStyr));
    remove_->setEnabled(takesRows && onRow);
    import_->setEnabled(open);
    export_->setEnabled(open);
}

void RegistersWindow::edit(bool isNew) {
    if (ofCouplings()) {
        if (!isNew) openJob();
        return;
    }
    if (!editor_ || !editor_->isOpen() || (!isNew && currentRow() < 0)) return;
    RegisterRow row = isNew ? editor_->opened().newRow() : editor_->row(static_cast<std::size_t>(currentRow()));
    RowWindow form(program_, *editor_, std::move(row), isNew, this);
    VisaFormulär(program_, form, true);
    if (form.result() == QDialog::Accepted) readRows();
}

void RegistersWindow::remove() {
    if (currentRow() < 0) return;
    const RegisterRow row = editor_->row(static_cast<std::size_t>(currentRow()));
    const std::string question =
        program_.texts.FormulärSträngMed1(text::registerswindow::kAskToRemove, rowName(editor_->opened().keyOf(row)));
    if (program_.boxes.MeddelandeJaNejNej(question) != Answer::Yes) return;
    std::vector<std::string> wrong;
    attemptTo([&] { wrong = editor_->remove(row); });
    if (!wrong.empty()) program_.boxes.MeddelandeVarning(fmt::format("{}", fmt::join(wrong, "\r\n")));
    readRows();
}

void RegistersWindow::importFile() {
    FileQuestion question;
    question.title = toQt(program_.texts.FormulärSträng(text::registerswindow::kImportTitle));
    question.filters = toQt(program_.texts.FormulärSträng(text::registerswindow::kReadFilters));
    const std::filesystem::path file = fromQt(fileToRead(question));
    if (file.empty()) return;
    FileColumns columns;
    if (!attemptTo([&] { columns = editor_->columnsOf(file); })) return;
    ImportWindow form(program_, *editor_, file, std::move(columns), this);
    VisaFormulär(program_, form, true);
    readRows();
}

void RegistersWindow::exportFile() {
    FileQuestion question;
    question.title = toQt(program_.texts.FormulärSträng(text::registerswindow::kExportTitle));
    question.filters = toQt(program_.texts.FormulärSträng(text::registerswindow::kWriteFilters));
    question.path = toQt(editor_->opened().shortName() + ".xlsx");
    const std::filesystem::path file = fromQt(fileToWrite(question));
    if (file.empty()) return;
    std::string told;
    if (attemptTo([&] { told = editor_->exportTo(file); })) program_.boxes.MeddelandeInfo(told);
}

void showRegisters(Program& program, QWidget* parent, std::string_view name) {
    RegistersWindow form(program, parent, name);
    VisaFormulär(program, form, true);
}

}  // namespace kolmera
