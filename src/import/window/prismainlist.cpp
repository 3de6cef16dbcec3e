#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QScrollBar>
#include <QTreeView>
#include <algorithm>
#include <limits>
#include <map>
#include <string>
#include <utility>

#include "definitions/pricefilepath.h"
#include "history/runlist.h"
#include "import/window/firststepspanel.h"
#include "import/window/joblistmodel.h"
#include "import/window/prismain.h"
#include "lang/errortext.h"
#include "lang/keys/definitions.h"
#include "lang/keys/mainmenu.h"
#include "lang/keys/prismain.h"
#include "platform/attempt.h"
#include "platform/lettercase.h"
#include "registers/window/registerswindow.h"
#include "startup/suppliernames.h"
#include "ui/lists.h"
#include "ui/qttext.h"
#include "ui/searchbox.h"

namespace kolmera {

// The job list: filled, followed and searched.

namespace {

constexpr std::chrono::seconds kLookEvery{20};

/// "2026-11-23 08:15 Klar"
std::string lastRunText(LanguageTexts& texts, const LastRun& last) {
    constexpr std::size_t kToMinutes = 16;
    std::string text = last.run.started.substr(0, kToMinutes);
    std::ranges::replace(text, 'T', ' ');
    return text + " " + (last.takenBack ? texts.ModulText(text::mainmenu::kTakenBack) : outcomeText(texts, last.run));
}

}  // namespace

/// The first letter of a search opens the companies for the names of their suppliers, once until the list is read anew.
void PrisMain::nameSuppliers() {
    if (std::exchange(suppliersNamed_, true)) return;
    const Hourglass reading(program_.boxes.port());
    for (const std::string& company : jobs_.companies())
        jobs_.tellSuppliers(company, supplierNames(program_.state, company));
    search_->apply();
}

/// A choice among the companies of the jobs, where there is one to make.
void PrisMain::offerCompanies() {
    suppliersNamed_ = false;
    const std::vector<std::string> companies = jobs_.companies();
    const QVariant chosen = company_->currentData();
    company_->clear();
    company_->addItem(toQt(program_.texts.ModulText(text::mainmenu::kAllCompanies)), QString());
    for (const std::string& company : companies) company_->addItem(toQt(properCase(company)), toQt(company));
    company_->setCurrentIndex(std::max(company_->findData(chosen), 0));
    if (company_->currentIndex() == 0) search_->alsoShows = nullptr;
    companyLabel_->setVisible(companies.size() > 1);
    company_->setVisible(companies.size() > 1);
}

void PrisMain::FyllJobbLista(int JobbNr) { fill(JobbNr, program_.state.settings.get("Start", "Kolmera")); }

std::vector<JobRow> PrisMain::readRows() {
    const StartState& state = program_.state;
    return jobRows(program_.texts, {.drives = state.drives,
                                    .dataFolder = state.dataFolder(),
                                    .programFolder = state.programFolder(),
                                    .locale = state.locale});
}

/// Below 1 the job of that name is selected.
void PrisMain::fill(int JobbNr, const std::string& otherwise) {
    std::vector<JobRow> rows;
    try {
        rows = readRows();
    } catch (const PlatformError& error) {
        program_.boxes.MeddelandeVarning(
            program_.texts.ModulTextMed(text::prismain::kCannotShowImports, errorText(program_.texts, error)));
    }
    showRows(std::move(rows), JobbNr, otherwise);
    // A job that is to be seen, and that the search does not find, ends the search.
    const int row = jobs_.selected();
    if (JobbNr >= 1 && row != JobTable::kNoRow && lista_->isRowHidden(row, {})) {
        company_->setCurrentIndex(0);
        search_->alsoShows = nullptr;
        search_->clear();
    }
    search_->apply();
}

void PrisMain::showRows(std::vector<JobRow> rows, int JobbNr, const std::string& otherwise) {
    model_->fill(std::move(rows), JobbNr, otherwise);
    offerCompanies();
    showSelection();
    showFirstSteps();
    present();
    watchFolders();
}

void PrisMain::showFirstSteps() {
    steps_ = firstSteps(program_.state, jobs_.jobs());
    stepsPanel_->present(steps_, !running_);
}

void PrisMain::openRegisters(std::string_view name) {
    showRegisters(program_, this, name);
    showFirstSteps();
}

void PrisMain::beginWatching() {
    readsLastRuns_.setSingleShot(true);
    connect(&readsLastRuns_, &QTimer::timeout, this, [this] { readLastRuns(); });
    connect(&looks_, &QTimer::timeout, this, [this] {
        if (isActiveWindow()) watch_.look();
    });
    looks_.start(kLookEvery);
}

/// Several programs change a data folder: what the list shows is looked up again when something moves there.
void PrisMain::watchFolders() {
    const StartState& state = program_.state;
    const RunFolder runs(state.dataFolder());
    std::vector<std::filesystem::path> paths{state.dataFolder(), runs.path()};
    for (const Job& job : jobs_.jobs()) {
        const bool removable = state.drives.kind(job.priceFile) == DriveKind::Removable;
        if (job.priceFile.empty() || removable) continue;
        const auto file = findPriceFile(job.priceFile, state.drives, state.dataFolder(), state.programFolder());
        paths.push_back(file);
        paths.push_back(file.parent_path());
    }
    watch_.watch(paths);
    lastRuns_.look();
    readsLastRuns_.start();
}

/// Never under a run, or under a window that works on the selected job.
void PrisMain::refresh() {
    if (running_ || QApplication::activeModalWidget() != nullptr || QApplication::activePopupWidget() != nullptr)
        return;
    try {
        std::vector<JobRow> rows = readRows();
        if (jobs_.has(rows)) {
            watchFolders();
            return;
        }
        constexpr int kNoJob = std::numeric_limits<int>::max();
        const int selected = jobs_.selectedAmong(rows);
        const int scrolled = lista_->verticalScrollBar()->value();
        showRows(std::move(rows), selected > 0 ? selected : kNoJob, {});
        search_->apply();
        lista_->verticalScrollBar()->setValue(scrolled);
    } catch (const PlatformError&) {
        // The folder cannot be read now. What the list shows stays; who does something with it is told.
    }
}

/// A few records at a time, so that the window stays alive while there are many.
void PrisMain::readLastRuns() {
    constexpr int kAtATime = 4;
    std::vector<std::string> names;
    for (const Job& job : jobs_.jobs()) names.push_back(job.name);
    if (lastRuns_.read(kAtATime, names)) readsLastRuns_.start();
    std::map<std::string, std::string> texts;
    for (const std::string& name : names) {
        if (const auto last = lastRuns_.of(name)) texts[name] = lastRunText(program_.texts, *last);
    }
    model_->tellLastRuns(std::move(texts));
}

/// Whether the selected job is stored as the list shows it. If not, the user is told, and the list is read again.
bool PrisMain::isAsShown() {
    const Job shown = jobs_.row(jobs_.selected()).job;
    std::optional<Job> stored;
    PassedOverSilently passedOver;  // filling the list tells of it
    attempt(passedOver, shown.name, [&] { stored = JobFile(program_.state.dataFolder()).read(shown.number); });
    if (stored == shown) return true;
    program_.boxes.MeddelandeVarning(
        program_.texts.ModulTextMed(text::definitions::kImportChangedNothingDone, shown.name));
    fill(0, shown.name);
    return false;
}

// The view shows the row that the table has selected.
void PrisMain::showSelection() { selectRow(*lista_, jobs_.selected()); }

}  // namespace kolmera
