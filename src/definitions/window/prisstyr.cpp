#include "definitions/window/prisstyr.h"

#include <QAction>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeView>

#include "definitions/savemessages.h"
#include "definitions/sourceeditor.h"
#include "definitions/window/couplingpanel.h"
#include "definitions/window/limitswindow.h"
#include "definitions/window/prismtyp.h"
#include "definitions/window/sourcewindow.h"
#include "definitions/window/suppliermodel.h"
#include "lang/keys/prisstyr.h"
#include "ui/commands.h"
#include "ui/controls.h"
#include "ui/filedialogs.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/lists.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kCouplingLines = 11, kCouplingLinesOfFinfo = 4;
const std::vector<int> kCompanyTabStops{208};  ///< dialog units

// Without a length: what is pasted must not be cut unseen. Saving checks it.
QLineEdit* field(QWidget& parent, const char* name, QLabel& caption) {
    auto* made = named(new QLineEdit(&parent), name);
    caption.setBuddy(made);
    return made;
}

QString withoutMarks(QString caption) { return caption.remove('&').remove(QStringLiteral("...")); }

void select(QListWidget& list, int row) {
    const QSignalBlocker quiet(list);
    selectRow(list, row);
}

}  // namespace

PrisStyr::PrisStyr(Program& program, int JobbNr, bool ÄrStandardJobb, QWidget* parent)
    : QDialog(parent), program_(program), job_(program.state, program.texts, program.boxes, program.companies) {
    const Hourglass loading(program.boxes.port());
    chooseFile = [this](const QString& title, const QString& filter) {
        FileQuestion question;
        question.title = title;
        question.filters = filter;
        question.path = toQt(job_.fileFolder().string());
        // Beside the price file, where the job has one; else where the last one was.
        return askForFileToOpen(this, question, job_.job.priceFile.empty() ? program_.memory : nullptr);
    };
    setObjectName(QStringLiteral("PrisStyr"));
    setWindowTitle(QStringLiteral("Ny inläsning"));
    job_.open(JobbNr, ÄrStandardJobb);
    buildFiles();
    buildMasks();
    buildCompany();
    buildFinfo();
    levPanel_ =
        new CouplingPanel(program_, job_.couplings, job_.isFinfo() ? kCouplingLinesOfFinfo : kCouplingLines, this);
    buildButtons();
    layOut();
    installEnterSomTab(*this);
    loadForm(program_, *this);
    nameButtonActions(*this);
    supplierLabel_ = lblLevLista_->text();
    setSizes();
    showJob();
    connectFiles();
    connectMasks();
    connectCompany();
    connectFinfo();
    connectKeys();
    present();
}

// A box that loses the focus with the window must still find what it belongs to.
PrisStyr::~PrisStyr() { hide(); }

void PrisStyr::buildFiles() {
    lblNamn_ = label(*this, "Lbl_Namn", "&Namn på inläsning");
    namn_ = field(*this, "Namn", *lblNamn_);
    lblFilNamn_ = label(*this, "Lbl_FilNamn", "Sökväg och &filnamn vid inläsning");
    filNamn_ = field(*this, "FilNamn", *lblFilNamn_);
    väljFil_ = button(*this, "VäljFil", "&Välj fil...");
    lblKompFilNamn_ = label(*this, "Lbl_KompFilNamn", "Vid &komprimerad fil - ange namn vid expandering");
    kompFilNamn_ = field(*this, "KompFilNamn", *lblKompFilNamn_);
    kompFil_ = button(*this, "KompFil", "K&omprimerad fil...");
}

void PrisStyr::buildMasks() {
    lblMaskLista_ = label(*this, "Lbl_Mask_Lista", "Anv&änd mask");
    maskLista_ = named(new QListWidget(this), "Mask_Lista");
    maskLista_->setUniformItemSizes(true);
    lblMaskLista_->setBuddy(maskLista_);
    nyMask_ = button(*this, "NyMask", "&Ny mask...");
    öppnaMask_ = button(*this, "ÖppnaMask", "&Öppna mask...");
    taBortMask_ = button(*this, "TaBortMask", "&Ta bort mask...");
    kopieraMask_ = new QAction(QStringLiteral("&Duplicera mask"), this);
    kopieraMask_->setObjectName(QStringLiteral("KopieraMask"));
    kopieraMask_->setShortcut(Qt::CTRL | Qt::Key_D);
    maskLista_->setContextMenuPolicy(Qt::ActionsContextMenu);
    for (QPushButton* each : {nyMask_, öppnaMask_}) maskLista_->addAction(new ButtonAction(*each, *this, {}));
    maskLista_->addAction(kopieraMask_);
    maskLista_->addAction(new ButtonAction(*taBortMask_, *this, {}));
}

