#include "products/window/productwindow.h"

#include <fmt/format.h>

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QTabWidget>
#include <QTreeWidget>
#include <algorithm>

#include "lang/errortext.h"
#include "lang/keys/products.h"
#include "platform/attempt.h"
#include "ui/columnfit.h"
#include "ui/controls.h"
#include "ui/copyrows.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr std::size_t kMost = 200;  ///< products that are shown
constexpr int kRunRole = Qt::UserRole, kColumnRole = Qt::UserRole + 1;
constexpr std::chrono::milliseconds kTyping{150}, kBrowsing{250};

QTreeWidget* rowList(QWidget& parent, const char* name) {
    auto* list = named(new QTreeWidget(&parent), name);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setAllColumnsShowFocus(true);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->header()->setStretchLastSection(true);
    return list;
}

QTreeWidgetItem* addRow(QTreeWidget& list, const std::vector<std::string>& cells) {
    QStringList texts;
    for (const std::string& cell : cells) texts.push_back(toQt(cell));
    auto* row = new QTreeWidgetItem(&list, texts);
    for (int column = 0; column < texts.size(); ++column) row->setToolTip(column, texts[column]);
    return row;
}

constexpr int kMostLetters = 34;  ///< of a column that fits its texts

void fitColumns(QTreeWidget& list) {
    const int most = kMostLetters * list.fontMetrics().averageCharWidth();
    for (int column = 0; column < list.columnCount(); ++column) {
        list.resizeColumnToContents(column);
        list.setColumnWidth(column, std::min(list.columnWidth(column), most));
    }
}

}  // namespace

ProductWindow::ProductWindow(Program& program, QWidget* parent) : QDialog(parent), program_(program) {
    const Hourglass loading(program.boxes.port());
    setObjectName(QStringLiteral("ProductWindow"));
    setWindowTitle(QStringLiteral("Produkter"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    buildControls();
    layOut();
    loadForm(program_, *this);
    setSizes();
    companies_ = companyList(program.companies, program.state.dataFolder());
    for (const Company& company : companies_) companyBox_->addItem(toQt(company.name));
    companyBox_->setCurrentIndex(std::max(placeOfDatabase(companies_, program.state.StandardFöretag), 0));
    companyLabel_->setVisible(companies_.size() > 1);
    companyBox_->setVisible(companies_.size() > 1);
    connect(companyBox_, &QComboBox::activated, this, [this] { chooseCompany(); });
    openCompany();
    search();
    search_->setFocus();
}

// Who copies a company that is open may miss what others have written last.
ProductWindow::~ProductWindow() {
    stopReading();
    finder_.reset();
    program_.state.sql.FtgDB.reset();
}

void ProductWindow::buildControls() {
    companyLabel_ = label(*this, "Lbl_Företag", "&Företag");
    companyBox_ = named(new QComboBox(this), "Företag");
    companyLabel_->setBuddy(companyBox_);
    search_ = named(new QLineEdit(this), "Sök");
    search_->setClearButtonEnabled(true);
    search_->installEventFilter(this);
    list_ = rowList(*this, "Hittade");
    fit_ = new ColumnFit(*list_);
    list_->setToolTip(QStringLiteral("Produkter"));
    remark_ = named(new QLabel(this), "Anmärkning");
    remark_->setWordWrap(true);
    heading_ = named(new QLabel(this), "Rubrik");
    heading_->setTextFormat(Qt::PlainText);
    QFont bold = heading_->font();
    bold.setBold(true);
    heading_->setFont(bold);
    tabs_ = named(new QTabWidget(this), "Flikar");
    tabs_->setToolTip(QStringLiteral("Om produkten"));
    why_ = button(*this, "Varför", "&Varför detta pris?");
    close_ = button(*this, "Stäng", "S&täng");
    for (QPushButton* each : {why_, close_}) each->setAutoDefault(false);
    for (QTimer* each : {&searches_, &reads_}) each->setSingleShot(true);
    connect(search_, &QLineEdit::textEdited, this, [this] { searches_.start(kTyping); });
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (text.isEmpty()) searches_.start(kTyping);
    });
    connect(&searches_, &QTimer::timeout, this, [this] { search(); });
    connect(&reads_, &QTimer::timeout, this, [this] { readHistory(); });
    connect(list_, &QTreeWidget::currentItemChanged, this, [this] { showProduct(); });
    connect(why_, &QPushButton::clicked, this, [this] { why(); });
    connect(close_, &QPushButton::clicked, this, [this] { reject(); });
    onKey(*this, QKeySequence::Find, [this] {
        search_->setFocus(Qt::ShortcutFocusReason);
        search_->selectAll();
    });
}

