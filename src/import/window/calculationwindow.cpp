#include "import/window/calculationwindow.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTextBlock>
#include <optional>

#include "definitions/jobfile.h"
#include "import/preview/preview.h"
#include "import/run/pricecalculation.h"
#include "import/run/recordeddefinition.h"
#include "lang/errortext.h"
#include "lang/keys/boxes.h"
#include "lang/keys/calculation.h"
#include "platform/lettercase.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/lockwait.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

/// The surroundings of the preview behind a calculation: a small window with its status and Cancel. Questions about the
/// file were answered when the run, or the preview, was made.
class CalculationPort final : public RunPort {
  public:
    CalculationPort(Program& program, QWidget& form)
        : boxes_(program.boxes.port()), wait_(form), cancel_(toQt(program.texts.ModulText(text::boxes::kCancel))) {
        sinceStart_.start();
    }

    Answer show(const Message& message) override {
        wait_.over();
        return boxes_.show(message);
    }
    void letEventsRun() override { (void)cancelled(); }
    void status(std::string_view text) override { status_ = toQt(text); }
    void runMode(bool /*on*/) override {}
    bool cancelled() override {
        constexpr int kPatience = 300, kPauseBetweenEvents = 40;  // milliseconds
        if (cancelled_ || sinceStart_.elapsed() < kPatience) return cancelled_;
        if (sinceEvents_.isValid() && sinceEvents_.elapsed() < kPauseBetweenEvents) return false;
        cancelled_ = !wait_.keepWaiting(status_, cancel_);
        sinceEvents_.start();
        return cancelled_;
    }
    void clearCancel() override { cancelled_ = false; }
    ConfirmationAnswer confirm(const Confirmation& /*confirmation*/) override { return {.confirmed = true}; }
    bool readsDoubtful(const DoubtfulFile& /*file*/) override { return true; }
    void openJobSettings() override {}
    void tell(const Message& /*message*/) override {}

  private:
    MessagePort& boxes_;
    LockWait wait_;
    QString cancel_, status_;
    QElapsedTimer sinceStart_, sinceEvents_;
    bool cancelled_ = false;
};

/// What is different from the run that is asked about.
std::string remarkOn(LanguageTexts& texts, const RunHeader& run, const Preview& preview) {
    std::string remark;
    const auto add = [&](const std::string& text) { remark.append(remark.empty() ? "" : " ").append(text); };
    if (run.kind == RunKind::Run) add(texts.ModulText(text::calculation::kMadeNow));
    const RunHeader* now = preview.record ? &preview.record->header() : nullptr;
    if (now != nullptr && now->priceFile.sha256 != run.priceFile.sha256)
        add(texts.ModulText(text::calculation::kFileChanged));
    if (now != nullptr && now->definition != run.definition) add(texts.ModulText(text::calculation::kImportChanged));
    if (!preview.commandLeftOut.empty())
        add(texts.ModulTextMed(text::calculation::kCommandLeftOut, preview.commandLeftOut));
    return remark;
}

std::optional<Job> jobOf(Program& program, const RunHeader& run) {
    std::optional<Job> job = JobFile(program.state.dataFolder()).find(run.job);
    if (!job) program.boxes.MeddelandeInfo(program.texts.ModulTextMed(text::calculation::kNoImport, run.job));
    return job;
}

bool isThere(Program& program, const RecordedFile& file) {
    std::error_code unknown;
    if (std::filesystem::is_regular_file(file.path, unknown)) return true;
    program.boxes.MeddelandeInfo(program.texts.ModulTextMed(text::calculation::kFileGone, file.path));
    return false;
}

