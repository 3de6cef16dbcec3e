#include "history/window/comparewindow.h"

#include <QAbstractTableModel>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTableView>
#include <QTimer>
#include <algorithm>

#include "history/changetable.h"
#include "history/warnings.h"
#include "history/window/companyproducts.h"
#include "lang/errortext.h"
#include "lang/keys/changes.h"
#include "lang/keys/comparison.h"
#include "platform/attempt.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/plaintooltip.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kTypingPause = 250;  ///< milliseconds behind the last letter before the list is filtered

}  // namespace

struct CompareWindow::Compared {
    Compared(const RecordReader& before, const RecordReader& now, Program& program)
        : files(before, now), list(files, program.texts, program.state.locale) {}
    FileComparison files;
    ComparisonList list;
};

class CompareWindow::Model final : public QAbstractTableModel {
  public:
    using QAbstractTableModel::QAbstractTableModel;

    ComparisonQuery query;

    /// Shows a list by the query, or nothing.
    void show(ComparisonList* list) {
        beginResetModel();
        list_ = list;
        if (list_ != nullptr) list_->show(query);
        endResetModel();
    }
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() || list_ == nullptr ? 0 : static_cast<int>(list_->count());
    }
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : ComparisonList::kColumns;
    }
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole)) return {};
        const QString text = toQt(list_->cells(index.row()).at(static_cast<std::size_t>(index.column())));
        return role == Qt::ToolTipRole ? plainToolTip(text) : text;
    }
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        if (orientation != Qt::Horizontal || role != Qt::DisplayRole || list_ == nullptr) return {};
        return toQt(list_->headings().at(static_cast<std::size_t>(section)));
    }
    void sort(int column, Qt::SortOrder order) override {
        if (column < 0) return;
        query.sort = column;
        query.descending = order == Qt::DescendingOrder;
        show(list_);
    }

  private:
    ComparisonList* list_ = nullptr;
};