void ProductWindow::layOut() {
    QLabel* searchLabel = label(*this, "Lbl_Sök", "S&ök");
    searchLabel->setBuddy(search_);
    auto* top = new QHBoxLayout;
    top->addWidget(companyLabel_);
    top->addWidget(companyBox_);
    top->addWidget(searchLabel);
    top->addWidget(search_, 1);
    auto* found = new QWidget(this);
    auto* left = new QVBoxLayout(found);
    left->setContentsMargins(0, 0, 0, 0);
    left->addWidget(list_, 1);
    left->addWidget(remark_);
    auto* about = new QWidget(this);
    auto* right = new QVBoxLayout(about);
    right->setContentsMargins(0, 0, 0, 0);
    right->addWidget(heading_);
    right->addWidget(tabs_, 1);
    halves_ = named(new QSplitter(this), "Delare");
    halves_->addWidget(found);
    halves_->addWidget(about);
    halves_->setChildrenCollapsible(false);
    halves_->setStretchFactor(0, 1);
    halves_->setStretchFactor(1, 2);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(why_);
    buttons->addStretch(1);
    buttons->addWidget(close_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(halves_, 1);
    layout->addLayout(buttons);
    setTabOrder(companyBox_, search_);
    setTabOrder(search_, list_);
    setTabOrder(list_, tabs_);
    setTabOrder(tabs_, why_);
    setTabOrder(why_, close_);
}

void ProductWindow::setSizes() {
    constexpr int kWindowLetters = 165, kWindowLines = 30, kListLetters = 44;
    const QFontMetrics metrics = fontMetrics();
    list_->setMinimumWidth(kListLetters * metrics.averageCharWidth());
    const QSize size(kWindowLetters * metrics.averageCharWidth(), kWindowLines * metrics.lineSpacing());
    resize(size.boundedTo(screen()->availableSize() - QSize(2, 4) * metrics.averageCharWidth()));
    const int found = list_->minimumWidth();
    halves_->setSizes({found, width() - found});
}

/// Arrow down and Enter in the search box go to the list.
bool ProductWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched != search_ || event->type() != QEvent::KeyPress) return QDialog::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Escape && !search_->text().isEmpty()) {
        search_->clear();
        return true;
    }
    if (key != Qt::Key_Down && key != Qt::Key_Return && key != Qt::Key_Enter)
        return QDialog::eventFilter(watched, event);
    if (searches_.isActive()) {
        searches_.stop();
        search();
    }
    if (list_->topLevelItemCount() > 0) list_->setFocus(Qt::TabFocusReason);
    return true;
}

void ProductWindow::chooseCompany() {
    openCompany();
    search();
}

void ProductWindow::openCompany() {
    const Hourglass opening(program_.boxes.port());
    const auto place = static_cast<std::size_t>(companyBox_->currentIndex());
    stopReading();
    finder_.reset();
    company_.clear();
    if (place >= companies_.size() || !program_.companies.ÖppnaDatabas(companies_[place].database)) return;
    company_ = companies_[place].database;
    finder_ = std::make_unique<ProductFinder>(program_.state.sql);
}

