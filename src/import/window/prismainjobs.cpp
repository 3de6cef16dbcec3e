#include <string>

#include "definitions/jobcopy.h"
#include "definitions/savemessages.h"
#include "import/window/prismain.h"
#include "import/window/templatefiles.h"
#include "lang/keys/copies.h"
#include "lang/keys/definitions.h"
#include "lang/keys/mainmenu.h"
#include "lang/keys/prismain.h"
#include "ui/filedialogs.h"

namespace kolmera {

// What is done with jobs and their templates.

/// Offers the jobs of the trade formats to a list that has lost them.
bool PrisMain::addsTradeJobs() {
    const std::vector<std::string> missing = missingTradeJobs(jobs_.jobs());
    if (missing.empty()) return false;
    std::string names;
    for (const std::string& name : missing) names.append(names.empty() ? "" : ", ").append(name);
    const std::string question = program_.texts.ModulTextMed(text::definitions::kAskToAddTradeFormats, names);
    if (program_.boxes.MeddelandeJaNej(question) != Answer::Yes) return false;
    try {
        JobFile(program_.state.dataFolder()).addTradeJobs(program_.state.StandardFöretag);
    } catch (const PlatformError& error) {
        tellNotSaved(error, {}, program_.texts, program_.boxes);
    }
    fill(0, missing.front());
    return true;
}

void PrisMain::ny() {
    if (!addsTradeJobs()) openSettings(0, false);
}

void PrisMain::öppna() {
    if (!jobs_.canOpen() || !isAsShown()) return;
    openSettings(jobs_.JobbNr(), ÄrStandardFormat(jobs_.jobName()));
}

void PrisMain::openSettings(int JobbNr, bool ÄrStandardJobb) {
    if (!program_.showPrisStyr) return;
    if (const auto saved = program_.showPrisStyr(this, JobbNr, ÄrStandardJobb)) FyllJobbLista(*saved);
    showFirstSteps();
}

void PrisMain::taBort() {
    if (!jobs_.canDelete()) return;
    const std::string title = program_.texts.FormulärSträng(text::prismain::kDeleteTitle);
    const std::vector<Job> shown = jobs_.namesakes();
    const std::string& name = shown.front().name;
    std::string question = title + " " + name + " ?";
    if (shown.size() > 1) {
        question +=
            "\r\n\r\n" + program_.texts.ModulTextMed(text::definitions::kSeveralImports, std::to_string(shown.size()));
    }
    if (program_.boxes.MeddelandeJaNejNej(question, title) != Answer::Yes) return;
    try {
        JobFile(program_.state.dataFolder()).remove(shown);
    } catch (const PlatformError& error) {
        tellNotSaved(error, {.changedElsewhere = text::definitions::kImportChangedNothingDone, .name = name},
                     program_.texts, program_.boxes);
    }
    FyllJobbLista(0);
}

void PrisMain::duplicera() {
    if (!jobs_.canCopy() || running_ || !isAsShown()) return;
    const Job shown = jobs_.row(jobs_.selected()).job;
    const bool withMask = !shown.mask.empty() && program_.boxes.MeddelandeJaNejNej(program_.texts.ModulTextMed(
                                                     text::mainmenu::kAskToCopyMask, shown.mask)) == Answer::Yes;
    int made = 0;
    try {
        made = copyJob(program_.state.dataFolder(), shown, withMask, program_.texts.ModulText(text::copies::kWord));
    } catch (const PlatformError& error) {
        tellNotSaved(error, {.changedElsewhere = text::definitions::kImportChangedNothingDone, .name = shown.name},
                     program_.texts, program_.boxes);
    }
    FyllJobbLista(made);
    if (made > 0) öppna();
}

void PrisMain::sparaMall() {
    if (!jobs_.canRun() || running_ || !isAsShown()) return;
    saveTemplate(program_, jobs_.row(jobs_.selected()).job, [this](const FileQuestion& question) {
        return askForFileToSave(this, question, [](const QString& /*file*/) { return false; });
    });
}

void PrisMain::öppnaMall() {
    if (running_) return;
    const auto ask = [this](const FileQuestion& question) { return askForFileToOpen(this, question); };
    if (const int made = openTemplate(program_, this, ask); made > 0) FyllJobbLista(made);
}

}  // namespace kolmera
