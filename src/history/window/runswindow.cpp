#include "history/window/runswindow.h"

#include <QAbstractTableModel>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTableView>
#include <algorithm>

#include "history/window/comparewindow.h"
#include "history/window/openrecord.h"
#include "history/window/undowindow.h"
#include "lang/errortext.h"
#include "lang/keys/runs.h"
#include "platform/attempt.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/lists.h"
#include "ui/plaintooltip.h"
#include "ui/qttext.h"

namespace kolmera {

class RunsWindow::Model final : public QAbstractTableModel {
  public:
    Model(const RunList& runs, QObject* parent) : QAbstractTableModel(parent), runs_(runs) {}

    void refresh() {
        beginResetModel();
        endResetModel();
    }
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : runs_.count();
    }
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : RunList::kColumns;
    }
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        if (!index.isValid()) return {};
        if (role == Qt::TextAlignmentRole) {
            const bool number = index.column() >= RunList::kRecords && index.column() <= RunList::kChanged;
            return static_cast<int>(Qt::AlignVCenter | (number ? Qt::AlignRight : Qt::AlignLeft));
        }
        if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
        if (role == Qt::ToolTipRole && index.column() == RunList::kPriceFile) {
            return plainToolTip(toQt(runs_.run(index.row()).priceFile.path));
        }
        const QString text = toQt(runs_.cells(index.row()).at(static_cast<std::size_t>(index.column())));
        return role == Qt::ToolTipRole ? plainToolTip(text) : text;
    }
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
        return toQt(runs_.headings().at(static_cast<std::size_t>(section)));
    }

  private:
    const RunList& runs_;
};

RunsWindow::RunsWindow(Program& program, QWidget* parent)
    : QDialog(parent),
      program_(program),
      folder_(program.state.dataFolder()),
      runs_(program.texts, program.state.locale),
      model_(new Model(runs_, this)) {
    setObjectName(QStringLiteral("RunsWindow"));
    setWindowTitle(QStringLiteral("Tidigare körningar"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    buildControls();
    layOut();
    loadForm(program_, *this);
    fill();
    setSizes();
    list_->setFocus();
}

// The list must not report its going to a form that is gone.
RunsWindow::~RunsWindow() { delete list_; }

void RunsWindow::buildControls() {
    company_ = named(new QComboBox(this), "Företag");
    list_ = named(new QTableView(this), "Lista");
    list_->setToolTip(QStringLiteral("Körningar"));
    list_->setModel(model_);
    list_->setSelectionBehavior(QAbstractItemView::SelectRows);
    list_->setSelectionMode(QAbstractItemView::SingleSelection);
    list_->setWordWrap(false);
    list_->setTextElideMode(Qt::ElideMiddle);
    list_->setTabKeyNavigation(false);
    list_->verticalHeader()->hide();
    list_->verticalHeader()->setDefaultSectionSize(fontMetrics().lineSpacing() * 5 / 4);
    list_->horizontalHeader()->setHighlightSections(false);
    list_->horizontalHeader()->setSectionResizeMode(RunList::kPriceFile, QHeaderView::Stretch);
    remark_ = named(new QLabel(this), "Anmärkning");
    remark_->setWordWrap(true);
    show_ = button(*this, "Visa", "&Visa...");
    compare_ = button(*this, "Jämför", "&Jämför...");
    undo_ = button(*this, "Ångra", "&Ångra körning...");
    remove_ = button(*this, "TaBort", "&Ta bort");
    close_ = button(*this, "Stäng", "&Stäng");
    for (QPushButton* each : {show_, compare_, undo_, remove_, close_}) each->setAutoDefault(false);
    connect(company_, &QComboBox::currentIndexChanged, this, [this] { choose(); });
    connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] { present(); });
    connect(list_, &QTableView::doubleClicked, this, [this] { showRun(); });
    connect(show_, &QPushButton::clicked, this, [this] { showRun(); });
    connect(compare_, &QPushButton::clicked, this, [this] { compare(); });
    connect(undo_, &QPushButton::clicked, this, [this] { undo(); });
    connect(remove_, &QPushButton::clicked, this, [this] { remove(); });
    connect(close_, &QPushButton::clicked, this, [this] { reject(); });
    pressOnKey(*this, QKeySequence(Qt::Key_F9), *remove_);
    for (const Qt::Key enter : {Qt::Key_Return, Qt::Key_Enter}) {
        onKey(
            *list_, enter, [this] { showRun(); }, Qt::WidgetShortcut);
    }
}