void ProductWindow::search() {
    std::vector<FoundProduct> found;
    const std::string typed = fromQt(search_->text().trimmed());
    try {
        const Hourglass searching(program_.boxes.port());
        if (finder_) found = finder_->find(typed, kMost);
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(errorText(program_.texts, error));
    }
    std::string remark;
    if (typed.empty()) {
        remark = program_.texts.ModulText(text::products::kType);
    } else if (found.empty()) {
        remark = program_.texts.ModulText(text::products::kNothingFound);
    } else if (found.size() == kMost) {
        remark = program_.texts.ModulTextMed(text::products::kMoreFound, fmt::format("{}", kMost));
    }
    remark_->setText(toQt(remark));
    remark_->setVisible(!remark.empty());
    {
        const QSignalBlocker quiet(list_);
        list_->clear();
        list_->setHeaderLabels({toQt(program_.texts.ModulText(text::products::kProduct)),
                                toQt(program_.texts.ModulText(text::products::kName))});
        for (const FoundProduct& each : found)
            addRow(*list_, {each.number, each.name.empty() ? each.searchName : each.name});
        fit_->fit(kMostLetters * list_->fontMetrics().averageCharWidth());
        if (!found.empty()) list_->setCurrentItem(list_->topLevelItem(0));
    }
    showProduct();
}

void ProductWindow::showProduct() {
    stopReading();
    card_.reset();
    const QTreeWidgetItem* row = list_->currentItem();
    if (row != nullptr && finder_) {
        try {
            card_ = productCard(program_.state.sql, program_.texts, fromQt(row->text(0)));
        } catch (const PlatformError& error) {
            program_.boxes.MeddelandeVarning(errorText(program_.texts, error));
        }
    }
    showTables();
    if (card_) reads_.start(kBrowsing);
    present();
}

QTreeWidget* ProductWindow::addTab(const CardTable& table) {
    QTreeWidget* list = rowList(*tabs_, table.name.c_str());
    list->setAccessibleName(toQt(table.title));
    QStringList headings;
    for (const std::string& heading : table.headings) headings.push_back(toQt(heading));
    list->setHeaderLabels(headings);
    for (const auto& cells : table.rows) addRow(*list, cells);
    fitColumns(*list);
    if (list->topLevelItemCount() > 0) list->setCurrentItem(list->topLevelItem(0));
    copyRowsOnKey(*list);
    tabs_->addTab(list, toQt(table.title));
    return list;
}

void ProductWindow::showTables() {
    const int tab = tabs_->currentIndex();
    const QSignalBlocker quiet(tabs_);
    history_ = nullptr;
    historyRemark_ = nullptr;
    while (tabs_->count() > 0) delete tabs_->widget(0);
    runs_.clear();
    heading_->setText(card_ ? toQt(card_->number + "  " + card_->name) : QString());
    tabs_->setEnabled(card_.has_value());  // Tab would stop at nothing
    if (!card_) return;
    for (const CardTable& table : card_->tables) addTab(table);
    history_ = addTab(historyTable(program_.texts));
    auto* page = new QWidget(tabs_);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    historyRemark_ = named(new QLabel(toQt(program_.texts.ModulText(text::products::kReadingRuns)), page), "Läser");
    tabs_->removeTab(tabs_->indexOf(history_));
    layout->addWidget(history_, 1);
    layout->addWidget(historyRemark_);
    history_->show();
    tabs_->addTab(page, toQt(program_.texts.ModulText(text::products::kHistory)));
    connect(history_, &QTreeWidget::currentItemChanged, this, [this] { present(); });
    tabs_->setCurrentIndex(std::clamp(tab, 0, tabs_->count() - 1));
    // They are made anew for each product, and would come last.
    QWidget* before = tabs_;
    for (auto* list : tabs_->findChildren<QTreeWidget*>()) {
        setTabOrder(before, list);
        before = list;
    }
    setTabOrder(before, why_);
    setTabOrder(why_, close_);
}

void ProductWindow::stopReading() {
    reads_.stop();
    stop_ = true;
    if (reader_.joinable()) reader_.join();
    stop_ = false;
}

