#include "import/window/firststepspanel.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

#include "ui/controls.h"

namespace kolmera {

FirstStepsPanel::FirstStepsPanel(QWidget& form) : QFrame(&form) {
    setObjectName(QStringLiteral("FörstaStegen"));
    setFrameShape(QFrame::StyledPanel);
    QLabel* heading = label(*this, "StegRubrik", "Innan den första prisfilen kan läsas in");
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    hide_ = button(*this, "StegDölj", "Dölj");
    connect(hide_, &QPushButton::clicked, this, [this] {
        hidden_ = true;
        hide();
    });
    auto* grid = new QGridLayout(this);
    grid->addWidget(heading, 0, 0, 1, 2);
    const auto step = [&](const char* name, const char* caption, const char* text, std::function<void()>& act,
                          QLabel*& mark) {
        const int row = grid->rowCount();
        mark = new QLabel(QString::number(row), this);
        auto* told = label(*this, ("Lbl_" + std::string(name)).c_str(), text);
        told->setWordWrap(true);
        auto* made = button(*this, name, caption);
        made->setAccessibleDescription(told->text());
        connect(made, &QPushButton::clicked, this, [&act] { act(); });
        grid->addWidget(mark, row, 0);
        grid->addWidget(told, row, 1);
        grid->addWidget(made, row, 2);
        return made;
    };
    QLabel* mark = nullptr;
    suppliers_ =
        step("StegLeverantör", "Leverantörer...", "Lägg in leverantören, med sitt nummer.", onSuppliers, supplierMark_);
    letters_ =
        step("StegRabattbrev", "Rabattbrev...",
             "Har du rabattbrev hos leverantören: lägg in rabatterna, eller läs dem ur en fil.", onLetters, mark);
    newJob_ = step("StegInläsning", "Ny inläsning...", "Gör en inläsning av leverantörens prisfil.", onNewJob, mark);
    couplings_ = step("StegKoppling", "Kopplingar...",
                      "Är filen i formatet EIO, RSK eller FINFO: koppla i stället koderna i filen till leverantören.",
                      onCouplings, mark);
    mark->setText(QStringLiteral("(3)"));
    grid->addWidget(hide_, 0, 2);
    grid->setColumnStretch(1, 1);
    for (QPushButton* each : {suppliers_, letters_, newJob_, couplings_, hide_}) each->setAutoDefault(false);
}

void FirstStepsPanel::goOnTo(QWidget& next) const { setTabOrder(couplings_, &next); }

void FirstStepsPanel::present(const FirstSteps& steps, bool enabled) {
    supplierMark_->setText(steps.supplier ? QStringLiteral("\u2713") : QStringLiteral("1"));
    for (QPushButton* each : {suppliers_, letters_, newJob_, couplings_}) each->setEnabled(enabled);
    setVisible(steps.todo && !hidden_);
}

}  // namespace kolmera
