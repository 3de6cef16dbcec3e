#include "history/window/changewindow.h"

#include <fmt/format.h>

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPushButton>
#include <QScreen>
#include <QTableView>
#include <QTimer>
#include <algorithm>
#include <array>
#include <exception>

#include "history/window/changelistmodel.h"
#include "history/window/changeprint.h"
#include "history/window/histogram.h"
#include "lang/errortext.h"
#include "lang/keys/boxes.h"
#include "lang/keys/changes.h"
#include "platform/error.h"
#include "platform/outputfile.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/lockwait.h"
#include "ui/plaintooltip.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kTypingPause = 250;  ///< milliseconds behind the last letter before the list is filtered

QCheckBox* checkBox(QWidget& parent, const char* name, const char* caption) {
    return named(new QCheckBox(QString::fromUtf8(caption), &parent), name);
}

/// What is written to it goes to an output file; the first error is kept, for `check` to throw.
class OutputDevice final : public QIODevice {
  public:
    explicit OutputDevice(OutputFile& output) : output_(output) { open(QIODevice::WriteOnly); }
    [[nodiscard]] bool isSequential() const override { return true; }
    void check() const {
        if (error_) std::rethrow_exception(error_);
    }

  protected:
    qint64 readData(char* /*data*/, qint64 /*most*/) override { return -1; }
    qint64 writeData(const char* data, qint64 size) override {
        if (error_) return -1;
        try {
            output_.write({data, static_cast<std::size_t>(size)});
        } catch (const PlatformError&) {
            error_ = std::current_exception();
            return -1;
        }
        return size;
    }

  private:
    OutputFile& output_;
    std::exception_ptr error_;
};

}  // namespace

