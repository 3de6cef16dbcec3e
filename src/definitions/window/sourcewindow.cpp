#include "definitions/window/sourcewindow.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QTableWidget>
#include <QTimer>
#include <algorithm>

#include "definitions/convertedsample.h"
#include "definitions/leftouteditor.h"
#include "definitions/window/columnswindow.h"
#include "definitions/window/leftoutwindow.h"
#include "definitions/window/propertygrid.h"
#include "lang/errortext.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kMostColumns = 256;

void removeAll(QLayout& layout) {
    while (QLayoutItem* item = layout.takeAt(0)) {
        delete item->widget();
        delete item;
    }
}

}  // namespace

SourceWindow::SourceWindow(Program& program, SourceEditor& editor, bool converts,
                           std::function<TargetLayout(std::size_t columns)> target, QWidget* parent)
    : QDialog(parent),
      program_(program),
      editor_(editor),
      before_(editor.settings()),
      convertedBefore_(converts),
      target_(std::move(target)) {
    constexpr int kWidth = 960, kHeight = 600;
    setObjectName(QStringLiteral("SourceWindow"));
    setWindowTitle(QStringLiteral("Prisfilens format"));
    build();
    layOut();
    loadForm(program_, *this);
    omvandla_->setChecked(converts);
    connect(omvandla_, &QCheckBox::toggled, this, [this] { present(); });
    egenskaper_->changed = [this](int name, int choice, const std::string& typed) {
        change([&] {
            if (choice >= 0) {
                editor_.choose(static_cast<SourceProperty>(name), choice);
            } else {
                editor_.type(static_cast<SourceProperty>(name), typed);
            }
        });
    };
    connect(kolumner_, &QPushButton::clicked, this, [this] { editColumns(); });
    connect(utelämnade_, &QPushButton::clicked, this, [this] { editLeftOut(); });
    connect(ok_, &QPushButton::clicked, this, [this] {
        egenskaper_->commit();
        accept();
    });
    connect(avbryt_, &QPushButton::clicked, this, [this] { QDialog::reject(); });
    resize(kWidth, kHeight);
    present();
}

// Esc and the window's own button; "Avbryt" says what it does.
void SourceWindow::reject() {
    egenskaper_->commit();
    const bool changed = omvandla_->isChecked() != convertedBefore_ || !(editor_.settings() == before_);
    if (changed && !leaveUnsaved(program_)) return;
    QDialog::reject();
}

bool SourceWindow::converts() const { return omvandla_->isChecked() && editor_.error().empty(); }

void SourceWindow::build() {
    ord_ = new QLabel(this);
    ord_->setTextFormat(Qt::PlainText);
    ord_->setWordWrap(true);
    ord_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    omvandla_ = named(new QCheckBox(QStringLiteral("O&mvandla filen så här innan masken läser den"), this), "Omvandla");
    egenskaper_ = new PropertyGrid(program_, this);
    lblRader_ = label(*this, "Lbl_Rader", "&Rader i tabellen");
    rader_ = named(new QTableWidget(this), "Rader");
    rader_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    rader_->setTabKeyNavigation(false);
    rader_->setWordWrap(false);
    rader_->verticalHeader()->setDefaultSectionSize(fontMetrics().lineSpacing() + fontMetrics().lineSpacing() / 3);
    lblRader_->setBuddy(rader_);
    tolkningar_ = named(new QGroupBox(QStringLiteral("Teckenuppsättningen är osäker: välj den som läser rätt"), this),
                        "Tolkningar");
    new QHBoxLayout(tolkningar_);
    kolumner_ = button(*this, "Kolumner", "&Kolumner och värden...");
    utelämnade_ = button(*this, "Utelämnade", "Rader som &utelämnas...");
    ok_ = button(*this, "OK", "&OK");
    ok_->setDefault(true);
    avbryt_ = button(*this, "Avbryt", "&Avbryt");
}