void calculate(Program& program, QWidget& parent, const RunHeader& run, const std::string& product,
               const std::string& column) {
    const std::optional<Job> job = jobOf(program, run);
    if (!job || !isThere(program, run.priceFile)) return;
    PriceCalculation calculation(trimmed(product));
    Preview preview;
    {
        CalculationPort port(program, parent);
        ImportContext context{.state = program.state,
                              .texts = program.texts,
                              .boxes = program.boxes,
                              .companies = program.companies,
                              .port = port,
                              .Idag = Date::today(),
                              .JobbNr = job->number,
                              .trace = &calculation};
        preview = previewRun(context, job->name, {.emptyTables = emptiedTables(run)});
    }
    if (!preview.summary.completed || preview.summary.cancelled) return;  // what stopped it has been told
    const std::string text = calculation.text(program.texts, program.state.locale);
    if (text.empty()) {
        program.boxes.MeddelandeInfo(program.texts.ModulTextMed(text::calculation::kNoRecord, product));
        return;
    }
    CalculationWindow form(
        program, {.product = product, .text = text, .column = column, .remark = remarkOn(program.texts, run, preview)},
        &parent);
    VisaFormulär(program, form, true);
}

}  // namespace

CalculationWindow::CalculationWindow(Program& program, const Shown& shown, QWidget* parent)
    : QDialog(parent), text_(named(new QPlainTextEdit(toQt(shown.text), this), "Text")) {
    constexpr int kLetters = 90, kLines = 34;
    setObjectName(QStringLiteral("CalculationWindow"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    auto* remark = named(new QLabel(toQt(shown.remark), this), "Anmärkning");
    remark->setTextFormat(Qt::PlainText);
    remark->setWordWrap(true);
    remark->setVisible(!shown.remark.empty());
    text_->setReadOnly(true);
    text_->setLineWrapMode(QPlainTextEdit::NoWrap);
    text_->setTextInteractionFlags(Qt::TextSelectableByKeyboard | Qt::TextSelectableByMouse);
    QPushButton* copy = button(*this, "Kopiera", "&Kopiera");
    QPushButton* close = button(*this, "Stäng", "S&täng");
    for (QPushButton* each : {copy, close}) each->setAutoDefault(false);
    connect(copy, &QPushButton::clicked, this, [this] { QApplication::clipboard()->setText(text_->toPlainText()); });
    connect(close, &QPushButton::clicked, this, [this] { accept(); });
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(copy);
    buttons->addStretch(1);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(remark);
    layout->addWidget(text_, 1);
    layout->addLayout(buttons);
    loadForm(program, *this);
    setWindowTitle(toQt(program.texts.ModulTextMed(text::calculation::kTitle, shown.product)));
    text_->setAccessibleName(windowTitle());
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    const QSize size(kLetters * fontMetrics().averageCharWidth(), kLines * fontMetrics().lineSpacing());
    resize(size.boundedTo(screen()->availableSize() - QSize(2, 4) * fontMetrics().averageCharWidth()));
    findColumn(shown.column);
    text_->setFocus();
}

/// Marks the heading of the column and puts the cursor before it.
void CalculationWindow::findColumn(const std::string& column) {
    const QString wanted = toQt(column);
    QTextBlock line = text_->document()->begin();
    while (line.isValid() && line.text().trimmed() != wanted) line = line.next();
    if (!line.isValid()) return;
    QTextCursor heading(line);
    text_->setTextCursor(heading);
    heading.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    QTextEdit::ExtraSelection mark;
    mark.cursor = heading;
    mark.format.setBackground(text_->palette().highlight());
    mark.format.setForeground(text_->palette().highlightedText());
    text_->setExtraSelections({mark});
    QMetaObject::invokeMethod(
        text_, [this] { text_->centerCursor(); }, Qt::QueuedConnection);
}

void explainPrice(Program& program, QWidget* parent, const RunHeader& run, const std::string& product,
                  const std::string& column) {
    try {
        calculate(program, *parent, run, product, column);
    } catch (const PlatformError& error) {
        program.boxes.MeddelandeVarning(errorText(program.texts, error));
    }
}

}  // namespace kolmera