ChangeWindow::ChangeWindow(Program& program, ChangeReport& report, QWidget* parent)
    : QDialog(parent),
      program_(program),
      report_(report),
      table_(report.list(), program.texts, program.state.locale),
      model_(new ChangeListModel(report.list(), table_, this)),
      typing_(new QTimer(this)) {
    setObjectName(QStringLiteral("ChangeWindow"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    fileToWrite = [this](const FileQuestion& question) {
        return askForFileToSave(
            this, question, [](const QString& file) { return file.endsWith(".xlsx", Qt::CaseInsensitive); },
            program_.memory);
    };
    buildFigures();
    buildNotices();
    buildFilter();
    buildList();
    buildButtons();
    layOut();
    connectKeys();
}

// The list must not report its going to a form that is gone.
ChangeWindow::~ChangeWindow() { delete list_; }

void ChangeWindow::load() {
    loadForm(program_, *this);
    setWindowTitle(toQt(report_.title()));
    setSizes();
    filter();
    filter_->setFocus();
}

void ChangeWindow::buildFigures() {
    origin_ = new QLabel(toQt(report_.origin()), this);
    origin_->setTextFormat(Qt::PlainText);
    origin_->setWordWrap(true);
    figures_ = new QGridLayout;
    int row = 0;
    for (const ChangeReport::Figure& figure : report_.figures()) {
        auto* caption = new QLabel(toQt(figure.caption), this);
        auto* value = new QLabel(toQt(figure.value), this);
        value->setTextFormat(Qt::PlainText);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        value->setAccessibleName(caption->text() + ": " + value->text());
        QFont bold = value->font();
        bold.setBold(true);
        value->setFont(bold);
        figures_->addWidget(caption, row, 0);
        figures_->addWidget(value, row++, 1);
    }
    figures_->setColumnStretch(1, 1);
    figures_->setRowStretch(row, 1);

    lblHistogram_ = new QLabel(toQt(report_.histogramCaption()), this);
    histogram_ = named(new Histogram(this), "Histogram");
    lblHistogram_->setBuddy(histogram_);
    histogram_->setAccessibleName(toQt(report_.histogramText()));
    const PriceFigures* price = report_.changes().headline();
    lblHistogram_->setVisible(price != nullptr);
    histogram_->setVisible(price != nullptr);
    if (price == nullptr) return;
    QStringList edges;
    for (const int edge : kHistogramEdges) edges << QString::number(edge);
    QStringList names;
    for (std::size_t bar = 0; bar < kHistogramBars; ++bar) {
        names << toQt(report_.barCaption(bar)) + " %: " + QString::number(price->histogram.at(bar));
    }
    histogram_->show({price->histogram.begin(), price->histogram.end()}, edges, names);
}

void ChangeWindow::buildNotices() {
    lblNotices_ = label(*this, "Lbl_Notiser", "Att t&itta på först");
    notices_ = named(new QListWidget(this), "Notiser");
    lblNotices_->setBuddy(notices_);
    notices_->setSelectionMode(QAbstractItemView::SingleSelection);
    notices_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);  // long ones end in dots; their tool tip is whole
    for (const Notice& notice : report_.notices()) {
        auto* item = new QListWidgetItem(toQt(report_.lineOf(notice)), notices_);
        item->setToolTip(plainToolTip(item->text()));
        if (notice.warning) item->setIcon(style()->standardIcon(QStyle::SP_MessageBoxWarning));
    }
    const bool any = notices_->count() > 0;
    lblNotices_->setVisible(any);
    notices_->setVisible(any);
    // Not by the current row: the Tab key, going through, makes the first one that.
    connect(notices_, &QListWidget::itemSelectionChanged, this, [this] { filter(); });
}

void ChangeWindow::buildFilter() {
    filter_ = named(new QLineEdit(this), "Filter");
    filter_->setClearButtonEnabled(true);
    over_ = named(new QLineEdit(this), "Över");
    allowNumbersOnly(*over_, program_.state.locale.decimalSign(), true, false);
    column_ = named(new QComboBox(this), "Kolumn");
    column_->addItem(toQt(program_.texts.ModulText(text::changes::kAllColumns)));
    for (const ChangedColumn& each : report_.list().columns()) column_->addItem(toQt(each.caption));
    column_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    group_ = named(new QComboBox(this), "Grupp");
    for (const ModuleKey key : {text::changes::kNoGroups, text::changes::kByProduct, text::changes::kByColumn}) {
        group_->addItem(toQt(program_.texts.ModulText(key)));
    }
    onlyNew_ = checkBox(*this, "BaraNya", "Bara &nya rader");
    onlyMarked_ = checkBox(*this, "BaraMärkta", "Bara poster att titta &på");
    onlyMarked_->setVisible(notices_->count() > 0);
    count_ = named(new QLabel(this), "Antal");
    typing_->setSingleShot(true);
    typing_->setInterval(kTypingPause);
    connect(typing_, &QTimer::timeout, this, [this] { filter(); });
    for (QLineEdit* box : {filter_, over_}) {
        connect(box, &QLineEdit::textChanged, this, [this] { typing_->start(); });
        connect(box, &QLineEdit::returnPressed, this, [this] { filter(); });
    }
    for (QComboBox* box : {column_, group_}) {
        connect(box, &QComboBox::currentIndexChanged, this, [this] { filter(); });
    }
    for (QCheckBox* box : {onlyNew_, onlyMarked_}) {
        connect(box, &QCheckBox::toggled, this, [this] { filter(); });
    }
}

void ChangeWindow::buildList() {
    list_ = named(new QTableView(this), "Lista");
    list_->setToolTip(QStringLiteral("Ändringar (F7 sorterar efter kolumnen)"));
    list_->setModel(model_);
    list_->setSelectionBehavior(QAbstractItemView::SelectRows);
    list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list_->setWordWrap(false);
    list_->setTabKeyNavigation(false);
    list_->setAlternatingRowColors(false);
    list_->verticalHeader()->hide();
    list_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    list_->verticalHeader()->setDefaultSectionSize(fontMetrics().lineSpacing() * 5 / 4);
    QHeaderView& header = *list_->horizontalHeader();
    header.setHighlightSections(false);
    header.setSortIndicator(-1, Qt::AscendingOrder);
    header.setSectionResizeMode(ChangeTable::kName, QHeaderView::Stretch);
    list_->setSortingEnabled(true);
    model_->onSorted = [this] {
        if (!list_->currentIndex().isValid() && model_->rowCount() > 0) list_->setCurrentIndex(model_->index(0, 0));
        present();
    };
    connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] { present(); });
    connect(list_, &QTableView::doubleClicked, this, [this] { showInFile(); });
    list_->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(list_, &QTableView::customContextMenuRequested, this, [this](const QPoint& place) { showMenu(place); });
}

