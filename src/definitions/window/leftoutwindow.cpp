#include "definitions/window/leftoutwindow.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <algorithm>

#include "lang/keys/leftoutrows.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/lists.h"
#include "ui/qttext.h"

namespace kolmera {

LeftOutWindow::LeftOutWindow(Program& program, LeftOutEditor& editor, QWidget* parent)
    : QDialog(parent), program_(program), editor_(editor), before_(editor.patterns()) {
    constexpr int kWidth = 720, kHeight = 560;
    setObjectName(QStringLiteral("LeftOutWindow"));
    setWindowTitle(QStringLiteral("Rader som utelämnas"));
    build();
    layOut();
    installEnterSomTabOn(*kolumn_);
    loadForm(program_, *this);
    for (const std::string& column : editor_.columns()) kolumn_->addItem(toQt(column));
    connect(mönster_, &QListWidget::currentRowChanged, this, [this](int row) { taBort_->setEnabled(row >= 0); });
    connect(text_, &QLineEdit::returnPressed, läggTill_, &QPushButton::click);
    connect(läggTill_, &QPushButton::clicked, this, [this] {
        if (editor_.add(kolumn_->currentIndex(), fromQt(text_->text()))) text_->clear();
        present();
        text_->setFocus();
    });
    connect(taBort_, &QPushButton::clicked, this, [this] {
        editor_.remove(mönster_->currentRow());
        present();
        mönster_->setFocus();
    });
    connect(föreslå_, &QPushButton::clicked, this, [this] {
        if (!editor_.suggest())
            program_.boxes.MeddelandeInfo(program_.texts.ModulText(text::leftoutrows::kNothingToSuggest));
        present();
    });
    connect(ok_, &QPushButton::clicked, this, [this] {
        // What is typed counts; it is shown first, with the rows that it leaves out.
        if (!editor_.add(kolumn_->currentIndex(), fromQt(text_->text()))) return accept();
        text_->clear();
        present();
        ok_->setFocus();
    });
    connect(avbryt_, &QPushButton::clicked, this, [this] { QDialog::reject(); });
    resize(kWidth, kHeight);
    present();
    text_->setFocus();
}

// Esc and the window's own button; "Avbryt" says what it does.
void LeftOutWindow::reject() {
    const bool changed = editor_.patterns() != before_ || !text_->text().isEmpty();
    if (changed && !leaveUnsaved(program_)) return;
    QDialog::reject();
}

void LeftOutWindow::build() {
    ledtext_ = label(*this, "Ledtext",
                     "Tomma rader utelämnas alltid. En rad utelämnas också när en cell är det som ett mönster säger; "
                     "* står för vilka tecken som helst och ? för ett tecken.");
    ledtext_->setWordWrap(true);
    lblMönster_ = label(*this, "Lbl_Mönster", "&Mönster, och hur många rader de utelämnar");
    mönster_ = named(new QListWidget(this), "Mönster");
    lblMönster_->setBuddy(mönster_);
    lblKolumn_ = label(*this, "Lbl_Kolumn", "&Kolumn");
    kolumn_ = named(new QComboBox(this), "Kolumn");
    lblKolumn_->setBuddy(kolumn_);
    lblText_ = label(*this, "Lbl_Text", "&Nytt mönster");
    text_ = named(new QLineEdit(this), "Text");
    lblText_->setBuddy(text_);
    läggTill_ = button(*this, "LäggTill", "&Lägg till");
    taBort_ = button(*this, "TaBort", "&Ta bort");
    föreslå_ = button(*this, "Föreslå", "&Föreslå");
    lblRader_ = new QLabel(this);
    rader_ = named(new QListWidget(this), "Rader");
    rader_->setUniformItemSizes(true);
    lblRader_->setBuddy(rader_);
    ok_ = button(*this, "OK", "&OK");
    avbryt_ = button(*this, "Avbryt", "&Avbryt");
    // Enter adds what is typed.
    for (QPushButton* each : {läggTill_, taBort_, föreslå_, ok_, avbryt_}) each->setAutoDefault(false);
}

void LeftOutWindow::layOut() {
    auto* grid = new QGridLayout(this);
    grid->addWidget(ledtext_, 0, 0, 1, 3);
    grid->addWidget(lblMönster_, 1, 0, 1, 2);
    grid->addWidget(mönster_, 2, 0, 2, 2);
    grid->addWidget(taBort_, 2, 2, Qt::AlignTop);
    grid->addWidget(föreslå_, 3, 2, Qt::AlignTop);
    grid->addWidget(lblKolumn_, 4, 0);
    grid->addWidget(lblText_, 4, 1);
    grid->addWidget(kolumn_, 5, 0);
    grid->addWidget(text_, 5, 1);
    grid->addWidget(läggTill_, 5, 2);
    grid->addWidget(lblRader_, 6, 0, 1, 3);
    grid->addWidget(rader_, 7, 0, 1, 3);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok_);
    buttons->addWidget(avbryt_);
    grid->addLayout(buttons, 8, 0, 1, 3);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(3, 1);
    grid->setRowStretch(7, 2);
    for (auto& [before, behind] : std::initializer_list<std::pair<QWidget*, QWidget*>>{{mönster_, taBort_},
                                                                                       {taBort_, föreslå_},
                                                                                       {föreslå_, kolumn_},
                                                                                       {kolumn_, text_},
                                                                                       {text_, läggTill_},
                                                                                       {läggTill_, rader_},
                                                                                       {rader_, ok_},
                                                                                       {ok_, avbryt_}})
        setTabOrder(before, behind);
}

// The one place that fills and enables.
void LeftOutWindow::present() {
    const int row = mönster_->currentRow();
    mönster_->clear();
    for (const std::string& line : editor_.lines()) mönster_->addItem(toQt(line));
    selectRow(*mönster_, std::min(row, mönster_->count() - 1));
    taBort_->setEnabled(mönster_->currentRow() >= 0);
    rader_->clear();
    for (const auto& [number, text] : editor_.leftOut())
        rader_->addItem(QStringLiteral("%1  ").arg(number) + toQt(text).simplified());
    lblRader_->setText(toQt(editor_.summary()));
    rader_->setAccessibleName(lblRader_->text().remove('&'));
}

}  // namespace kolmera
