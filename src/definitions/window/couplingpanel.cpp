#include "definitions/window/couplingpanel.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>

#include "ui/controls.h"
#include "ui/keys.h"
#include "ui/lists.h"
#include "ui/qttext.h"
#include "ui/searchbox.h"

namespace kolmera {
namespace {

const std::vector<int> kTabStops{90, 104, 186, 196};  ///< dialog units

}  // namespace

CouplingPanel::CouplingPanel(Program& program, CouplingEditor& couplings, int listLines, QWidget* parent)
    : QGroupBox(QStringLiteral("Leverantörskopplingar"), parent), couplings_(couplings) {
    setObjectName(QStringLiteral("LevPanel"));
    buildControls(program);
    layOut(listLines);
    connectBoxes();
    connectButtons();
}

void CouplingPanel::buildControls(Program& program) {
    levLista_ = named(new QListWidget(this), "LevLista");
    levLista_->setToolTip(QStringLiteral("Leverantörskopplingar"));
    levLista_->setUniformItemSizes(true);
    setTabStops(*levLista_, kTabStops);
    installEnterSomTabOn(*levLista_);
    sökLev_ = searchBoxOf(program, *levLista_, *this, "SökLev");
    setTabOrder(sökLev_, levLista_);
    lblLevKod_ = label(*this, "Lbl_LevKod", "Ko&d i prisfilen");
    levKod_ = named(new QLineEdit(this), "LevKod");
    lblLevNummer_ = label(*this, "Lbl_LevNummer", "Leverantörsn&ummer");
    levNummer_ = named(new QLineEdit(this), "LevNummer");
    levNamn_ = named(new QLabel(this), "LevNamn");
    levNamn_->setTextFormat(Qt::PlainText);
    lblLevKod_->setBuddy(levKod_);
    lblLevNummer_->setBuddy(levNummer_);
    huvudLev_ = named(new QCheckBox(QStringLiteral("&Huvudleverantör"), this), "HuvudLev");
    sparaLev_ = button(*this, "SparaLev", "F7 - Spara lev.");
    avbrytLev_ = button(*this, "AvbrytLev", "F8 - Avbryt lev.");
    taBortLev_ = button(*this, "TaBortLev", "F9 - Ta bort lev.");
}

void CouplingPanel::layOut(int listLines) {
    levLista_->setMinimumHeight(listLines * fontMetrics().lineSpacing());
    auto* buttons = new QHBoxLayout;
    for (QPushButton* each : {sparaLev_, avbrytLev_, taBortLev_}) buttons->addWidget(each);
    buttons->addStretch(1);
    auto* grid = new QGridLayout(this);
    grid->addWidget(sökLev_, 0, 2);
    grid->addWidget(levLista_, 1, 0, 1, 3);
    grid->addWidget(lblLevKod_, 2, 0);
    grid->addWidget(levKod_, 3, 0);
    grid->addWidget(lblLevNummer_, 2, 1);
    grid->addWidget(levNummer_, 3, 1);
    grid->addWidget(levNamn_, 3, 2);
    grid->addWidget(huvudLev_, 4, 0, 1, 3);
    grid->addLayout(buttons, 5, 0, 1, 3);
    grid->setRowStretch(1, 1);
    for (const int column : {0, 1, 2}) grid->setColumnStretch(column, 1);
}

void CouplingPanel::connectBoxes() {
    for (QLineEdit* box : {levKod_, levNummer_}) {
        connect(box, &QLineEdit::editingFinished, this, [this] { leaveBoxes(); });
    }
    const auto choose = [this] {
        couplings_.choose(levLista_->currentRow());
        presentBoxes();
    };
    connect(levLista_, &QListWidget::currentRowChanged, this, choose);
    // A click on the selected coupling loads it again.
    connect(levLista_, &QListWidget::itemClicked, this, choose);
}

void CouplingPanel::connectButtons() {
    connect(sparaLev_, &QPushButton::clicked, this, [this] {
        leaveBoxes();  // F7 leaves the focus where it is
        takeBoxes();
        const bool saved = couplings_.save();
        present();
        if (saved) levKod_->setFocus();
    });
    connect(avbrytLev_, &QPushButton::clicked, this, [this] {
        couplings_.cancel();
        presentBoxes();
        levKod_->setFocus();
    });
    connect(taBortLev_, &QPushButton::clicked, this, [this] {
        couplings_.remove();
        present();
    });
}

void CouplingPanel::installKeys(QWidget& form) {
    pressOnKey(form, QKeySequence(Qt::Key_F7), *sparaLev_);
    pressOnKey(form, QKeySequence(Qt::Key_F8), *avbrytLev_);
    pressOnKey(form, QKeySequence(Qt::Key_Escape), *avbrytLev_);
    pressOnKey(form, QKeySequence(Qt::Key_F9), *taBortLev_);
    focusOnAltL(form, *levLista_);
    sökLev_->takeFindKey(form);
}

/// Looks up what was typed since the last time.
void CouplingPanel::leaveBoxes() {
    const bool code = levKod_->isModified(), supplier = levNummer_->isModified();
    if (!code && !supplier) return;
    takeBoxes();
    if (code) couplings_.codeEntered();
    if (supplier) couplings_.supplierEntered();
    presentBoxes();
}

void CouplingPanel::takeBoxes() {
    couplings_.code = fromQt(levKod_->text());
    couplings_.supplier = fromQt(levNummer_->text());
    couplings_.mainSupplier = huvudLev_->isChecked();
}

void CouplingPanel::present() {
    presentList();
    presentBoxes();
}

void CouplingPanel::presentList() {
    const QSignalBlocker quiet(levLista_);
    levLista_->clear();
    for (const CouplingEditor::Row& row : couplings_.rows()) {
        auto* item = new QListWidgetItem(toQt(row.text), levLista_);
        item->setData(kIdRole, row.coupling.number);
    }
}

void CouplingPanel::presentBoxes() {
    {
        const QSignalBlocker quiet(levLista_);
        selectRow(*levLista_, couplings_.chosen());
    }
    levKod_->setText(toQt(couplings_.code));
    levNummer_->setText(toQt(couplings_.supplier));
    levNamn_->setText(toQt(couplings_.searchName()));
    huvudLev_->setChecked(couplings_.mainSupplier);
}

}  // namespace kolmera
