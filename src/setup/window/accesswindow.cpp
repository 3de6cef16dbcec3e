#include "setup/window/accesswindow.h"

#include <QApplication>
#include <QClipboard>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>

#include "lang/errortext.h"
#include "lang/keys/access.h"
#include "lang/keys/accesswindow.h"
#include "platform/error.h"
#include "startup/accesstexts.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kNameLength = 50;  ///< of the company's name in its settings
constexpr int kSteps = 1000;     ///< of the progress bar

}  // namespace

AccessWindow::AccessWindow(Program& program, QWidget* parent) : QDialog(parent), program_(program) {
    fileToRead = [this](const FileQuestion& question) { return askForFileToOpen(this, question, program_.memory); };
    setObjectName(QStringLiteral("AccessWindow"));
    setWindowTitle(QStringLiteral("Företag från en Access-fil"));
    build();
    layOut();
    loadForm(program_, *this);
    company_->setText(toQt(proposedCompanyFile(program_.state)));
    present();
    browse_->setFocus();
}

void AccessWindow::build() {
    file_ = named(new QLineEdit(this), "Fil");
    browse_ = button(*this, "Bläddra", "&Bläddra...");
    company_ = named(new QLineEdit(this), "Företag");
    name_ = named(new QLineEdit(this), "Namn");
    name_->setMaxLength(kNameLength);
    list_ = named(new QListWidget(this), "Inte_som_i_filen");
    copy_ = button(*this, "Kopiera", "&Kopiera allt");
    import_ = button(*this, "Importera", "&Importera");
    close_ = button(*this, "Stäng", "&Stäng");
    import_->setDefault(true);
    for (QPushButton* each : {browse_, copy_, close_}) each->setAutoDefault(false);
    told_ = new QLabel(this);
    told_->setWordWrap(true);
    told_->setTextFormat(Qt::PlainText);
    progress_ = named(new QProgressBar(this), "Förlopp");
    progress_->setRange(0, kSteps);
    progress_->setToolTip(QStringLiteral("Hur långt importen har kommit"));
    progress_->hide();
    list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list_->setUniformItemSizes(true);
    for (QLineEdit* each : {file_, company_}) connect(each, &QLineEdit::textChanged, this, [this] { present(); });
    connect(browse_, &QPushButton::clicked, this, [this] { chooseFile(); });
    connect(import_, &QPushButton::clicked, this, [this] { importFile(); });
    connect(copy_, &QPushButton::clicked, this, [this] { copyAll(); });
    connect(close_, &QPushButton::clicked, this, [this] { reject(); });
}