// What is read of the records comes as events; those of a product that is no longer shown find another one.
void ProductWindow::readHistory() {
    stopReading();
    const auto shown = std::make_shared<std::string>(card_->number);
    const auto here = [this, shown](auto act) {
        QMetaObject::invokeMethod(
            this,
            [this, shown, act] {
                if (card_ && card_->number == *shown && history_ != nullptr) act();
            },
            Qt::QueuedConnection);
    };
    history_->clear();
    runs_.clear();
    const ProductHistory past(program_.state.dataFolder(),
                              {.number = card_->number, .companyFile = company_, .ids = card_->ids});
    reader_ = std::thread([this, here, past] {
        ProductHistory::Outcome outcome;
        try {
            outcome = past.read({}, stop_, [&](const RunHeader& run, const std::vector<ProductChange>& changes) {
                here([this, run, changes] { takeChanges(run, changes); });
            });
        } catch (const PlatformError&) {
            outcome.unreadable = 1;
        }
        if (stop_) return;
        here([this, outcome] {
            std::string remark;
            if (!outcome.all) remark = program_.texts.ModulText(text::products::kMoreRuns);
            if (runs_.empty() && outcome.all) remark = program_.texts.ModulText(text::products::kNoChanges);
            if (outcome.unreadable > 0)
                remark =
                    program_.texts.ModulTextMed(text::products::kUnreadableRuns, fmt::format("{}", outcome.unreadable));
            historyEnds(remark);
        });
    });
}

void ProductWindow::takeChanges(const RunHeader& run, const std::vector<ProductChange>& changes) {
    if (!program_.state.sql.FtgDB) return;
    runs_.push_back(std::make_unique<RunHeader>(run));
    CardTable table;
    for (const ProductChange& change : changes) {
        table.rows.clear();
        addHistory(table, program_.state.sql, program_.texts, run, {change});
        if (table.rows.empty()) continue;
        QTreeWidgetItem* row = addRow(*history_, table.rows.front());
        const TableDef& definition = program_.state.sql.FtgDB->table(change.table);
        const std::string& column = definition.fields[static_cast<std::size_t>(change.cell.column)].name;
        row->setData(0, kRunRole, static_cast<int>(runs_.size()) - 1);
        row->setData(0, kColumnRole, toQt(fmt::format("{}.{}", change.table, column)));
    }
    if (history_->currentItem() == nullptr) history_->setCurrentItem(history_->topLevelItem(0));
    fitColumns(*history_);
    present();
}

void ProductWindow::historyEnds(const std::string& remark) {
    historyRemark_->setText(toQt(remark));
    historyRemark_->setVisible(!remark.empty());
}

/// The run of the change that is chosen, else the newest, where it has read a price file.
const RunHeader* ProductWindow::runToExplain() const {
    if (history_ == nullptr || runs_.empty()) return nullptr;
    const QTreeWidgetItem* row = history_->currentItem();
    const auto place = static_cast<std::size_t>(row == nullptr ? 0 : row->data(0, kRunRole).toInt());
    const RunHeader& run = *runs_.at(std::min(place, runs_.size() - 1));
    return run.kind == RunKind::Run && !run.priceFile.path.empty() ? &run : nullptr;
}

std::string ProductWindow::columnToExplain() const {
    const QTreeWidgetItem* row = history_->currentItem();
    return row == nullptr ? std::string("Produkt.Inpris") : fromQt(row->data(0, kColumnRole).toString());
}

void ProductWindow::present() { why_->setEnabled(program_.explainPrice && runToExplain() != nullptr); }

/// The calculation opens a copy of the company in place of this one.
void ProductWindow::why() {
    const RunHeader* found = runToExplain();
    if (found == nullptr) return;
    const RunHeader run = *found;
    const std::string column = columnToExplain(), number = card_->number;
    stopReading();
    finder_.reset();
    program_.state.sql.FtgDB.reset();
    program_.explainPrice(this, run, number, column);
    openCompany();
    if (card_ && finder_) reads_.start(kBrowsing);
}

void showProducts(Program& program, QWidget* parent) {
    ProductWindow form(program, parent);
    VisaFormulär(program, form, true);
}

}  // namespace kolmera
