#include "registers/window/importwindow.h"

#include <fmt/format.h>

#include <QComboBox>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTreeWidget>
#include <algorithm>
#include <utility>

#include "lang/errortext.h"
#include "lang/keys/boxes.h"
#include "lang/keys/registerswindow.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/keys.h"
#include "ui/lockwait.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kBound = 1;   // behind the heading; samples follow
constexpr int kReason = 3;  // why a row was refused, behind its text

QTreeWidget* rowsOf(QWidget& form, const char* name, const char* caption) {
    auto* list = named(new QTreeWidget(&form), name);
    list->setToolTip(QString::fromUtf8(caption));
    list->setRootIsDecorated(false);
    list->setAllColumnsShowFocus(true);
    return list;
}

}  // namespace

ImportWindow::ImportWindow(Program& program, RegisterEditor& editor, std::filesystem::path file, FileColumns columns,
                           QWidget* parent)
    : QDialog(parent), program_(program), editor_(editor), file_(std::move(file)) {
    setObjectName(QStringLiteral("RegisterImport"));
    setWindowTitle(QStringLiteral("Importera till registret"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    buildControls();
    layOut();
    loadForm(program_, *this);
    setWindowTitle(windowTitle() + toQt(fmt::format(": {}, {}", editor_.opened().title(), file_.filename().string())));
    fillColumns(columns);
    tryOut();
    if (!choices_.empty()) choices_.front()->setFocus();
}

void ImportWindow::buildControls() {
    columns_ = rowsOf(*this, "Kolumner", "Filens kolumner");
    columns_->setSelectionMode(QAbstractItemView::NoSelection);
    columns_->setFocusPolicy(Qt::NoFocus);
    result_ = named(new QLabel(this), "Resultat");
    result_->setTextFormat(Qt::PlainText);
    result_->setWordWrap(true);
    refusedLabel_ = label(*this, "Lbl_Nekade", "&Rader som inte passar och lämnas");
    refused_ = rowsOf(*this, "Nekade", "Rader som inte passar");
    refusedLabel_->setBuddy(refused_);
    try_ = button(*this, "Prova", "&Prova igen");
    write_ = button(*this, "Skriv", "&Skriv till registret");
    cancel_ = button(*this, "Avbryt", "&Avbryt");
    for (QPushButton* each : {try_, cancel_}) each->setAutoDefault(false);
    connect(try_, &QPushButton::clicked, this, [this] { tryOut(); });
    connect(write_, &QPushButton::clicked, this, [this] { write(); });
    connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
    pressOnKey(*this, QKeySequence(Qt::Key_F5), *try_);
    pressOnKey(*this, QKeySequence(Qt::Key_F7), *write_);
}

void ImportWindow::layOut() {
    constexpr int kLetters = 130, kLines = 30;
    auto* guiding = label(*this, "Ledtext", "Välj vilken kolumn i registret som varje kolumn i filen är.");
    guiding->setWordWrap(true);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(try_);
    buttons->addStretch(1);
    buttons->addWidget(write_);
    buttons->addWidget(cancel_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(guiding);
    layout->addWidget(columns_, 3);
    layout->addWidget(result_);
    layout->addWidget(refusedLabel_);
    layout->addWidget(refused_, 2);
    layout->addLayout(buttons);
    const QFontMetrics metrics = fontMetrics();
    resize(QSize(kLetters * metrics.averageCharWidth(), kLines * metrics.lineSpacing())
               .boundedTo(screen()->availableSize() - QSize(2, 4) * metrics.averageCharWidth()));
}

void ImportWindow::fillColumns(const FileColumns& columns) {
    constexpr int kMostLetters = 26;
    LanguageTexts& texts = program_.texts;
    QStringList headings{toQt(texts.FormulärSträng(text::registerswindow::kColumnOfFile)),
                         toQt(texts.FormulärSträng(text::registerswindow::kColumnOfRegister))};
    for (std::size_t sample = 1; sample <= FileColumns::kSamples; ++sample)
        headings.push_back(toQt(texts.FormulärSträngMed1(text::registerswindow::kSample, fmt::format("{}", sample))));
    columns_->setHeaderLabels(headings);
    Register& of = editor_.opened();
    int place = 0;
    for (const FileColumns::Column& column : columns.columns) {
        ++place;
        const std::string heading = column.heading.empty() ? fmt::format("{}", place) : column.heading;
        QStringList cells{toQt(heading), QString()};
        for (const std::string& sample : column.samples) cells.push_back(toQt(sample));
        auto* row = new QTreeWidgetItem(columns_, cells);
        auto* choice = named(new QComboBox(columns_), fmt::format("Kolumn_{}", place).c_str());
        choice->addItem(toQt(texts.FormulärSträng(text::registerswindow::kNotRead)), -1);
        for (int each = 0; each < static_cast<int>(of.columns().size()); ++each) {
            if (!of.column(each).fixed) choice->addItem(toQt(of.column(each).caption), each);
        }
        choice->setCurrentIndex(std::max(choice->findData(column.column), 0));
        choice->setAccessibleName(toQt(heading));
        choice->setFocusPolicy(Qt::StrongFocus);
        connect(choice, &QComboBox::currentIndexChanged, this, [this] {
            told_ = {};
            showTold();
        });
        columns_->setItemWidget(row, kBound, choice);
        choices_.push_back(choice);
    }
    const int most = kMostLetters * fontMetrics().averageCharWidth();
    for (int column = 0; column < columns_->columnCount(); ++column) {
        columns_->resizeColumnToContents(column);
        if (column != kBound) columns_->setColumnWidth(column, std::min(columns_->columnWidth(column) + 8, most));
    }
    columns_->setColumnWidth(kBound, most);
    QWidget* before = nullptr;
    for (QWidget* next : choices_) {
        if (before != nullptr) setTabOrder(before, next);
        before = next;
    }
    for (QWidget* next : std::initializer_list<QWidget*>{refused_, try_, write_, cancel_}) {
        if (before != nullptr) setTabOrder(before, next);
        before = next;
    }
}

std::vector<int> ImportWindow::bound() const {
    std::vector<int> columns;
    columns.reserve(choices_.size());
    for (const QComboBox* choice : choices_) columns.push_back(choice->currentData().toInt());
    return columns;
}

void ImportWindow::tryOut() {
    told_ = {};
    read(true);
    showTold();
}

void ImportWindow::write() {
    if (!read(false)) {
        showTold();
        return;
    }
    if (!told_.text.empty()) program_.boxes.MeddelandeInfo(told_.text);
    accept();
}

/// With a small window and Cancel when it takes its time. False when trying out was cancelled, and for an error.
bool ImportWindow::read(bool tryOut) {
    constexpr int kPatience = 300, kPause = 40;  // milliseconds
    told_ = {};
    bool cancelled = false;
    LockWait wait(*this);
    QElapsedTimer sinceStart, sinceEvents;
    sinceStart.start();
    const auto asked = [&] {
        if (cancelled || sinceStart.elapsed() < kPatience) return cancelled;
        if (sinceEvents.isValid() && sinceEvents.elapsed() < kPause) return false;
        cancelled = !wait.keepWaiting(toQt(program_.texts.FormulärSträng(text::registerswindow::kReading)),
                                      toQt(program_.texts.ModulText(text::boxes::kCancel)));
        sinceEvents.start();
        return cancelled;
    };
    try {
        const Hourglass working(program_.boxes.port());
        told_ = editor_.import(file_, bound(), tryOut, asked);
    } catch (const PlatformError& error) {
        wait.over();
        program_.boxes.MeddelandeVarning(errorText(program_.texts, error));
        return false;
    }
    wait.over();
    if (cancelled && tryOut) told_ = {};
    return !(cancelled && tryOut);
}

void ImportWindow::showTold() {
    result_->setText(
        toQt(told_.text.empty() ? program_.texts.FormulärSträng(text::registerswindow::kTryFirst) : told_.text)
            .trimmed());
    refused_->clear();
    QStringList headings;
    for (const FormKey key : {text::registerswindow::kRefusedRow, text::registerswindow::kRefusedColumn,
                              text::registerswindow::kRefusedText, text::registerswindow::kReason})
        headings.push_back(toQt(program_.texts.FormulärSträng(key)));
    refused_->setHeaderLabels(headings);
    for (const auto& one : told_.refused)
        new QTreeWidgetItem(refused_, {QString::number(one.row), toQt(one.column), toQt(one.text), toQt(one.reason)});
    constexpr int kMostLetters = 40;
    for (int column = 0; column < refused_->columnCount(); ++column) {
        refused_->resizeColumnToContents(column);
        const int most = kMostLetters * fontMetrics().averageCharWidth();
        if (column != kReason) refused_->setColumnWidth(column, std::min(refused_->columnWidth(column), most));
    }
    present();
}

// The one place that enables.
void ImportWindow::present() {
    write_->setEnabled(told_.done);
    refusedLabel_->setVisible(!told_.refused.empty());
    refused_->setVisible(!told_.refused.empty());
}

}  // namespace kolmera