void PrisStyr::buildCompany() {
    lblFtgLista_ = label(*this, "Lbl_FTG_Lista", "&Till företag");
    ftgLista_ = named(new QListWidget(this), "FTG_Lista");
    setTabStops(*ftgLista_, kCompanyTabStops);
    installEnterSomTabOn(*ftgLista_);
    lblFtgLista_->setBuddy(ftgLista_);
    lblLevLista_ = label(*this, "Lbl_Lev_Lista", "Från &leverantör");
    levLista_ = named(new QTreeView(this), "Lev_Lista");
    suppliers_ = new SupplierModel(job_.suppliers(), this);
    levLista_->setModel(suppliers_);
    levLista_->setRootIsDecorated(false);
    levLista_->setUniformRowHeights(true);
    levLista_->setHeaderHidden(true);
    installEnterSomTabOn(*levLista_);
    lblLevLista_->setBuddy(levLista_);
}

void PrisStyr::buildFinfo() {
    varugrupper_ = new QWidget(this);
    auto* groups = new QHBoxLayout(varugrupper_);
    groups->setContentsMargins(0, 0, 0, 0);
    groups->addWidget(label(*varugrupper_, "Lbl_Varugrupp", "Varugrupper som läses in"));
    QLabel* from = label(*varugrupper_, "Lbl_FromGrp", "&Fr.o.m varugrupp");
    fromGrp_ = field(*varugrupper_, "FromGrp", *from);
    QLabel* to = label(*varugrupper_, "Lbl_TomGrp", "T.o.&m varugrupp");
    tomGrp_ = field(*varugrupper_, "TomGrp", *to);
    for (QWidget* control : {static_cast<QWidget*>(from), static_cast<QWidget*>(fromGrp_), static_cast<QWidget*>(to),
                             static_cast<QWidget*>(tomGrp_)}) {
        groups->addWidget(control);
    }
    groups->addStretch(1);

    altPanel_ = named(new QGroupBox(QStringLiteral("Alternativa produktnummer"), this), "AltPanel");
    auto* grid = new QGridLayout(altPanel_);
    QLabel* first = label(*altPanel_, "Lbl_CmbAltprodnr_1", "Mi&cronicnr till alt. prodnr");
    altprodnr1_ = named(new QComboBox(altPanel_), "CmbAltprodnr_1");
    first->setBuddy(altprodnr1_);
    QLabel* second = label(*altPanel_, "Lbl_CmbAltprodnr_2", "&EAN till alt. prodnr");
    altprodnr2_ = named(new QComboBox(altPanel_), "CmbAltprodnr_2");
    second->setBuddy(altprodnr2_);
    grid->addWidget(first, 0, 0);
    grid->addWidget(altprodnr1_, 0, 1);
    grid->addWidget(second, 1, 0);
    grid->addWidget(altprodnr2_, 1, 1);
    grid->setColumnStretch(1, 1);
}

void PrisStyr::buildButtons() {
    filformat_ = button(*this, "Filformat", "&Prisfilens format...");
    gränser_ = button(*this, "Gränser", "&Gränser...");
    spara_ = button(*this, "Spara", "&Spara");
    spara_->setDefault(true);
    avbryt_ = button(*this, "Avbryt", "&Avbryt");
}

