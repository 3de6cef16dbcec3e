#include "definitions/window/masksamplewindow.h"

#include <QAbstractTableModel>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTableView>
#include <QTableWidget>
#include <algorithm>

#include "definitions/window/rulerview.h"
#include "lang/keys/masksamplewindow.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/qttext.h"

namespace kolmera {

/// The first records, a column a field.
class RecordsModel final : public QAbstractTableModel {
  public:
    RecordsModel(const MaskSample& sample, QObject* parent) : QAbstractTableModel(parent), sample_(sample) {}

    int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(std::min(sample_.fields().size(), MaskSample::kShownRecords));
    }
    int columnCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : sample_.fieldCount(); }
    QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole) return {};
        const auto& fields = sample_.fields()[static_cast<std::size_t>(index.row())];
        const auto column = static_cast<std::size_t>(index.column());
        return column < fields.size() ? toQt(fields[column]) : QString();
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
        if (role == Qt::TextAlignmentRole && orientation == Qt::Horizontal)
            return int(Qt::AlignLeft | Qt::AlignVCenter);
        if (role != Qt::DisplayRole) return {};
        return orientation == Qt::Vertical ? QVariant(section + 1) : QVariant(toQt(sample_.columnCaption(section)));
    }
    void refresh() { emit headerDataChanged(Qt::Horizontal, 0, std::max(0, sample_.fieldCount() - 1)); }

  private:
    const MaskSample& sample_;
};