void AccessWindow::layOut() {
    constexpr int kLetters = 60, kLines = 12;
    auto* guiding =
        label(*this, "Ledtext",
              "Filen läses bara. Ett företag med alla dess tabeller görs i datamappen, och det som inte kan "
              "följa med visas.");
    guiding->setWordWrap(true);
    file_->setMinimumWidth(kLetters * fontMetrics().averageCharWidth());
    list_->setMinimumHeight(kLines * fontMetrics().lineSpacing());
    auto* grid = new QGridLayout;
    const auto row = [&](int at, const char* name, const char* caption, QLineEdit* field) {
        auto* made = label(*this, name, caption);
        made->setBuddy(field);
        grid->addWidget(made, at, 0);
        grid->addWidget(field, at, 1, 1, field == file_ ? 1 : 2);
    };
    row(0, "Lbl_Fil", "&Access-fil", file_);
    grid->addWidget(browse_, 0, 2);
    row(1, "Lbl_Företag", "&Företagsfil", company_);
    row(2, "Lbl_Namn", "&Namn, om filen saknar det", name_);
    listLabel_ = label(*this, "Lbl_Lista", "Rader, och vad som inte är som i fi&len");
    listLabel_->setBuddy(list_);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(copy_);
    buttons->addStretch(1);
    buttons->addWidget(import_);
    buttons->addWidget(close_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(guiding);
    layout->addLayout(grid);
    layout->addWidget(told_);
    layout->addWidget(progress_);
    layout->addWidget(listLabel_);
    layout->addWidget(list_, 1);
    layout->addLayout(buttons);
}

// The one place that enables.
void AccessWindow::present() {
    for (QWidget* each : {static_cast<QWidget*>(file_), static_cast<QWidget*>(company_), static_cast<QWidget*>(name_),
                          static_cast<QWidget*>(browse_)})
        each->setEnabled(!running_);
    import_->setEnabled(!running_ && !file_->text().trimmed().isEmpty() &&
                        isCompanyFileName(fromQt(company_->text().trimmed())));
    progress_->setVisible(running_);
    copy_->setEnabled(!running_ && list_->count() > 0);
    close_->setText(
        toQt(program_.texts.FormulärSträng(running_ ? text::accesswindow::kCancel : text::accesswindow::kClose)));
}

void AccessWindow::chooseFile() {
    FileQuestion question;
    question.title = windowTitle();
    question.filters = toQt(program_.texts.FormulärSträng(text::accesswindow::kFilters));
    const QString file = fileToRead(question);
    if (!file.isEmpty()) file_->setText(file);
}

/// A company that is there is replaced only when the user says so.
bool AccessWindow::mayImport(AccessImport& import) {
    const std::string company = import.company.filename().string();
    switch (obstacleTo(import)) {
        case AccessObstacle::None:
            return true;
        case AccessObstacle::Exists:
            import.replace = program_.boxes.MeddelandeJaNejNej(program_.texts.FormulärSträngMed1(
                                 text::accesswindow::kAskToReplace, company)) == Answer::Yes;
            return import.replace;
        case AccessObstacle::SameFile:
            program_.boxes.MeddelandeVarning(
                program_.texts.FormulärSträngMed1(text::accesswindow::kSameFile, import.company.string()));
            break;
        case AccessObstacle::Name:
            break;
    }
    return false;
}

void AccessWindow::importFile() {
    const std::string file = fromQt(file_->text().trimmed());
    cancelled_ = false;
    AccessImport import = accessImportOf(program_.state, program_.companies, file, fromQt(company_->text().trimmed()),
                                         [this] { return keepsOn({}); });
    if (!name_->text().trimmed().isEmpty()) import.companyName = fromQt(name_->text().trimmed());
    if (!mayImport(import)) return;
    list_->clear();
    running_ = true;
    present();
    std::string failure;
    AccessResult result;
    try {
        result = importAccessFile(import, [this](const AccessProgress& progress) { return keepsOn(progress); });
    } catch (const PlatformError& error) {
        if (!cancelled_) {
            failure = program_.texts.ModulTextMed(text::access::kNotImported, file) + " " +
                      errorText(program_.texts, error.subject().empty() ? error.about(file) : error);
        }
        result.cancelled = true;
    }
    running_ = false;
    if (result.cancelled) {
        told_->setText(toQt(program_.texts.ModulText(text::access::kCancelled)));
    } else {
        told_->setText(toQt(program_.texts.ModulTextMed(text::access::kImported, import.company.filename().string())));
        tell(result);
    }
    present();
    if (failure.empty()) return;
    told_->clear();
    program_.boxes.MeddelandeVarning(failure);
}

/// Shows how far the import has come, and hears Cancel.
bool AccessWindow::keepsOn(const AccessProgress& progress) {
    constexpr int kPause = 40;  // milliseconds
    if (sinceEvents_.isValid() && sinceEvents_.elapsed() < kPause) return !cancelled_;
    if (progress.of > 0) {
        const auto share = static_cast<double>(progress.rows) / static_cast<double>(progress.of);
        progress_->setValue(static_cast<int>(share * kSteps));
    }
    const std::string read = progress.table.empty() ? fromQt(file_->text().trimmed()) : std::string(progress.table);
    told_->setText(toQt(program_.texts.ModulTextMed(text::access::kReading, read)));
    QApplication::processEvents();
    sinceEvents_.start();
    return !cancelled_;
}

void AccessWindow::tell(const AccessResult& result) {
    const QLocale system;
    for (const CopiedTable& table : result.tables)
        list_->addItem(QStringLiteral("%1: %2").arg(toQt(table.name), system.toString(qlonglong{table.rows})));
    if (result.remarks.empty()) return;
    list_->addItem(toQt(program_.texts.ModulTextMed(text::access::kRemarks, std::to_string(result.remarks.size()))));
    const int first = list_->count() - 1;
    for (const AccessRemark& remark : result.remarks) list_->addItem(toQt("  " + remarkText(program_.texts, remark)));
    list_->setCurrentRow(first);
    list_->scrollToItem(list_->item(first), QAbstractItemView::PositionAtTop);
}

void AccessWindow::copyAll() {
    QStringList lines;
    for (int row = 0; row < list_->count(); ++row) lines.append(list_->item(row)->text());
    QApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

// Cancel, Esc and the window's own button.
void AccessWindow::reject() {
    if (running_) {
        cancelled_ = true;
        return;
    }
    QDialog::reject();
}

void importAccessCompany(Program& program, QWidget* parent) {
    AccessWindow form(program, parent);
    VisaFormulär(program, form, true);
}

}  // namespace kolmera