CompareWindow::CompareWindow(Program& program, const RunFolder& folder, RunHeader run, std::vector<RunHeader> earlier,
                             QWidget* parent)
    : QDialog(parent),
      program_(program),
      folder_(folder),
      run_(std::move(run)),
      earlier_(std::move(earlier)),
      model_(new Model(this)),
      typing_(new QTimer(this)) {
    setObjectName(QStringLiteral("CompareWindow"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    fileToWrite = [this](const FileQuestion& question) {
        return askForFileToSave(
            this, question, [](const QString& file) { return file.endsWith(".xlsx", Qt::CaseInsensitive); },
            program_.memory);
    };
    buildControls();
    connectKeys();
    layOut();
    loadForm(program_, *this);
    setWindowTitle(toQt(program_.texts.ModulTextMed(text::comparison::kTitle, run_.job)));
    compare();
    setSizes();
    list_->setFocus();
}

// The list must not report its going to a form that is gone.
CompareWindow::~CompareWindow() { delete list_; }

std::string CompareWindow::runText(const RunHeader& run) const {
    std::string started = run.started;
    std::ranges::replace(started, 'T', ' ');
    return started + " \u00B7 " + run.priceFile.path;
}

void CompareWindow::buildControls() {
    origin_ = new QLabel(toQt(runText(run_)), this);
    origin_->setTextFormat(Qt::PlainText);
    origin_->setWordWrap(true);
    with_ = named(new QComboBox(this), "Med");
    with_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    for (const RunHeader& each : earlier_) with_->addItem(toQt(runText(each)));
    kind_ = named(new QComboBox(this), "Slag");
    kind_->addItems({QString(), QString(), QString()});
    kind_->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    filter_ = named(new QLineEdit(this), "Filter");
    filter_->setClearButtonEnabled(true);
    remark_ = named(new QLabel(this), "Anmärkning");
    remark_->setWordWrap(true);
    count_ = named(new QLabel(this), "Antal");
    list_ = named(new QTableView(this), "Lista");
    list_->setToolTip(QStringLiteral("Artiklar (F7 sorterar efter kolumnen)"));
    list_->setModel(model_);
    list_->setSelectionBehavior(QAbstractItemView::SelectRows);
    list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list_->setWordWrap(false);
    list_->setTabKeyNavigation(false);
    list_->verticalHeader()->hide();
    list_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    list_->verticalHeader()->setDefaultSectionSize(fontMetrics().lineSpacing() * 5 / 4);
    list_->horizontalHeader()->setHighlightSections(false);
    list_->horizontalHeader()->setSectionResizeMode(ComparisonList::kName, QHeaderView::Stretch);
    list_->horizontalHeader()->setSortIndicator(ComparisonList::kKind, Qt::AscendingOrder);
    list_->setSortingEnabled(true);
    copy_ = button(*this, "Kopiera", "&Kopiera");
    save_ = button(*this, "Spara", "&Spara...");
    close_ = button(*this, "Stäng", "S&täng");
    for (QPushButton* each : {copy_, save_, close_}) each->setAutoDefault(false);
    typing_->setSingleShot(true);
    typing_->setInterval(kTypingPause);
    connect(typing_, &QTimer::timeout, this, [this] { filter(); });
    connect(filter_, &QLineEdit::textChanged, this, [this] { typing_->start(); });
    connect(filter_, &QLineEdit::returnPressed, this, [this] { filter(); });
    connect(with_, &QComboBox::currentIndexChanged, this, [this] { compare(); });
    connect(kind_, &QComboBox::currentIndexChanged, this, [this] { filter(); });
    connect(copy_, &QPushButton::clicked, this, [this] { copy(); });
    connect(save_, &QPushButton::clicked, this, [this] { save(); });
    connect(close_, &QPushButton::clicked, this, [this] { reject(); });
}

void CompareWindow::connectKeys() {
    onKey(*this, QKeySequence::Find, [this] {
        filter_->setFocus();
        filter_->selectAll();
    });
    onKey(*this, QKeySequence::Save, [this] { save(); });
    onKey(*this, Qt::Key_F7, [this] { sortByCurrentColumn(); });
    onKey(
        *list_, QKeySequence::Copy, [this] { copy(); }, Qt::WidgetShortcut);
}

void CompareWindow::layOut() {
    const auto labelOf = [this](const char* name, const char* caption, QWidget* box) {
        QLabel* text = label(*this, name, caption);
        text->setBuddy(box);
        return text;
    };
    auto* top = new QGridLayout;
    top->addWidget(label(*this, "Lbl_Körning", "Körning"), 0, 0);
    top->addWidget(origin_, 0, 1);
    top->addWidget(labelOf("Lbl_Med", "Jämförd &med", with_), 1, 0);
    top->addWidget(with_, 1, 1);
    top->setColumnStretch(1, 1);
    auto* filters = new QHBoxLayout;
    filters->addWidget(labelOf("Lbl_Slag", "&Visa", kind_));
    filters->addWidget(kind_);
    filters->addWidget(labelOf("Lbl_Filter", "Fi&lter", filter_));
    filters->addWidget(filter_, 1);
    filters->addWidget(count_);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* each : {copy_, save_}) buttons->addWidget(each);
    buttons->addStretch(1);
    buttons->addWidget(close_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(filters);
    layout->addWidget(list_, 1);
    layout->addWidget(remark_);
    layout->addLayout(buttons);
}

void CompareWindow::setSizes() {
    constexpr int kWindowLetters = 130, kWindowLines = 32, kArticleLetters = 24;
    const QFontMetrics metrics = fontMetrics();
    const int letter = metrics.averageCharWidth();
    for (const int column : {ComparisonList::kKind, ComparisonList::kArticle, ComparisonList::kProduct}) {
        list_->setColumnWidth(column, kArticleLetters * letter);
    }
    const QSize size(kWindowLetters * letter, kWindowLines * metrics.lineSpacing());
    resize(size.boundedTo(screen()->availableSize() - QSize(2, 4) * letter));
}

void CompareWindow::compare() {
    model_->show(nullptr);
    compared_.reset();
    std::string remark;
    try {
        const Hourglass working(program_.boxes.port());
        const RunHeader& before = earlier_.at(static_cast<std::size_t>(std::max(with_->currentIndex(), 0)));
        auto compared = std::make_unique<Compared>(RecordReader(folder_.file(before.id)),
                                                   RecordReader(folder_.file(run_.id)), program_);
        if (compared->files.comparable()) {
            compared_ = std::move(compared);
            PassedOverSilently passedOver;  // the articles themselves are there
            attempt(passedOver, "Produkt", [&] { nameArticles(program_, run_, compared_->list); });
        } else {
            remark = program_.texts.ModulText(text::comparison::kNoArticles);
        }
    } catch (const PlatformError& error) {
        remark = program_.texts.ModulTextMed(text::changes::kUnreadableRecord, errorText(program_.texts, error));
    }
    if (compared_ && compared_->files.added() + compared_->files.gone() == 0) {
        remark = program_.texts.ModulText(text::comparison::kSameArticles);
    }
    remark_->setText(toQt(remark));
    remark_->setVisible(!remark.empty());
    nameKinds();
    filter();
}

void CompareWindow::nameKinds() {
    const std::int64_t added = compared_ ? compared_->files.added() : 0;
    const std::int64_t gone = compared_ ? compared_->files.gone() : 0;
    const auto name = [&](int row, ModuleKey key, std::int64_t count) {
        kind_->setItemText(row, toQt(program_.texts.ModulTextMed(key, grouped(count, program_.state.locale))));
    };
    name(0, text::comparison::kAll, added + gone);
    name(1, text::comparison::kNew, added);
    name(2, text::comparison::kGone, gone);
}

void CompareWindow::filter() {
    typing_->stop();
    const Hourglass working(program_.boxes.port());
    model_->query.text = fromQt(filter_->text());
    model_->query.isNew.reset();
    if (kind_->currentIndex() > 0) model_->query.isNew = kind_->currentIndex() == 1;
    model_->show(compared_ ? &compared_->list : nullptr);
    if (model_->rowCount() > 0) list_->setCurrentIndex(model_->index(0, 0));
    present();
}

// The one place that enables, and counts.
void CompareWindow::present() {
    const int rows = model_->rowCount();
    count_->setText(toQt(program_.texts.ModulTextMed(text::comparison::kShown, grouped(rows, program_.state.locale))));
    for (QWidget* each : std::initializer_list<QWidget*>{kind_, filter_}) each->setEnabled(compared_ != nullptr);
    for (QPushButton* each : {copy_, save_}) each->setEnabled(rows > 0);
}

void CompareWindow::sortByCurrentColumn() {
    const QHeaderView& header = *list_->horizontalHeader();
    const int column = std::max(list_->currentIndex().column(), 0);
    const bool again = header.sortIndicatorSection() == column && header.sortIndicatorOrder() == Qt::AscendingOrder;
    list_->sortByColumn(column, again ? Qt::DescendingOrder : Qt::AscendingOrder);
    if (model_->rowCount() > 0) list_->setCurrentIndex(model_->index(0, column));
}

void CompareWindow::copy() {
    if (!compared_) return;
    QModelIndexList rows = list_->selectionModel()->selectedRows();
    std::ranges::sort(rows, {}, [](const QModelIndex& index) { return index.row(); });
    std::string text;
    for (const QModelIndex& index : rows) {
        text += compared_->list.line(compared_->list.cells(index.row()));
        text += '\n';
    }
    QApplication::clipboard()->setText(toQt(text));
}

void CompareWindow::save() {
    if (!save_->isEnabled()) return;
    FileQuestion question;
    question.title = save_->text().remove('&').remove(QStringLiteral("..."));
    question.filters = toQt(program_.texts.ModulText(text::comparison::kSaveFilters));
    question.path = toQt(program_.state.dataFolder().string());
    const QString file = fileToWrite(question);
    if (file.isEmpty()) return;
    try {
        const Hourglass working(program_.boxes.port());
        compared_->list.save(fromQt(file));
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(
            program_.texts.ModulTextMed(text::changes::kCannotWrite, errorText(program_.texts, error)));
    }
}

void compareRun(Program& program, QWidget* parent, const RunFolder& folder, const RunHeader& run,
                const std::vector<RunHeader>& runs) {
    std::vector<RunHeader> earlier;
    std::vector<RunHeader> others = runs;
    while (const RunHeader* before = previousRun(others, run)) {
        earlier.push_back(*before);
        std::erase_if(others, [&](const RunHeader& other) { return other.id == earlier.back().id; });
    }
    if (earlier.empty()) {
        program.boxes.MeddelandeInfo(program.texts.ModulText(text::comparison::kNoRunBefore));
        return;
    }
    CompareWindow form(program, folder, run, std::move(earlier), parent);
    VisaFormulär(program, form, true);
}

}  // namespace kolmera