namespace {

using Row = MaskSample::Row;

struct Column {
    FormKey caption;
    std::string Row::*text;
    int letters;
};

const Column kColumns[] = {
    {text::masksamplewindow::kField, &Row::field, 14},   {text::masksamplewindow::kRaw, &Row::raw, 20},
    {text::masksamplewindow::kTarget, &Row::target, 16}, {text::masksamplewindow::kRule, &Row::rule, 30},
    {text::masksamplewindow::kRead, &Row::read, 14},     {text::masksamplewindow::kPresent, &Row::present, 19},
    {text::masksamplewindow::kAfter, &Row::after, 16},
};

QLabel* wrapped(QLabel* label) {
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

}  // namespace

MaskSampleWindow::MaskSampleWindow(Program& program, MaskSample& sample, QWidget* parent)
    : QDialog(parent), program_(program), sample_(sample) {
    setObjectName(QStringLiteral("MaskSample"));
    setWindowTitle(QStringLiteral("Masken mot prisfilen"));
    buildRecords();
    buildFields();
    buildButtons();
    layOut();
    installEnterSomTabOn(*mål_);
    loadForm(program_, *this);
    setSizes();
    connectRecords();
    connectFields();
    present();
    fält_->setFocus();
}

void MaskSampleWindow::buildRecords() {
    if (sample_.hasRuler()) {
        lblPoster_ = label(*this, "Lbl_Linjal",
                           "&Linjal (klicka mellan två tecken, eller flytta med pilarna och tryck blanksteg)");
        linjal_ = named(new RulerView(this), "Linjal");
        linjal_->setLines(sample_.lines());
        linjal_->setAccessibleName(lblPoster_->text().remove('&'));
        lblPoster_->setBuddy(linjal_);
        gränser_ = button(*this, "FöreslåGränser", "Föreslå &gränser");
    } else {
        lblPoster_ = label(*this, "Lbl_Poster", "&Poster i prisfilen");
        poster_ = named(new QTableView(this), "Poster");
        records_ = new RecordsModel(sample_, this);
        poster_->setModel(records_);
        poster_->setSelectionMode(QAbstractItemView::SingleSelection);
        poster_->setTabKeyNavigation(false);
        poster_->setWordWrap(false);
        lblPoster_->setBuddy(poster_);
    }
    föregående_ = button(*this, "Föregående", "&Föregående post");
    nästa_ = button(*this, "Nästa", "&Nästa post");
    post_ = new QLabel(this);
    produkt_ = wrapped(new QLabel(this));
    produkt_->setTextInteractionFlags(Qt::TextSelectableByMouse);
}

void MaskSampleWindow::buildFields() {
    lblFält_ = label(*this, "Lbl_Fält", "Fält &och vad de ger");
    fält_ = named(new QTableWidget(this), "Fält");
    fält_->setColumnCount(static_cast<int>(std::size(kColumns)));
    fält_->setSelectionBehavior(QAbstractItemView::SelectRows);
    fält_->setSelectionMode(QAbstractItemView::SingleSelection);
    fält_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    fält_->setTabKeyNavigation(false);
    fält_->setWordWrap(false);
    fält_->verticalHeader()->hide();
    for (int column = 0; const Column& each : kColumns) {
        fält_->setHorizontalHeaderItem(column, new QTableWidgetItem(toQt(program_.texts.FormulärSträng(each.caption))));
        fält_->horizontalHeaderItem(column++)->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    }
    lblFält_->setBuddy(fält_);
    lblMål_ = label(*this, "Lbl_Mål", "Läses in &till");
    mål_ = named(new QComboBox(this), "Mål");
    lblMål_->setBuddy(mål_);
    // The name alone, and with the list open the code before it.
    for (const Target& target : sample_.targets()) mål_->addItem(toQt(target.text).replace('\t', ' '));
    påpekande_ = wrapped(new QLabel(this));
}

void MaskSampleWindow::buildButtons() {
    anta_ = button(*this, "Anta", "&Anta förslaget");
    antaAlla_ = button(*this, "AntaAlla", "Anta a&lla förslag");
    stäng_ = button(*this, "Stäng", "&Stäng");
    for (QPushButton* each : {föregående_, nästa_, anta_, antaAlla_, stäng_}) each->setAutoDefault(false);
    if (gränser_ != nullptr) gränser_->setAutoDefault(false);
}

void MaskSampleWindow::layOut() {
    auto* browse = new QHBoxLayout;
    if (gränser_ != nullptr) browse->addWidget(gränser_);
    browse->addWidget(föregående_);
    browse->addWidget(nästa_);
    browse->addWidget(post_);
    browse->addSpacing(fontMetrics().height());
    browse->addWidget(produkt_, 1);
    auto* target = new QHBoxLayout;
    target->addWidget(lblMål_);
    target->addWidget(mål_);
    target->addWidget(påpekande_, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(anta_);
    buttons->addWidget(antaAlla_);
    buttons->addStretch(1);
    buttons->addWidget(stäng_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lblPoster_);
    layout->addWidget(sample_.hasRuler() ? static_cast<QWidget*>(linjal_) : poster_, 1);
    layout->addLayout(browse);
    layout->addWidget(lblFält_);
    layout->addWidget(fält_, 1);
    layout->addLayout(target);
    layout->addLayout(buttons);
}

void MaskSampleWindow::setSizes() {
    constexpr int kWidth = 960, kHeight = 600, kLines = 6, kTargetLetters = 34, kRecordLetters = 16;
    const QFontMetrics metrics = fontMetrics();
    for (int column = 0; const Column& each : kColumns) {
        fält_->setColumnWidth(column++, each.letters * metrics.averageCharWidth());
    }
    fält_->horizontalHeader()->setStretchLastSection(true);
    fält_->setMinimumHeight(kLines * metrics.lineSpacing());
    fält_->verticalHeader()->setDefaultSectionSize(metrics.lineSpacing() + metrics.lineSpacing() / 3);
    if (poster_ != nullptr) {
        poster_->setMinimumHeight(kLines * metrics.lineSpacing());
        // Number and column: not every style gives a header of two lines its height.
        const int margin = style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, poster_);
        poster_->horizontalHeader()->setMinimumHeight(2 * (metrics.lineSpacing() + margin));
        poster_->horizontalHeader()->setDefaultSectionSize(kRecordLetters * metrics.averageCharWidth());
        poster_->verticalHeader()->setDefaultSectionSize(metrics.lineSpacing() + metrics.lineSpacing() / 3);
    }
    mål_->setMinimumWidth(kTargetLetters * metrics.averageCharWidth());
    // Room for two lines, so that nothing jumps when there is something to say.
    for (QLabel* sentence : {produkt_, påpekande_}) sentence->setMinimumHeight(2 * metrics.lineSpacing());
    resize(kWidth, kHeight);
}

void MaskSampleWindow::connectRecords() {
    connect(föregående_, &QPushButton::clicked, this, [this] { stepRecord(-1); });
    connect(nästa_, &QPushButton::clicked, this, [this] { stepRecord(1); });
    if (linjal_ != nullptr) {
        connect(gränser_, &QPushButton::clicked, this, [this] {
            sample_.suggestBoundaries();
            present();
        });
        linjal_->picked = [this](int byte) {
            sample_.choosePieceAt(byte);
            presentChoice();
        };
        linjal_->toggled = [this](int byte) {
            sample_.toggleBoundary(byte);
            present();
        };
        linjal_->moved = [this](int from, int to) {
            sample_.moveBoundary(from, to);
            present();
        };
        linjal_->linePicked = [this](int line) {
            sample_.chooseRecord(line);
            present();
        };
        return;
    }
    connect(poster_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this](const QModelIndex& current) {
        if (presenting_ || !current.isValid()) return;
        sample_.chooseField(current.column());
        if (current.row() != sample_.record()) {
            sample_.chooseRecord(current.row());
            present();
        } else {
            presentChoice();
        }
    });
    actOnEnter(*poster_, [this] { anta_->click(); });
}

