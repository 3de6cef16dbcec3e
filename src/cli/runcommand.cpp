#include "cli/runcommand.h"

#include <new>
#include <nlohmann/json.hpp>
#include <optional>

#include "cli/rejectsoutput.h"
#include "definitions/pricefilepath.h"
#include "history/runfolder.h"
#include "import/preview/limitedrun.h"
#include "import/rejects/rejectfile.h"
#include "lang/keys/rejects.h"
#include "lang/keys/terminal.h"
#include "platform/systemuser.h"

namespace kolmera::cli {
namespace {

/// One run of the terminal, from the first look at the command line to its summary file.
class TerminalRun {
  public:
    TerminalRun(const RunArguments& arguments, const Surroundings& surroundings)
        : arguments_(arguments), surroundings_(surroundings), job_(arguments, surroundings) {}

    int run();

  private:
    [[nodiscard]] bool startSummary();
    [[nodiscard]] bool finishSummary();
    void carryOut();
    [[nodiscard]] bool rejectsHaveAPlace(const Job& job);
    [[nodiscard]] bool finishRejects();
    void sayNotWritten(const PlatformError& error);

    const RunArguments& arguments_;
    const Surroundings& surroundings_;
    JobSession job_;
    std::optional<SummaryFile> summaryFile_;
    std::optional<RecordKeeping> record_;
};

int TerminalRun::run() {
    if (!startSummary()) return job_.port.cancelled() ? exitcode::kCancelled : exitcode::kStopped;
    try {
        carryOut();
    } catch (const PlatformError& error) {
        job_.say(job_.session.explain(error));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        job_.say(job_.session.text(text::terminal::kUnexpectedError, error.what()));
    }
    const bool rejectsWritten = finishRejects();
    if (!(finishSummary() && rejectsWritten) && job_.result.exitCode != exitcode::kCancelled) return exitcode::kStopped;
    return job_.result.exitCode;
}

bool TerminalRun::startSummary() {
    if (arguments_.summaryFile.empty()) return true;
    try {
        summaryFile_.emplace(arguments_.summaryFile, arguments_.job, surroundings_.cancel);
        return true;
    } catch (const PlatformError& error) {
        sayNotWritten(error);
        return false;
    }
}

bool TerminalRun::finishSummary() {
    if (!summaryFile_) return true;
    const auto& told = job_.port.messages();
    job_.result.messages.insert(job_.result.messages.end(), told.begin(), told.end());
    try {
        auto summary = summaryJson(job_.session.texts, arguments_.job, job_.result);
        if (!arguments_.file.empty()) summary["price_file"] = arguments_.file;
        summaryFile_->finish(summary);
        return true;
    } catch (const PlatformError& error) {
        sayNotWritten(error);
        return false;
    }
}

void TerminalRun::sayNotWritten(const PlatformError& error) {
    job_.say(job_.session.text(text::terminal::kSummaryNotWritten, arguments_.summaryFile) + ' ' +
             job_.session.explain(error));
}

void TerminalRun::carryOut() {
    const auto job = job_.findJob();
    if (!job || !rejectsHaveAPlace(*job)) return;
    job_.carryOut(*job, [&](ImportContext& context) {
        context.record = &record_.emplace(keptInDataFolder(context.state));
        if (std::string login = SystemUser::current().login; !login.empty()) record_->user = std::move(login);
        return runWithinLimits(context, job->name);
    });
    if (job_.result.summary.completed) job_.printSummary();
    job_.tellOutcome();
}

bool TerminalRun::rejectsHaveAPlace(const Job& job) {
    const StartState& state = job_.session.state;
    const auto priceFile = arguments_.file.empty()
                               ? findPriceFile(job.priceFile, state.drives, state.dataFolder(), state.programFolder())
                               : std::filesystem::absolute(arguments_.file);
    if (arguments_.rejectsFile.empty() || !isPriceFile(arguments_.rejectsFile, priceFile)) return true;
    job_.say(job_.session.text(text::rejects::kIsPriceFile, priceFile.string()));
    return false;
}

bool TerminalRun::finishRejects() {
    if (arguments_.rejectsFile.empty() || !record_) return true;
    if (record_->failure) {
        job_.say(job_.session.text(text::rejects::kNoRecord));
        return false;
    }
    if (record_->id.empty()) return true;  // nothing was read
    const RunFolder runs = RunFolder::at(record_->folder);
    std::string told;
    const bool written = printRejects(job_.session, runs, record_->id, arguments_.rejectsFile, surroundings_, told);
    job_.result.messages.push_back(std::move(told));
    return written;
}

}  // namespace

int runCommand(const RunArguments& arguments, const Surroundings& machine) {
    const Surroundings surroundings = inLocale(machine, arguments.locale);
    return TerminalRun(arguments, surroundings).run();
}

}  // namespace kolmera::cli