void PrisStyr::layOut() {
    auto* files = new QGridLayout;
    layOutFiles(*files);
    auto* masks = new QGridLayout;
    masks->addWidget(lblMaskLista_, 0, 0);
    masks->addWidget(maskLista_, 1, 0, 4, 1);
    masks->addWidget(nyMask_, 1, 1);
    masks->addWidget(öppnaMask_, 2, 1);
    masks->addWidget(taBortMask_, 3, 1);
    masks->setRowStretch(4, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(filformat_);
    buttons->addWidget(gränser_);
    buttons->addStretch(1);
    buttons->addWidget(spara_);
    buttons->addWidget(avbryt_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(files);
    layout->addLayout(masks, job_.isTradeFormat() ? 0 : 3);
    layout->addWidget(lblFtgLista_);
    layout->addWidget(ftgLista_, job_.isTradeFormat() ? 0 : 2);
    layout->addWidget(lblLevLista_);
    layout->addWidget(levLista_, job_.isTradeFormat() ? 0 : 4);
    layout->addWidget(varugrupper_);
    layout->addWidget(altPanel_);
    layout->addWidget(levPanel_, job_.isTradeFormat() ? 1 : 0);
    layout->addLayout(buttons);
}

void PrisStyr::layOutFiles(QGridLayout& grid) {
    grid.addWidget(lblNamn_, 0, 0);
    grid.addWidget(namn_, 1, 0);
    grid.addWidget(lblFilNamn_, 2, 0);
    grid.addWidget(filNamn_, 3, 0);
    grid.addWidget(väljFil_, 3, 1);
    grid.addWidget(lblKompFilNamn_, 4, 0);
    grid.addWidget(kompFilNamn_, 5, 0);
    grid.addWidget(kompFil_, 5, 1);
    grid.setColumnStretch(0, 1);
}

void PrisStyr::setSizes() {
    constexpr int kLetters = 70, kMaskLines = 7, kCompanyLines = 3, kSupplierLines = 8, kNumberLetters = 24;
    const QFontMetrics metrics = fontMetrics();
    filNamn_->setMinimumWidth(kLetters * metrics.averageCharWidth());
    maskLista_->setMinimumHeight(kMaskLines * metrics.lineSpacing());
    ftgLista_->setMinimumHeight(kCompanyLines * metrics.lineSpacing());
    levLista_->setMinimumHeight(kSupplierLines * metrics.lineSpacing());
    for (QLineEdit* group : {fromGrp_, tomGrp_}) {
        group->setMinimumWidth((kJobGroupLength + 3) * metrics.horizontalAdvance('0'));
    }
    levLista_->setColumnWidth(0, kNumberLetters * metrics.averageCharWidth());
    if (job_.isTradeFormat()) ftgLista_->setMaximumHeight((kCompanyLines + 1) * metrics.lineSpacing());
}

void PrisStyr::showJob() {
    const Job& job = job_.job;
    namn_->setText(toQt(job.name));
    filNamn_->setText(toQt(job.priceFile));
    kompFilNamn_->setText(toQt(job.command));
    fromGrp_->setText(toQt(job.fromGroup));
    tomGrp_->setText(toQt(job.toGroup));
    for (const Company& company : job_.companies()) ftgLista_->addItem(toQt(rowOf(company)));
    if (const std::string caption = job_.caption(); !caption.empty()) setWindowTitle(toQt(caption));
}

void PrisStyr::connectFiles() {
    connect(namn_, &QLineEdit::textChanged, this, [this](const QString& text) { job_.job.name = fromQt(text); });
    connect(filNamn_, &QLineEdit::textChanged, this, [this](const QString& text) {
        job_.job.priceFile = fromQt(text);
        presentButtons();
    });
    connect(kompFilNamn_, &QLineEdit::textChanged, this,
            [this](const QString& text) { job_.job.command = fromQt(text); });
    connect(väljFil_, &QPushButton::clicked, this, [this] {
        if (const QString path = askForFile(lblFilNamn_->text(), text::prisstyr::kPriceFileFilter); !path.isEmpty())
            takeFile(path);
    });
    connect(kompFil_, &QPushButton::clicked, this, [this] {
        const QString path = askForFile(kompFil_->text(), text::prisstyr::kCompressedFilter);
        if (!path.isEmpty()) kompFilNamn_->setText(path);
    });
    connect(filformat_, &QPushButton::clicked, this, [this] { editSource(false); });
    connect(gränser_, &QPushButton::clicked, this, [this] {
        LimitsWindow form(program_, job_.limits, this);
        VisaFormulär(program_, form, true);
        if (form.result() == QDialog::Accepted) job_.limits = form.limits();
    });
    connect(spara_, &QPushButton::clicked, this, [this] { save(); });
    connect(avbryt_, &QPushButton::clicked, this, [this] { QDialog::reject(); });
}

/// A file that the mask cannot read as it is, is shown as what it is.
void PrisStyr::takeFile(const QString& path) {
    filNamn_->setText(path);
    if (!job_.isTradeFormat() && !job_.source) editSource(true);
}

void PrisStyr::editSource(bool onlyWhenNeeded) {
    const auto file = job_.foundFile();
    if (!file) {
        if (onlyWhenNeeded) return;
        program_.boxes.MeddelandeVarning(
            program_.texts.FormulärSträngMed1(text::prisstyr::kNoSample, job_.job.priceFile),
            program_.texts.FormulärSträng(text::prisstyr::kNoSampleTitle));
        return;
    }
    SourceEditor editor(program_.texts, *file, job_.source);
    bool read = false;
    {
        const Hourglass looking(program_.boxes.port());
        read = editor.detect();
    }
    if (onlyWhenNeeded && (!read || editor.maskMayReadIt())) return;
    const bool converts = job_.source.has_value() || (read && !editor.maskMayReadIt());
    SourceWindow form(
        program_, editor, converts, [this](std::size_t columns) { return job_.target(columns); }, this);
    VisaFormulär(program_, form, true);
    if (form.result() != QDialog::Accepted) return;
    job_.source.reset();
    if (form.converts()) job_.source = editor.settings();
}

// Esc and the window's own button; "Avbryt" says what it does.
void PrisStyr::reject() {
    if (job_.changed() && !leaveUnsaved(program_)) return;
    QDialog::reject();
}

QString PrisStyr::askForFile(const QString& caption, FormKey filterText) {
    QString path = chooseFile(withoutMarks(caption), toQt(program_.texts.FormulärSträng(filterText)));
    const std::string why = whyNotStored(fromQt(path), kJobTextLength, program_.texts);
    if (why.empty()) return path;
    program_.boxes.MeddelandeVarning(why);
    return {};
}

void PrisStyr::connectMasks() {
    connect(maskLista_, &QListWidget::currentRowChanged, this, [this](int row) {
        job_.chooseMask(row);
        presentButtons();
    });
    connect(nyMask_, &QPushButton::clicked, this, [this] { editMask(true); });
    connect(öppnaMask_, &QPushButton::clicked, this, [this] { editMask(false); });
    connect(maskLista_, &QListWidget::itemDoubleClicked, this, [this] { öppnaMask_->click(); });
    actOnEnter(*maskLista_, [this] { öppnaMask_->click(); });
    connect(kopieraMask_, &QAction::triggered, this, [this] {
        job_.copyMask();
        presentMasks();
        presentButtons();
    });
    connect(taBortMask_, &QPushButton::clicked, this, [this] {
        job_.deleteMask();
        presentMasks();
        presentButtons();
    });
}

void PrisStyr::connectCompany() {
    connect(ftgLista_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row < 0) return;
        const Hourglass loading(program_.boxes.port());
        job_.chooseCompany(row);
        presentCompany();
        presentButtons();
    });
    connect(levLista_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) { job_.chooseSupplier(current.row()); });
}