void MaskSampleWindow::stepRecord(int step) {
    sample_.chooseRecord(sample_.record() + step);
    present();
}

void MaskSampleWindow::connectFields() {
    connect(fält_, &QTableWidget::currentCellChanged, this, [this](int row) {
        sample_.choose(row);
        presentChoice();
    });
    connect(mål_, &QComboBox::activated, this, [this](int row) {
        sample_.setTarget(row);
        present();
    });
    connect(anta_, &QPushButton::clicked, this, [this] {
        sample_.accept();
        present();
    });
    connect(antaAlla_, &QPushButton::clicked, this, [this] {
        sample_.acceptAll();
        present();
    });
    connect(stäng_, &QPushButton::clicked, this, [this] { accept(); });
    actOnEnter(*fält_, [this] { anta_->click(); });
}

// The one place that fills, enables and hides.
void MaskSampleWindow::present() {
    presentRecords();
    presentFields();
    presentChoice();
}

void MaskSampleWindow::presentRecords() {
    post_->setText(toQt(sample_.recordText()));
    produkt_->setText(toQt(sample_.productText()));
    föregående_->setEnabled(sample_.hasRecord(sample_.record() - 1));
    nästa_->setEnabled(sample_.hasRecord(sample_.record() + 1));
    if (records_ != nullptr) records_->refresh();
}

void MaskSampleWindow::presentFields() {
    const QSignalBlocker quiet(fält_);
    fält_->setRowCount(static_cast<int>(sample_.rows().size()));
    QFont suggested = fält_->font();
    suggested.setItalic(true);
    for (int row = 0; const Row& each : sample_.rows()) {
        for (int column = 0; const Column& cell : kColumns) {
            auto* item = new QTableWidgetItem(toQt(each.*cell.text));
            if (each.suggestion >= 0) item->setFont(suggested);
            if (each.suggestion >= 0 && cell.text == &Row::target) item->setText(item->text() + '?');
            fält_->setItem(row, column++, item);
        }
        ++row;
    }
    antaAlla_->setEnabled(sample_.suggestions() > 0);
}

void MaskSampleWindow::presentChoice() {
    const int row = sample_.chosen();
    {
        const QSignalBlocker quiet(fält_);
        if (row != fält_->currentRow()) fält_->setCurrentCell(row, 0);
    }
    {
        const QSignalBlocker quiet(mål_);
        mål_->setCurrentIndex(sample_.chosenTarget());
    }
    mål_->setEnabled(row >= 0);
    anta_->setEnabled(sample_.canAccept());
    påpekande_->setText(toQt(sample_.remark()));
    if (row < 0) return;
    const Row& chosen = sample_.rows()[static_cast<std::size_t>(row)];
    if (linjal_ != nullptr) {
        linjal_->show(sample_.ruler(), chosen.piece, sample_.record());
        return;
    }
    // The table needs its own signals: only what this window makes of them is left out.
    presenting_ = true;
    const QModelIndex cell = records_->index(sample_.record(), chosen.source - 1);
    poster_->setCurrentIndex(cell);
    if (cell.isValid()) poster_->scrollTo(cell);
    presenting_ = false;
}

}  // namespace kolmera