void SourceWindow::layOut() {
    constexpr int kLetters = 66;
    auto* scrolled = new QScrollArea(this);
    scrolled->setWidget(egenskaper_);
    scrolled->setWidgetResizable(true);
    scrolled->setFrameShape(QFrame::NoFrame);
    scrolled->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrolled->setFixedWidth(kLetters * fontMetrics().averageCharWidth());
    scrolled->setFocusPolicy(Qt::NoFocus);
    auto* table = new QVBoxLayout;
    table->addWidget(lblRader_);
    table->addWidget(rader_, 1);
    auto* middle = new QHBoxLayout;
    middle->addWidget(scrolled);
    middle->addLayout(table, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(kolumner_);
    buttons->addWidget(utelämnade_);
    buttons->addStretch(1);
    buttons->addWidget(ok_);
    buttons->addWidget(avbryt_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(ord_);
    layout->addWidget(omvandla_);
    layout->addLayout(middle, 1);
    layout->addWidget(tolkningar_);
    layout->addLayout(buttons);
}

// The one place that fills, enables and hides.
void SourceWindow::present() {
    ord_->setText(toQt(editor_.words()));
    const bool readable = editor_.error().empty();
    omvandla_->setEnabled(readable);
    ok_->setEnabled(readable);  // what the job has would go with it
    egenskaper_->show(editor_.properties(), omvandla_->isChecked(), *omvandla_, *rader_);
    for (QPushButton* more : {kolumner_, utelämnade_}) more->setEnabled(readable && omvandla_->isChecked());
    presentRows();
    presentDecodings();
}

void SourceWindow::change(const std::function<void()>& change) {
    {
        const Hourglass reading(program_.boxes.port());
        change();
    }
    present();
}

void SourceWindow::editColumns() {
    egenskaper_->commit();
    try {
        const SourceSettings settings = editor_.settings();
        const std::size_t count = std::max(editor_.columns(), columnsNamed(settings.columns));
        ColumnEditor columns(program_.texts, editor_.file(), settings, target_(count));
        ColumnsWindow form(program_, columns, this);
        VisaFormulär(program_, form, true);
        if (form.result() == QDialog::Accepted) editor_.takeColumns(columns.settings().columns);
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(errorText(program_.texts, error));
    }
    present();
}

void SourceWindow::editLeftOut() {
    egenskaper_->commit();
    try {
        LeftOutEditor rows(program_.texts, editor_.file(), editor_.settings());
        LeftOutWindow form(program_, rows, this);
        VisaFormulär(program_, form, true);
        if (form.result() == QDialog::Accepted) editor_.takeLeftOut(rows.patterns());
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(errorText(program_.texts, error));
    }
    present();
}

void SourceWindow::presentRows() {
    constexpr int kLetters = 16;
    const auto& rows = editor_.rows();
    const bool headings = !rows.empty() && editor_.format().headings;
    const std::size_t first = headings ? 1 : 0;
    const int columns = std::min(static_cast<int>(editor_.columns()), kMostColumns);
    rader_->clear();
    rader_->setColumnCount(columns);
    rader_->setRowCount(static_cast<int>(rows.size() - std::min(first, rows.size())));
    rader_->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    rader_->horizontalHeader()->setDefaultSectionSize(kLetters * fontMetrics().averageCharWidth());
    for (int column = 0; column < columns; ++column) {
        const auto place = static_cast<std::size_t>(column);
        QString caption = QString::number(column + 1);
        if (headings && place < rows.front().cells.size()) caption += " " + toQt(rows.front().cells[place]);
        rader_->setHorizontalHeaderItem(column, new QTableWidgetItem(caption));
    }
    for (std::size_t row = first; row < rows.size(); ++row) {
        const int line = static_cast<int>(row - first);
        rader_->setVerticalHeaderItem(line, new QTableWidgetItem(QString::number(rows[row].number)));
        for (int column = 0; column < columns; ++column) {
            const auto place = static_cast<std::size_t>(column);
            if (place >= rows[row].cells.size()) break;
            rader_->setItem(line, column, new QTableWidgetItem(toQt(rows[row].cells[place]).simplified()));
        }
    }
}

void SourceWindow::presentDecodings() {
    auto& layout = *tolkningar_->layout();
    removeAll(layout);
    const auto& decodings = editor_.decodings();
    tolkningar_->setVisible(omvandla_->isChecked() && !decodings.empty());
    for (const SourceEditor::Decoding& decoding : decodings) {
        QString text = toQt(decoding.name);
        for (const std::string& line : decoding.lines) text += "\n" + toQt(line).simplified().left(40);
        auto* choice = new QPushButton(text.replace("&", "&&"), tolkningar_);
        choice->setObjectName("Tolkning_" + toQt(decoding.name));
        choice->setStyleSheet(QStringLiteral("text-align: left"));
        choice->setAutoDefault(false);
        // The button goes with the others, so not before it has done.
        connect(choice, &QPushButton::clicked, this, [this, set = decoding.characters] {
            QTimer::singleShot(0, this, [this, set] { change([&] { editor_.chooseCharacters(set); }); });
        });
        layout.addWidget(choice);
    }
}

}  // namespace kolmera
