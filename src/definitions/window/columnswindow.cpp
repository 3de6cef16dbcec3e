#include "definitions/window/columnswindow.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QTableWidget>
#include <algorithm>

#include "definitions/window/propertygrid.h"
#include "lang/keys/source.h"
#include "lang/keys/sourcecolumns.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/lists.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

QTableWidget* table(QWidget& parent, const char* name, const QStringList& captions) {
    auto* made = named(new QTableWidget(&parent), name);
    made->setColumnCount(static_cast<int>(captions.size()));
    made->setHorizontalHeaderLabels(captions);
    made->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    made->horizontalHeader()->setStretchLastSection(true);
    made->verticalHeader()->setDefaultSectionSize(parent.fontMetrics().lineSpacing() +
                                                  parent.fontMetrics().lineSpacing() / 3);
    made->setTabKeyNavigation(false);
    made->setWordWrap(false);
    return made;
}

}  // namespace

ColumnsWindow::ColumnsWindow(Program& program, ColumnEditor& editor, QWidget* parent)
    : QDialog(parent), program_(program), editor_(editor), before_(editor.settings()) {
    constexpr int kWidth = 990, kHeight = 620;
    setObjectName(QStringLiteral("ColumnsWindow"));
    setWindowTitle(QStringLiteral("Kolumner och värden"));
    build();
    layOut();
    loadForm(program_, *this);
    connect(kolumner_, &QListWidget::currentRowChanged, this, [this](int row) {
        editor_.chooseColumn(row);
        present();
    });
    connect(läggTill_, &QPushButton::clicked, this, [this] {
        egenskaper_->commit();
        editor_.addColumn();
        present();
        kolumner_->setFocus();
    });
    connect(ersätt_, &QTableWidget::cellChanged, this, [this] { takeReplacements(); });
    egenskaper_->changed = [this](int name, int choice, const std::string& typed) {
        if (choice >= 0) {
            editor_.choose(static_cast<ColumnProperty>(name), choice);
        } else {
            editor_.type(static_cast<ColumnProperty>(name), typed);
        }
        present();
    };
    connect(ok_, &QPushButton::clicked, this, [this] {
        takeWhatIsTyped();
        accept();
    });
    connect(avbryt_, &QPushButton::clicked, this, [this] { QDialog::reject(); });
    resize(kWidth, kHeight);
    present();
    kolumner_->setFocus();
}

// Esc and the window's own button; "Avbryt" says what it does.
void ColumnsWindow::reject() {
    takeWhatIsTyped();
    if (!(editor_.settings() == before_) && !leaveUnsaved(program_)) return;
    QDialog::reject();
}

// What is typed into a cell counts, too, where a button was pressed by its letter.
void ColumnsWindow::takeWhatIsTyped() {
    ok_->setFocus();
    egenskaper_->commit();
}

void ColumnsWindow::build() {
    const auto text = [this](ModuleKey key) { return toQt(program_.texts.ModulText(key)); };
    lblKolumner_ = label(*this, "Lbl_Kolumner", "Maskens &kolumner");
    kolumner_ = named(new QListWidget(this), "Kolumner");
    kolumner_->setUniformItemSizes(true);
    lblKolumner_->setBuddy(kolumner_);
    egenskaper_ = new PropertyGrid(program_, this);
    lblVärden_ = label(*this, "Lbl_Värden", "&Värden före och efter");
    värden_ = table(*this, "Värden",
                    {text(text::source::kRow), text(text::sourcecolumns::kBefore), text(text::sourcecolumns::kAfter)});
    värden_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    värden_->setSelectionBehavior(QAbstractItemView::SelectRows);
    värden_->verticalHeader()->hide();
    lblVärden_->setBuddy(värden_);
    anmärkning_ = new QLabel(this);
    anmärkning_->setWordWrap(true);
    lblErsätt_ = label(*this, "Lbl_Ersätt", "&Ersätt hela värden");
    ersätt_ = table(*this, "Ersätt", {text(text::sourcecolumns::kReplaced), text(text::sourcecolumns::kReplacedBy)});
    ersätt_->verticalHeader()->hide();
    lblErsätt_->setBuddy(ersätt_);
    läggTill_ = button(*this, "LäggTill", "&Lägg till kolumn");
    läggTill_->setEnabled(editor_.canAddColumn());
    ok_ = button(*this, "OK", "&OK");
    ok_->setDefault(true);
    avbryt_ = button(*this, "Avbryt", "&Avbryt");
}

