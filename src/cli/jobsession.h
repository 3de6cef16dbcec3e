#pragma once

#include <functional>
#include <optional>
#include <string>

#include "cli/session.h"
#include "cli/summaryfile.h"
#include "cli/terminalport.h"
#include "definitions/jobfile.h"
#include "import/run/importcontext.h"

namespace kolmera::cli {

/// What the command line of a command says that carries out a job.
struct JobArguments {
    std::string job;  ///< the job's name; the first job of that name is run
    std::string dataFolder;
    bool emptyTables = false;
    std::string locale;   ///< "sv" or "en": how numbers are written; empty: as the user writes them
    bool strict = false;  ///< stop before anything is written when the price file is not what it seems
    bool force = false;   ///< read it all the same, also when that writes garbage
    std::string file{};   ///< another price file, "-" for standard input; empty: the job's
};

/// The surroundings with the locale that the command line names.
Surroundings inLocale(const Surroundings& machine, const std::string& locale);

/// What the commands share that carry out a job: finding it, its surroundings, and telling how it went.
class JobSession {
  public:
    JobSession(const JobArguments& arguments, const Surroundings& surroundings);

    /// The job; nothing, and told, when there is no such job or data folder.
    std::optional<Job> findJob();
    /// Lets `work` carry out the job, measures the time and notes the exit code.
    void carryOut(const Job& job, const std::function<RunSummary(ImportContext&)>& work);
    /// Prints what was read and written.
    void printSummary();
    /// Says why a price file was not read, and the outcome.
    void tellOutcome();
    /// Says an error.
    void say(const std::string& message);

    Session session;
    TerminalPort port;
    RunResult result{.exitCode = exitcode::kStopped, .summary = {}, .numberForm = {}, .messages = {}};

  private:
    [[nodiscard]] std::string nearJobs();
    [[nodiscard]] std::string refusal(const DoubtfulFile& file);

    const JobArguments& arguments_;
    const Surroundings& surroundings_;
};

}  // namespace kolmera::cli