void RunsWindow::layOut() {
    QLabel* company = label(*this, "Lbl_Företag", "&Företag");
    company->setBuddy(company_);
    auto* top = new QHBoxLayout;
    top->addWidget(company);
    top->addWidget(company_);
    top->addStretch(1);
    auto* buttons = new QHBoxLayout;
    for (QPushButton* each : {show_, compare_, undo_, remove_}) buttons->addWidget(each);
    buttons->addStretch(1);
    buttons->addWidget(close_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(list_, 1);
    layout->addWidget(remark_);
    layout->addLayout(buttons);
}

void RunsWindow::setSizes() {
    constexpr int kWindowLetters = 165, kWindowLines = 26;
    const QFontMetrics metrics = fontMetrics();
    for (int column = 0; column < RunList::kColumns; ++column) {
        list_->setColumnWidth(column, 0);
        if (column != RunList::kPriceFile) widen(static_cast<RunList::Column>(column));
    }
    const QSize size(kWindowLetters * metrics.averageCharWidth(), kWindowLines * metrics.lineSpacing());
    resize(size.boundedTo(screen()->availableSize() - QSize(2, 4) * metrics.averageCharWidth()));
}

void RunsWindow::widen(RunList::Column column) {
    constexpr int kColumnLetters = 26;  // a long outcome must leave room for the price file
    const int width = list_->columnWidth(column);
    list_->resizeColumnToContents(column);
    const int wanted = std::min(list_->columnWidth(column), kColumnLetters * fontMetrics().averageCharWidth());
    list_->setColumnWidth(column, std::max(width, wanted));
}

/// Columns stay as the user left them, but what was taken back meanwhile, or the other language, has longer words.
void RunsWindow::widenShortColumns() {
    for (const auto column : {RunList::kKind, RunList::kNew, RunList::kChanged, RunList::kOutcome}) widen(column);
}

void RunsWindow::showEvent(QShowEvent* event) {
    widenShortColumns();  // the memory of windows has set the widths by now
    QDialog::showEvent(event);
}

void RunsWindow::fill() {
    std::vector<RunHeader> runs;
    try {
        const Hourglass reading(program_.boxes.port());
        unreadable_ = 0;
        runs = folder_.list(&unreadable_);
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(
            program_.texts.FormulärSträngMed1(text::runs::kCannotList, errorText(program_.texts, error)));
    }
    const int row = currentRow();
    runs_.fill(std::move(runs));
    {
        const QSignalBlocker quiet(company_);
        company_->clear();
        company_->addItem(toQt(program_.texts.FormulärSträng(text::runs::kAllCompanies)));
        for (const std::string& company : runs_.companies()) company_->addItem(toQt(company));
        if (!runs_.chosen().empty()) company_->setCurrentText(toQt(runs_.chosen()));
    }
    model_->refresh();
    if (isVisible()) widenShortColumns();
    selectRow(*list_, std::clamp(row, 0, std::max(runs_.count() - 1, 0)));
    present();
}

void RunsWindow::choose() {
    const int row = company_->currentIndex();
    runs_.choose(row <= 0 ? std::string() : runs_.companies()[static_cast<std::size_t>(row) - 1]);
    model_->refresh();
    if (isVisible()) widenShortColumns();
    selectRow(*list_, 0);
    present();
}

// The one place that enables.
void RunsWindow::present() {
    const int row = currentRow();
    show_->setEnabled(row >= 0);
    compare_->setEnabled(runs_.canCompare(row));
    undo_->setEnabled(runs_.canUndo(row));
    remove_->setEnabled(runs_.canRemove(row));
    std::string remark;
    if (runs_.count() == 0) remark = program_.texts.FormulärSträng(text::runs::kNone);
    if (unreadable_ > 0)
        remark = program_.texts.FormulärSträngMed1(text::runs::kUnreadable, std::to_string(unreadable_));
    remark_->setText(toQt(remark));
    remark_->setVisible(!remark.empty());
}

int RunsWindow::currentRow() const {
    const QModelIndex current = list_->currentIndex();
    return current.isValid() && current.row() < runs_.count() ? current.row() : -1;
}

void RunsWindow::showRun() {
    const int row = currentRow();
    if (row < 0) return;
    try {
        showRecord(program_, this, folder_.file(runs_.run(row).id));
    } catch (const PlatformError&) {
        fill();  // somebody else has removed it
    }
}

void RunsWindow::compare() {
    const int row = currentRow();
    if (runs_.canCompare(row)) compareRun(program_, this, folder_, runs_.run(row), runs_.all());
}

void RunsWindow::undo() {
    const int row = currentRow();
    if (row >= 0 && takeBack(program_, this, runs_.run(row).id)) fill();
}

void RunsWindow::remove() {
    const int row = currentRow();
    if (!runs_.canRemove(row)) return;
    const RunHeader& run = runs_.run(row);
    const std::string question = program_.texts.FormulärSträngMed1(text::runs::kAskToRemove,
                                                                   runs_.cells(row)[RunList::kStarted] + " " + run.job);
    if (program_.boxes.MeddelandeJaNejNej(question) != Answer::Yes) return;
    try {
        folder_.remove(run.id);
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(errorText(program_.texts, error));
    }
    fill();
}

}  // namespace kolmera
