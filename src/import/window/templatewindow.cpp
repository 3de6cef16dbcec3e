#include "import/window/templatewindow.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>

#include "lang/keys/jobtemplate.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/qttext.h"

namespace kolmera {

TemplateWindow::TemplateWindow(Program& program, TemplateImport& wanted, QWidget* parent)
    : QDialog(parent),
      program_(program),
      wanted_(wanted),
      companies_(companyList(program.companies, program.state.dataFolder())) {
    setObjectName(QStringLiteral("TemplateWindow"));
    setWindowTitle(QStringLiteral("Öppna mall"));
    build();
    layOut();
    loadForm(program_, *this);
    namn_->setText(toQt(wanted_.job().name));
    for (const Company& company : companies_) företag_->addItem(toQt(company.name + "  " + company.database));
    företag_->setCurrentIndex(placeOfDatabase(companies_, wanted_.company()));
    connect(namn_, &QLineEdit::textEdited, this, [this](const QString& text) {
        hasName_ = wanted_.setName(fromQt(text));
        skrivÖver_->setChecked(false);
        present();
    });
    connect(företag_, &QComboBox::activated, this, [this](int place) {
        wanted_.setCompany(companies_.at(static_cast<std::size_t>(place)).database);
        takeCompany();
    });
    connect(skrivÖver_, &QCheckBox::toggled, this, [this] { present(); });
    connect(ok_, &QPushButton::clicked, this, [this] { accept(); });
    connect(avbryt_, &QPushButton::clicked, this, [this] { reject(); });
    takeCompany();
}

void TemplateWindow::build() {
    lblNamn_ = label(*this, "Lbl_Namn", "&Inläsningens namn här");
    namn_ = named(new QLineEdit(this), "Namn");
    lblNamn_->setBuddy(namn_);
    lblFöretag_ = label(*this, "Lbl_Företag", "&Företag");
    företag_ = named(new QComboBox(this), "Företag");
    lblFöretag_->setBuddy(företag_);
    skrivs_ = named(new QLabel(this), "Skrivs");
    skrivs_->setTextFormat(Qt::PlainText);
    skrivs_->setWordWrap(true);
    skrivÖver_ = named(new QCheckBox(QStringLiteral("&Skriv över"), this), "SkrivÖver");
    ok_ = button(*this, "OK", "&OK");
    ok_->setDefault(true);
    avbryt_ = button(*this, "Avbryt", "&Avbryt");
}

void TemplateWindow::layOut() {
    constexpr int kLetters = 70, kLinesOfSuppliers = 12;
    auto* grid = new QGridLayout(this);
    grid->addWidget(lblNamn_, 0, 0);
    grid->addWidget(namn_, 0, 1);
    grid->addWidget(lblFöretag_, 1, 0);
    grid->addWidget(företag_, 1, 1);
    if (!wanted_.suppliers().empty()) {
        auto* scrolled = new QScrollArea(this);
        auto* suppliers = new QWidget(scrolled);
        buildSuppliers(*new QGridLayout(suppliers));
        scrolled->setWidget(suppliers);
        scrolled->setWidgetResizable(true);
        scrolled->setMaximumHeight(kLinesOfSuppliers * 2 * fontMetrics().lineSpacing());
        grid->addWidget(scrolled, 2, 0, 1, 2);
    }
    grid->addWidget(skrivs_, 3, 0, 1, 2);
    grid->addWidget(skrivÖver_, 4, 0, 1, 2);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok_);
    buttons->addWidget(avbryt_);
    grid->addLayout(buttons, 5, 0, 1, 2);
    grid->setColumnStretch(1, 1);
    setMinimumWidth(kLetters * fontMetrics().averageCharWidth());
}

/// A field a supplier, for the number here.
void TemplateWindow::buildSuppliers(QGridLayout& grid) {
    for (std::size_t place = 0; place < wanted_.suppliers().size(); ++place) {
        const TemplateImport::Supplier& supplier = wanted_.suppliers()[place];
        QWidget& parent = *grid.parentWidget();
        SupplierField field{.caption = new QLabel(&parent),
                            .number = named(new QLineEdit(&parent), "Leverantör"),
                            .name = new QLabel(&parent)};
        field.caption->setTextFormat(Qt::PlainText);
        field.caption->setText(toQt(program_.texts.ModulTextMed(text::jobtemplate::kSupplierOfTemplate,
                                                                supplier.number + " " + supplier.name)));
        field.number->setAccessibleName(field.caption->text());
        field.name->setTextFormat(Qt::PlainText);
        const int line = static_cast<int>(place);
        grid.addWidget(field.caption, line, 0);
        grid.addWidget(field.number, line, 1);
        grid.addWidget(field.name, line, 2);
        connect(field.number, &QLineEdit::textEdited, this, [this, place](const QString& text) {
            wanted_.setSupplier(place, fromQt(text.trimmed()));
            present();
        });
        suppliers_.push_back(field);
    }
}

/// Where another number has the name, it is proposed, to be seen before it counts.
void TemplateWindow::takeCompany() {
    hasCompany_ = !wanted_.company().empty();
    if (hasCompany_ && !wanted_.suppliers().empty())
        hasCompany_ = wanted_.lookAtCompany(program_.companies, program_.state.sql);
    for (std::size_t place = 0; place < suppliers_.size(); ++place) {
        std::string number = wanted_.suppliers()[place].here;
        if (number.empty()) number = wanted_.numberOfName(place);
        wanted_.setSupplier(place, number);
        suppliers_[place].number->setText(toQt(number));
    }
    present();
}

// The one place that fills and enables.
void TemplateWindow::present() {
    const std::vector<std::string>& over = wanted_.writesOver();
    skrivs_->setVisible(!over.empty());
    skrivÖver_->setVisible(!over.empty());
    if (!over.empty())
        skrivs_->setText(toQt(
            program_.texts.ModulTextMed(text::jobtemplate::kWritesOver, fmt::format("{}", fmt::join(over, ", ")))));
    for (std::size_t place = 0; place < suppliers_.size(); ++place) {
        const std::string& here = wanted_.suppliers()[place].here;
        const std::string none = here.empty() ? program_.texts.ModulText(text::jobtemplate::kChooseSupplier) : "";
        suppliers_[place].name->setText(toQt(wanted_.nameHere(here).value_or(none)));
    }
    const bool mayWrite = over.empty() || skrivÖver_->isChecked();
    ok_->setEnabled(hasName_ && hasCompany_ && wanted_.knowsSuppliers() && mayWrite);
}

}  // namespace kolmera