void ChangeWindow::buildButtons() {
    show_ = button(*this, "Visa", "Visa i pris&filen...");
    explain_ = button(*this, "Förklara", "Varför &detta pris?");
    copy_ = button(*this, "Kopiera", "&Kopiera");
    save_ = button(*this, "Spara", "&Spara...");
    rejects_ = button(*this, "PosterAttRätta", "Poster &att rätta...");
    print_ = button(*this, "SkrivUt", "Skriv &ut...");
    run_ = button(*this, "Utför", "Utfö&r...");
    close_ = button(*this, "Stäng", "S&täng");
    for (QPushButton* each : {show_, explain_, copy_, save_, rejects_, print_, run_, close_})
        each->setAutoDefault(false);
    run_->setVisible(report_.header().kind == RunKind::Preview);
    connect(show_, &QPushButton::clicked, this, [this] { showInFile(); });
    connect(explain_, &QPushButton::clicked, this, [this] { explain(); });
    connect(copy_, &QPushButton::clicked, this, [this] { copy(); });
    connect(save_, &QPushButton::clicked, this, [this] { save(); });
    connect(rejects_, &QPushButton::clicked, this, [this] { saveRejects(this); });
    connect(print_, &QPushButton::clicked, this, [this] { print(); });
    connect(run_, &QPushButton::clicked, this, [this] {
        runs_ = true;
        accept();
    });
    connect(close_, &QPushButton::clicked, this, [this] { reject(); });
}

void ChangeWindow::layOut() {
    auto* bars = new QVBoxLayout;
    bars->addWidget(lblHistogram_);
    bars->addWidget(histogram_, 1);
    auto* top = new QHBoxLayout;
    top->addLayout(figures_, 1);
    top->addLayout(bars, 2);

    auto* filters = new QHBoxLayout;
    const auto add = [&](const char* name, const char* caption, QWidget* box, int stretch) {
        QLabel* text = label(*this, name, caption);
        text->setBuddy(box);
        filters->addWidget(text);
        filters->addWidget(box, stretch);
    };
    add("Lbl_Filter", "Fi&lter", filter_, 1);
    add("Lbl_Över", "Ändring ö&ver", over_, 0);
    filters->addWidget(new QLabel(QStringLiteral("%"), this));
    add("Lbl_Kolumn", "K&olumn", column_, 0);
    add("Lbl_Grupp", "&Gruppera", group_, 0);
    auto* choices = new QHBoxLayout;
    choices->addWidget(onlyNew_);
    choices->addWidget(onlyMarked_);
    choices->addStretch(1);
    choices->addWidget(count_);

    auto* buttons = new QHBoxLayout;
    for (QPushButton* each : {show_, explain_, copy_, save_, rejects_, print_}) buttons->addWidget(each);
    buttons->addStretch(1);
    buttons->addWidget(run_);
    buttons->addWidget(close_);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(origin_);
    layout->addLayout(top);
    layout->addWidget(lblNotices_);
    layout->addWidget(notices_);
    layout->addLayout(filters);
    layout->addLayout(choices);
    layout->addWidget(list_, 1);
    layout->addLayout(buttons);
}

void ChangeWindow::connectKeys() {
    onKey(*this, QKeySequence::Find, [this] {
        filter_->setFocus();
        filter_->selectAll();
    });
    onKey(*this, QKeySequence::Save, [this] { save(); });
    onKey(*this, QKeySequence::Print, [this] { print(); });
    onKey(*this, Qt::Key_F7, [this] { sortByCurrentColumn(); });
    onKey(
        *list_, QKeySequence::Copy, [this] { copy(); }, Qt::WidgetShortcut);
    onKey(*this, Qt::Key_F8, [this] { explain(); });
    for (QWidget* list : std::initializer_list<QWidget*>{list_, notices_}) {
        for (const Qt::Key enter : {Qt::Key_Return, Qt::Key_Enter}) {
            onKey(
                *list, enter, [this] { showInFile(); }, Qt::WidgetShortcut);
        }
    }
}