void PrisStyr::connectFinfo() {
    connect(fromGrp_, &QLineEdit::textChanged, this,
            [this](const QString& text) { job_.job.fromGroup = fromQt(text); });
    connect(tomGrp_, &QLineEdit::textChanged, this, [this](const QString& text) { job_.job.toGroup = fromQt(text); });
    const auto chooseHeading = [this](QComboBox& box, int Job::*heading) {
        connect(&box, &QComboBox::currentIndexChanged, this, [this, heading](int row) {
            if (row >= 0) job_.job.*heading = job_.headings()[static_cast<std::size_t>(row)].number;
        });
    };
    chooseHeading(*altprodnr1_, &Job::heading1);
    chooseHeading(*altprodnr2_, &Job::heading2);
}

void PrisStyr::connectKeys() {
    if (job_.isTradeFormat()) {
        levPanel_->installKeys(*this);
    } else {
        focusOnAltL(*this, *levLista_);
    }
}

// The one place that fills, enables and hides.
void PrisStyr::present() {
    const bool tradeFormat = job_.isTradeFormat();
    namn_->setEnabled(!tradeFormat);
    for (QWidget* control :
         {static_cast<QWidget*>(lblMaskLista_), static_cast<QWidget*>(maskLista_), static_cast<QWidget*>(nyMask_),
          static_cast<QWidget*>(öppnaMask_), static_cast<QWidget*>(taBortMask_), static_cast<QWidget*>(lblLevLista_),
          static_cast<QWidget*>(levLista_), static_cast<QWidget*>(filformat_)}) {
        control->setVisible(!tradeFormat);
    }
    varugrupper_->setVisible(job_.isFinfo());
    altPanel_->setVisible(job_.isFinfo());
    levPanel_->setVisible(tradeFormat);
    select(*ftgLista_, job_.chosenCompany());
    presentMasks();
    presentCompany();
    presentButtons();
}

