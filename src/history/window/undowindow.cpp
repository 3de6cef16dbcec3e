#include "history/window/undowindow.h"

#include <QElapsedTimer>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "history/changetable.h"
#include "history/recordedundo.h"
#include "history/runlist.h"
#include "history/undotexts.h"
#include "history/window/companyproducts.h"
#include "import/run/recordkeeping.h"
#include "lang/errortext.h"
#include "lang/keys/boxes.h"
#include "lang/keys/history.h"
#include "lang/keys/runs.h"
#include "platform/error.h"
#include "ui/controls.h"
#include "ui/forms.h"
#include "ui/lockwait.h"
#include "ui/qttext.h"

namespace kolmera {
namespace {

constexpr int kPatience = 300;  ///< milliseconds before the waiting is shown

QString withLineFeeds(const std::string& text) { return toQt(text).replace("\r\n", "\n").trimmed(); }

/// A run of one record folder that is taken back, with the waiting window over a form.
class TakingBack {
  public:
    TakingBack(Program& program, QWidget& parent, const RunFolder& folder, const std::string& run)
        : program_(program), parent_(parent), undo_(*program.state.sql.FtgDB, folder, run, head()) {}

    bool plan() {
        return watched([&](const RunUndo::GoOn& goOn) { return undo_.plan(goOn); });
    }

    [[nodiscard]] bool isWanted() {
        LanguageTexts& texts = program_.texts;
        const std::string what = undoCountsText(texts, undo_.undo().counts(), program_.state.locale);
        std::string started = undo_.run().started;
        std::ranges::replace(started, 'T', ' ');
        const std::string question = texts.FormulärSträngMed2(text::runs::kAskToTakeBack, undo_.run().job, started) +
                                     "\r\n\r\n" + productsText() + what;
        return program_.boxes.MeddelandeJaNejNej(question) == Answer::Yes;
    }

    void carryOut() {
        const bool whole = watched([&](const RunUndo::GoOn& goOn) { return undo_.carryOut(goOn); });
        const UndoCounts counts = undo_.undo().counts();
        const ModuleKey outcome = counts.kept > 0 ? text::history::kUndoneInPart : text::history::kUndone;
        std::string told = whole ? program_.texts.ModulTextMed(outcome, undo_.run().id)
                                 : program_.texts.FormulärSträng(text::runs::kUndoCancelled);
        told += "\r\n\r\n" + undoCountsText(program_.texts, counts, program_.state.locale);
        if (undo_.recordFailure()) {
            const std::string why = errorText(program_.texts, *undo_.recordFailure());
            told += "\r\n" + program_.texts.ModulTextMed(text::history::kUndoNotRecorded, why);
        }
        UndoWindow form(program_, told, kept(), &parent_);
        VisaFormulär(program_, form, true);
    }

  private:
    [[nodiscard]] RunHeader head() const {
        RunHeader head;
        head.user = keptInDataFolder(program_.state).user;
        head.version = KOLMERA_VERSION;
        return head;
    }

    /// The users' count beside the rows'; nothing of a run that was itself taking back.
    std::string productsText() {
        const Locale& locale = program_.state.locale;
        const auto added = countOf(undo_.run(), "new");
        const auto changed = countOf(undo_.run(), "changed");
        if (!added || !changed) return {};
        return program_.texts.FormulärSträngMed2(text::runs::kProductsOfRun, grouped(*added, locale),
                                                 grouped(*changed, locale)) +
               "\r\n";
    }

    template <typename Step>
    bool watched(const Step& step) {
        LockWait wait(parent_);
        QElapsedTimer waited;
        waited.start();
        const QString cancel = toQt(program_.texts.ModulText(text::boxes::kCancel));
        return step([&](std::int64_t done, std::int64_t of) {
            if (waited.elapsed() < kPatience) return true;
            const Locale& locale = program_.state.locale;
            return wait.keepWaiting(toQt(program_.texts.FormulärSträngMed2(text::runs::kTakingBack,
                                                                           grouped(done, locale), grouped(of, locale))),
                                    cancel);
        });
    }

    std::string kept() {
        std::string text;
        Database& database = *program_.state.sql.FtgDB;
        undo_.undo().forEachKept([&](const KeptRow& row) {
            text += keptRowText(program_.texts, row, database.table(row.table), program_.state.locale);
            return true;
        });
        return text;
    }

    Program& program_;
    QWidget& parent_;
    RecordedUndo undo_;
};

}  // namespace

UndoWindow::UndoWindow(Program& program, const std::string& outcome, const std::string& kept, QWidget* parent)
    : QDialog(parent) {
    constexpr int kLetters = 90, kLines = 26;
    setObjectName(QStringLiteral("UndoWindow"));
    setWindowTitle(QStringLiteral("Ångra körning"));
    auto* told = named(new QLabel(withLineFeeds(outcome), this), "Utfall");
    told->setTextFormat(Qt::PlainText);
    told->setWordWrap(true);
    told->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    QLabel* lblKept = label(*this, "Lbl_Kvar", "Detta står &kvar (värden före körningen > efter den > nu)");
    auto* view = named(new QPlainTextEdit(toQt(kept), this), "Kvar");
    view->setReadOnly(true);
    view->setLineWrapMode(QPlainTextEdit::NoWrap);
    view->setTextInteractionFlags(Qt::TextSelectableByKeyboard | Qt::TextSelectableByMouse);
    lblKept->setBuddy(view);
    QPushButton* close = button(*this, "Stäng", "&Stäng");
    connect(close, &QPushButton::clicked, this, [this] { accept(); });
    for (QWidget* each : {static_cast<QWidget*>(lblKept), static_cast<QWidget*>(view)}) each->setVisible(!kept.empty());
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(told);
    layout->addWidget(lblKept);
    layout->addWidget(view, 1);
    layout->addLayout(buttons);
    loadForm(program, *this);
    if (!kept.empty()) resize(kLetters * fontMetrics().averageCharWidth(), kLines * fontMetrics().lineSpacing());
    close->setFocus();
}

bool takeBack(Program& program, QWidget* parent, const std::string& run) {
    try {
        const RunFolder folder(program.state.dataFolder());
        const std::string company = RecordReader(folder.file(run)).header().companyFile;
        const ClosesCompany closing(program);
        if (!program.companies.ÖppnaDatabas(company)) return false;
        TakingBack undo(program, *parent, folder, run);
        if (!undo.plan() || !undo.isWanted()) return false;
        undo.carryOut();
    } catch (const PlatformError& error) {
        program.boxes.MeddelandeVarning(
            program.texts.FormulärSträngMed1(text::runs::kCannotTakeBack, errorText(program.texts, error)));
    }
    return true;
}

}  // namespace kolmera