void ChangeWindow::setSizes() {
    constexpr int kWindowLetters = 165, kWindowLines = 44, kNoticeLines = 4, kOverLetters = 6, kColumnLetters = 24;
    constexpr std::array<int, ChangeTable::kColumns> kLetters{20, 0, 34, 15, 15, 13, 11, 9};
    const QFontMetrics metrics = fontMetrics();
    const int letter = metrics.averageCharWidth();
    for (std::size_t column = 0; column < kLetters.size(); ++column) {
        if (kLetters.at(column) > 0) list_->setColumnWidth(static_cast<int>(column), kLetters.at(column) * letter);
    }
    over_->setFixedWidth(kOverLetters * metrics.horizontalAdvance('0'));
    column_->setMaximumWidth(kColumnLetters * letter);
    const int lines = std::clamp(notices_->count(), 2, kNoticeLines);
    notices_->setMaximumHeight(lines * notices_->sizeHintForRow(0) + 2 * notices_->frameWidth() + letter / 2);
    const QSize size(kWindowLetters * letter, kWindowLines * metrics.lineSpacing());
    resize(size.boundedTo(screen()->availableSize() - QSize(2, 4) * letter));
}

ChangeQuery ChangeWindow::wanted() const {
    ChangeQuery query;
    query.text = fromQt(filter_->text());
    query.over = program_.state.locale.parseNumber(fromQt(over_->text()));
    query.onlyNew = onlyNew_->isChecked();
    query.onlyMarked = onlyMarked_->isChecked();
    if (const int notice = chosenNotice(); notice >= 0) query.mark = notice;
    if (const int row = column_->currentIndex(); row > 0) {
        const ChangedColumn& column = report_.list().columns()[static_cast<std::size_t>(row) - 1];
        query.column = {column.table, column.column};
    }
    query.group = static_cast<ChangeQuery::Group>(group_->currentIndex());
    return query;
}

void ChangeWindow::filter() {
    typing_->stop();
    const Hourglass working(program_.boxes.port());
    model_->show(wanted());
    if (model_->rowCount() > 0) list_->setCurrentIndex(model_->index(0, 0));
    present();
}

// The one place that enables, and counts.
void ChangeWindow::present() {
    const Locale& locale = program_.state.locale;
    count_->setText(toQt(program_.texts.ModulTextMed(text::changes::kShown, grouped(report_.list().cells(), locale))));
    const bool any = model_->rowCount() > 0;
    show_->setVisible(showRecords != nullptr);
    show_->setEnabled(currentRecord() > 0);
    rejects_->setVisible(saveRejects != nullptr);
    explain_->setVisible(explainPrice != nullptr);
    explain_->setEnabled(currentPrice() != nullptr);
    for (QPushButton* each : {copy_, save_, print_}) each->setEnabled(any);
}

int ChangeWindow::currentRow() const {
    const QModelIndex current = list_->currentIndex();
    return current.isValid() ? current.row() : -1;
}

int ChangeWindow::chosenNotice() const {
    const QModelIndexList chosen = notices_->selectionModel()->selectedIndexes();
    return chosen.empty() ? -1 : chosen.front().row();
}

/// Of the notice that is chosen.
std::span<const std::int64_t> ChangeWindow::noticeRecords() const {
    const int notice = chosenNotice();
    if (notice < 0) return {};
    return report_.notices()[static_cast<std::size_t>(notice)].records;
}

/// Of the list, or, where it shows nothing of a notice, of the notice.
std::int64_t ChangeWindow::currentRecord() const {
    if (const int row = currentRow(); row >= 0) return model_->row(row).record;
    const std::span<const std::int64_t> records = noticeRecords();
    return records.empty() ? 0 : records.front();
}

/// The row, where it is a price that came from the file.
const ChangeRow* ChangeWindow::currentPrice() const {
    const int place = currentRow();
    if (place < 0) return nullptr;
    const ChangeRow& row = model_->row(place);
    const bool fromFile = row.members == 0 && row.kind != ChangeKind::Removed && row.record > 0 && !row.product.empty();
    return fromFile && isPrice(report_.net().tables()[static_cast<std::size_t>(row.table)].name, row.column) ? &row
                                                                                                             : nullptr;
}

void ChangeWindow::sortByCurrentColumn() {
    QHeaderView& header = *list_->horizontalHeader();
    const int column = std::max(list_->currentIndex().column(), 0);
    const bool again = header.sortIndicatorSection() == column && header.sortIndicatorOrder() == Qt::AscendingOrder;
    list_->sortByColumn(column, again ? Qt::DescendingOrder : Qt::AscendingOrder);
    if (model_->rowCount() > 0) list_->setCurrentIndex(model_->index(0, column));
}