void PrisStyr::presentMasks() {
    {
        const QSignalBlocker quiet(maskLista_);
        maskLista_->clear();
        for (const Mask& mask : job_.masks()) {
            auto* item = new QListWidgetItem(toQt(mask.Namn), maskLista_);
            item->setData(kIdRole, mask.number);
        }
    }
    select(*maskLista_, job_.chosenMask());
}

void PrisStyr::presentCompany() {
    lblLevLista_->setText(toQt(job_.supplierCaption(fromQt(supplierLabel_))));
    suppliers_->refresh();
    selectRow(*levLista_, job_.chosenSupplier());
    if (!job_.isTradeFormat()) return;
    levPanel_->setTitle(toQt(job_.couplingCaption()).replace("&", "&&"));
    levPanel_->present();
    presentHeadings();
}

void PrisStyr::presentHeadings() {
    for (const auto& [box, number] :
         {std::pair(altprodnr1_, job_.job.heading1), std::pair(altprodnr2_, job_.job.heading2)}) {
        const QSignalBlocker quiet(box);
        box->clear();
        for (const HeadingChoice& heading : job_.headings()) box->addItem(toQt(heading.text), heading.number);
        box->setCurrentIndex(job_.headings().empty() ? -1 : job_.headingRow(number));
    }
}

void PrisStyr::presentButtons() {
    nyMask_->setEnabled(job_.canMakeMask());
    öppnaMask_->setEnabled(job_.canOpenMask());
    taBortMask_->setEnabled(job_.canDeleteMask());
    kopieraMask_->setEnabled(job_.canDeleteMask() && !job_.isTradeFormat());
}

void PrisStyr::editMask(bool isNew) {
    const auto sample = job_.sampleForMask(isNew);
    if (!sample) return;
    if (!isNew && !job_.maskIsAsShown()) {
        presentMasks();
        presentButtons();
        return;
    }
    const int number = isNew ? 0 : job_.masks()[static_cast<std::size_t>(job_.chosenMask())].number;
    const std::string original = job_.foundFile().value_or(*sample).filename().string();
    std::function<std::filesystem::path(const WholeMask&)> sampleFor;
    if (job_.source) sampleFor = [this](const WholeMask& mask) { return job_.sampleFor(mask); };
    const auto saved = visaPrisMTyp(program_, this,
                                    {.sample = *sample,
                                     .convertedFrom = job_.source ? original : std::string(),
                                     .headings = job_.sampleHeadings(),
                                     .supplier = job_.job.supplier,
                                     .sampleFor = sampleFor},
                                    number);
    if (!saved) return;
    job_.maskSaved(*saved);
    presentMasks();
    presentButtons();
}

void PrisStyr::save() {
    using Control = JobEditor::Control;
    const JobEditor::Outcome outcome = job_.save();
    const std::pair<Control, QWidget*> controls[] = {{Control::Namn, namn_},
                                                     {Control::FilNamn, filNamn_},
                                                     {Control::KompFilNamn, kompFilNamn_},
                                                     {Control::Mask_Lista, maskLista_},
                                                     {Control::FTG_Lista, ftgLista_},
                                                     {Control::FromGrp, fromGrp_},
                                                     {Control::TomGrp, tomGrp_}};
    for (const auto& [control, widget] : controls) {
        if (control == outcome.focus) widget->setFocus();
    }
    if (!outcome.JobbNr) return;
    saved_ = outcome.JobbNr;
    accept();
}

std::optional<int> visaPrisStyr(Program& program, QWidget* parent, int JobbNr, bool ÄrStandardJobb) {
    PrisStyr form(program, JobbNr, ÄrStandardJobb, parent);
    VisaFormulär(program, form, true);
    program.state.SvarOK = form.savedJob().has_value();
    return form.savedJob();
}

}  // namespace kolmera