void ColumnsWindow::layOut() {
    constexpr int kListLetters = 28, kGridLetters = 62, kRowLetters = 7, kValueLetters = 24, kReplacements = 6;
    const int letter = fontMetrics().averageCharWidth();
    auto* list = new QVBoxLayout;
    list->addWidget(lblKolumner_);
    list->addWidget(kolumner_, 1);
    list->addWidget(läggTill_);
    kolumner_->setFixedWidth(kListLetters * letter);
    auto* scrolled = new QScrollArea(this);
    scrolled->setWidget(egenskaper_);
    scrolled->setWidgetResizable(true);
    scrolled->setFrameShape(QFrame::NoFrame);
    scrolled->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrolled->setFixedWidth(kGridLetters * letter);
    scrolled->setFocusPolicy(Qt::NoFocus);
    auto* values = new QVBoxLayout;
    values->addWidget(lblVärden_);
    values->addWidget(värden_, 1);
    values->addWidget(anmärkning_);
    values->addWidget(lblErsätt_);
    values->addWidget(ersätt_);
    värden_->setColumnWidth(0, kRowLetters * letter);
    värden_->setColumnWidth(1, kValueLetters * letter);
    ersätt_->setColumnWidth(0, kValueLetters * letter);
    ersätt_->setFixedHeight(kReplacements * ersätt_->verticalHeader()->defaultSectionSize());
    auto* middle = new QHBoxLayout;
    middle->addLayout(list);
    middle->addWidget(scrolled);
    middle->addLayout(values, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok_);
    buttons->addWidget(avbryt_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(middle, 1);
    layout->addLayout(buttons);
}

// The one place that fills, enables and hides.
void ColumnsWindow::present() {
    presentColumns();
    setTabOrder(kolumner_, läggTill_);
    egenskaper_->show(editor_.properties(), true, *läggTill_, *värden_);
    presentShown();
    presentReplacements();
    anmärkning_->setText(toQt(editor_.remarks()));
}

void ColumnsWindow::presentColumns() {
    const QSignalBlocker quiet(kolumner_);
    const std::vector<std::string> columns = editor_.columns();
    while (kolumner_->count() < static_cast<int>(columns.size())) new QListWidgetItem(kolumner_);
    for (int place = 0; const std::string& column : columns) kolumner_->item(place++)->setText(toQt(column));
    selectRow(*kolumner_, columns.empty() ? -1 : editor_.chosen());
}

void ColumnsWindow::presentShown() {
    const auto& shown = editor_.shown();
    värden_->setRowCount(static_cast<int>(shown.size()));
    for (int line = 0; const ColumnEditor::Shown& each : shown) {
        QString after = toQt(each.after);
        // The sign stands for those who do not see the colour.
        if (!each.fits) after.prepend(QStringLiteral("⚠ "));
        const QString cells[] = {QString::number(each.row), toQt(each.before), after};
        for (int column = 0; const QString& cell : cells) {
            auto* item = new QTableWidgetItem(cell);
            if (!each.fits)
                item->setFont([&] {
                    QFont bold = font();
                    bold.setBold(true);
                    return bold;
                }());
            värden_->setItem(line, column++, item);
        }
        ++line;
    }
}

/// An empty row at the end is for the next one.
void ColumnsWindow::presentReplacements() {
    const QSignalBlocker quiet(ersätt_);
    const int row = ersätt_->currentRow(), column = ersätt_->currentColumn();
    const ColumnEditor::Replacements replacements = editor_.replacements();
    ersätt_->setEnabled(!editor_.properties().empty());
    ersätt_->setRowCount(static_cast<int>(replacements.size()) + 1);
    for (int line = 0; line < ersätt_->rowCount(); ++line) {
        const auto place = static_cast<std::size_t>(line);
        const bool isLast = place == replacements.size();
        ersätt_->setItem(line, 0, new QTableWidgetItem(isLast ? QString() : toQt(replacements[place].first)));
        ersätt_->setItem(line, 1, new QTableWidgetItem(isLast ? QString() : toQt(replacements[place].second)));
    }
    ersätt_->setCurrentCell(std::clamp(row, 0, ersätt_->rowCount() - 1), std::max(column, 0));
}

void ColumnsWindow::takeReplacements() {
    ColumnEditor::Replacements replacements;
    for (int line = 0; line < ersätt_->rowCount(); ++line) {
        const auto text = [&](int column) {
            const QTableWidgetItem* item = ersätt_->item(line, column);
            return item == nullptr ? std::string() : fromQt(item->text());
        };
        replacements.emplace_back(text(0), text(1));
    }
    editor_.replace(std::move(replacements));
    // The cell's own editor is still open.
    QMetaObject::invokeMethod(
        this, [this] { present(); }, Qt::QueuedConnection);
}

}  // namespace kolmera