/// Of a notice all its records can be gone through.
void ChangeWindow::showInFile() {
    const std::int64_t record = currentRecord();
    if (!showRecords || record <= 0) return;
    const std::span<const std::int64_t> ofNotice = noticeRecords();
    std::vector<std::int64_t> records(ofNotice.begin(), ofNotice.end());
    const auto found = std::ranges::find(records, record);
    if (found == records.end()) return showRecords(this, {record}, 0);
    showRecords(this, records, static_cast<std::size_t>(found - records.begin()));
}

void ChangeWindow::explain() {
    const ChangeRow* row = currentPrice();
    if (row == nullptr || !explainPrice) return;
    const TableDef& table = report_.net().tables()[static_cast<std::size_t>(row->table)].definition;
    const std::string& column = table.fields.at(static_cast<std::size_t>(row->column)).name;
    explainPrice(this, std::string(row->product), fmt::format("{}.{}", table.name, column));
}

/// What the buttons do with a row.
void ChangeWindow::showMenu(const QPoint& place) {
    QMenu menu(this);
    for (QPushButton* each : {show_, explain_, copy_}) {
        if (!each->isVisibleTo(this)) continue;
        QAction* action = menu.addAction(each->text());
        action->setEnabled(each->isEnabled());
        connect(action, &QAction::triggered, each, [each] { each->click(); });
    }
    menu.exec(list_->viewport()->mapToGlobal(place));
}

void ChangeWindow::copy() {
    QString text;
    const Hourglass working(program_.boxes.port());
    QModelIndexList rows = list_->selectionModel()->selectedRows();
    std::ranges::sort(rows, {}, [](const QModelIndex& index) { return index.row(); });
    for (const QModelIndex& index : rows) {
        text += toQt(table_.line(table_.cells(model_->row(index.row())))) + '\n';
    }
    QApplication::clipboard()->setText(text);
}

void ChangeWindow::save() {
    if (!save_->isEnabled()) return;
    FileQuestion question;
    question.title = save_->text().remove('&').remove(QStringLiteral("..."));
    question.filters = toQt(program_.texts.ModulText(text::changes::kSaveFilters));
    question.path = toQt(program_.state.dataFolder().string());
    if (const QString file = fileToWrite(question); !file.isEmpty()) write(file);
}

void ChangeWindow::write(const QString& file) {
    try {
        if (file.endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive)) {
            writePdf(file);
        } else {
            LockWait wait(*this);
            (void)table_.save(fromQt(file), [&](std::int64_t rows) { return keepOn(wait, rows); });
        }
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(
            program_.texts.ModulTextMed(text::changes::kCannotWrite, errorText(program_.texts, error)));
    }
}

/// Small ones are written at once.
bool ChangeWindow::keepOn(LockWait& wait, std::int64_t rows) {
    constexpr std::int64_t kAtOnce = 5000;
    if (rows < kAtOnce) return true;
    return wait.keepWaiting(
        toQt(program_.texts.ModulTextMed(text::changes::kRowsWritten, grouped(rows, program_.state.locale))),
        toQt(program_.texts.ModulText(text::boxes::kCancel)));
}

void ChangeWindow::writePdf(const QString& file) {
    OutputFile output(fromQt(file));
    OutputDevice device(output);
    bool whole = false;
    {
        QPdfWriter writer(&device);
        writer.setTitle(windowTitle());
        writer.setPageSize(QPageSize(QPageSize::A4));
        whole = printOn(writer);
    }
    device.check();
    if (whole) output.finish();
}

void ChangeWindow::print() {
    if (!print_->isEnabled()) return;
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(windowTitle());
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() == QDialog::Accepted) printOn(printer);
}

/// A list of many pages is asked about first.
bool ChangeWindow::printOn(QPagedPaintDevice& device) {
    constexpr int kManyPages = 100;
    const ChangePrint paper(report_, table_, program_.texts);
    const int pages = paper.pages(device);
    if (pages > kManyPages) {
        const std::string question =
            program_.texts.ModulTextMed(text::changes::kManyPages, grouped(pages, program_.state.locale));
        if (program_.boxes.MeddelandeJaNejNej(question) != Answer::Yes) return false;
    }
    LockWait wait(*this);
    return paper.print(device, [&](std::int64_t rows) { return keepOn(wait, rows); });
}

}  // namespace kolmera
