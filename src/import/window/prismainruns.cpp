#include <QMenu>
#include <QTreeView>
#include <string>

#include "definitions/pricefilepath.h"
#include "history/runlist.h"
#include "history/window/openrecord.h"
#include "history/window/runswindow.h"
#include "import/preview/limitedrun.h"
#include "import/preview/preview.h"
#include "import/run/runresult.h"
#include "import/window/prismain.h"
#include "import/window/resultpanel.h"
#include "import/window/runpanel.h"
#include "lang/errortext.h"
#include "lang/keys/boxes.h"
#include "lang/keys/mainmenu.h"
#include "lang/keys/prismain.h"
#include "lang/keys/prisstyr.h"
#include "platform/lettercase.h"
#include "ui/filedialogs.h"
#include "ui/forms.h"
#include "ui/qttext.h"

namespace kolmera {

// A job is run or previewed, and what runs did is shown.

ImportContext PrisMain::context() {
    return {.state = program_.state,
            .texts = program_.texts,
            .boxes = program_.boxes,
            .companies = program_.companies,
            .port = *runPanel_,
            .Idag = Idag_,
            .JobbNr = jobs_.JobbNr(),
            .shown = jobs_.row(jobs_.selected()).job};
}

void PrisMain::whileRunning(const std::function<void()>& work) {
    running_ = true;
    resultPanel_->hide();
    present();
    runPanel_->begin();
    work();
    running_ = false;
    if (runPanel_->isVisible()) runPanel_->runMode(false);
    present();
    lista_->setFocus();
    watch_.look();
}

void PrisMain::utför(const std::string& otherFile) {
    if (!jobs_.canRun() || running_ || !isAsShown()) return;
    ImportContext context = this->context();
    RecordKeeping record = keptInDataFolder(program_.state);
    context.record = &record;
    context.otherFile = otherFile;
    RunSummary summary;
    whileRunning([&] { summary = runWithinLimits(context, jobs_.jobName()); });
    lastRecord_ = record.failure ? std::string() : record.id;
    resultPanel_->tell(runResult(program_.texts, program_.state.locale, jobs_.jobName(), summary, runPanel_->seconds()),
                       !lastRecord_.empty());
    if (closeAfterRun_) {
        close();
    } else if (const auto emptyTables = runPanel_->takePreviewWish()) {
        förhandsgranska(*emptyTables, otherFile);
    }
}

void PrisMain::visaÄndringar() {
    try {
        showRecord(program_, this, RunFolder(program_.state.dataFolder()).file(lastRecord_));
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(errorText(program_.texts, error));
    }
}

void PrisMain::läsAnnanFil() {
    if (!jobs_.canRun() || running_) return;
    const Job& job = jobs_.row(jobs_.selected()).job;
    const StartState& state = program_.state;
    const auto file = findPriceFile(job.priceFile, state.drives, state.dataFolder(), state.programFolder());
    FileQuestion question;
    question.title = toQt(job.name);
    question.filters = toQt(program_.texts.FormulärSträng(text::prisstyr::kPriceFileFilter));
    question.path = toQt((job.priceFile.empty() ? state.dataFolder() : file.parent_path()).string());
    if (const QString chosen = askForFileToOpen(this, question, program_.memory); !chosen.isEmpty())
        askWhatToDoWith(fromQt(chosen));
}

/// The price file of one run: it may be read or be looked at, and the job stays as it is.
void PrisMain::askWhatToDoWith(const std::string& otherFile) {
    QMenu menu(this);
    menu.setObjectName(QStringLiteral("AnnanFilVal"));
    const std::string name = std::filesystem::path(otherFile).filename().string();
    const auto add = [&](ModuleKey caption) {
        return menu.addAction(toQt(program_.texts.ModulTextMed(caption, replaceAll(name, "&", "&&"))));
    };
    const QAction* preview = add(text::mainmenu::kPreviewFile);
    const QAction* run = add(text::mainmenu::kReadFile);
    menu.addSeparator();
    menu.addAction(toQt(program_.texts.ModulText(text::boxes::kCancel)));
    const QRect row = lista_->visualRect(lista_->currentIndex());
    const QAction* chosen = menu.exec(lista_->viewport()->mapToGlobal(row.bottomLeft()));
    if (chosen == preview) förhandsgranska(false, otherFile);
    if (chosen == run && leavesCommandOut()) utför(otherFile);
}

/// Whether a run goes on though the job's preparation command makes another file than the one that is read.
bool PrisMain::leavesCommandOut() {
    if (jobs_.row(jobs_.selected()).job.command.empty()) return true;
    return program_.boxes.MeddelandeOKAvbryt(program_.texts.ModulText(text::mainmenu::kCommandLeftOut)) == Answer::OK;
}

/// Whether the job's preparation command is carried out for a preview.
bool PrisMain::asksForCommand() {
    const std::string& command = jobs_.row(jobs_.selected()).job.command;
    return !command.empty() && program_.boxes.MeddelandeJaNejNej(program_.texts.ModulTextMed(
                                   text::prismain::kAskToRunCommand, command)) == Answer::Yes;
}

void PrisMain::förhandsgranska(bool emptyTables, const std::string& otherFile) {
    if (!jobs_.canRun() || running_ || !isAsShown()) return;
    const bool runsCommand = otherFile.empty() && asksForCommand();
    ImportContext context = this->context();
    context.otherFile = otherFile;
    Preview preview;
    whileRunning([&] {
        preview = previewRun(context, jobs_.jobName(), {.emptyTables = emptyTables, .runsCommand = runsCommand});
    });
    if (closeAfterRun_) {
        close();
        return;
    }
    // What stopped it has been told.
    if (!preview.summary.completed || preview.summary.cancelled) return;
    if (!preview.record) {
        for (const std::string& told : preview.told) program_.boxes.MeddelandeVarning(told);
        return;
    }
    if (!showRecord(program_, this, *preview.record, preview.told)) return;
    runPanel_->proposeEmptyTables(emptyTables);
    utför(otherFile);
}

void PrisMain::tidigareKörningar() {
    RunsWindow form(program_, this);
    VisaFormulär(program_, form, true);
    watch_.look();
}

}  // namespace kolmera
