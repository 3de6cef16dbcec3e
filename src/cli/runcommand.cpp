#include "cli/runcommand.h"

#include <new>
#include <nlohmann/json.hpp>
#include <optional>

#include "import/preview/limitedrun.h"
#include "lang/errortext.h"
#include "lang/keys/terminal.h"

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
    void sayNotWritten(const PlatformError& error);

    const RunArguments& arguments_;
    const Surroundings& surroundings_;
    JobSession job_;
    std::optional<SummaryFile> summaryFile_;
};

int TerminalRun::run() {
    if (!startSummary()) return job_.port.cancelled() ? exitcode::kCancelled : exitcode::kStopped;
    try {
        carryOut();
    } catch (const PlatformError& error) {
        job_.say(errorText(job_.session.texts, error));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        job_.say(job_.session.text(text::terminal::kUnexpectedError, error.what()));
    }
    if (!finishSummary() && job_.result.exitCode != exitcode::kCancelled) return exitcode::kStopped;
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
        summaryFile_->finish(summaryJson(job_.session.texts, arguments_.job, job_.result));
        return true;
    } catch (const PlatformError& error) {
        sayNotWritten(error);
        return false;
    }
}

void TerminalRun::sayNotWritten(const PlatformError& error) {
    job_.say(job_.session.text(text::terminal::kSummaryNotWritten, arguments_.summaryFile) + ' ' +
             errorText(job_.session.texts, error));
}

void TerminalRun::carryOut() {
    const auto job = job_.findJob();
    if (!job) return;
    job_.carryOut(*job, [&](ImportContext& context) {
        RecordKeeping record = keptInDataFolder(context.state);
        context.record = &record;
        return runWithinLimits(context, job->name);
    });
    if (job_.result.summary.completed) job_.printSummary();
    job_.tellOutcome();
}

}  // namespace

int runCommand(const RunArguments& arguments, const Surroundings& machine) {
    const Surroundings surroundings = inLocale(machine, arguments.locale);
    return TerminalRun(arguments, surroundings).run();
}

}  // namespace kolmera::cli
