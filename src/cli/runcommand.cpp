#include "cli/runcommand.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <chrono>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <sstream>

#include "cli/nearnames.h"
#include "cli/session.h"
#include "cli/summaryfile.h"
#include "cli/terminalport.h"
#include "definitions/jobfile.h"
#include "import/dispatcher.h"
#include "import/run/filelook.h"
#include "import/run/runmessage.h"
#include "lang/errortext.h"
#include "lang/keys/remark.h"
#include "lang/keys/repair.h"
#include "lang/keys/run.h"
#include "lang/keys/terminal.h"
#include "platform/lettercase.h"

namespace kolmera::cli {
namespace {

int exitCode(const RunSummary& summary) {
    if (summary.cancelled) return exitcode::kCancelled;
    if (!summary.completed) return exitcode::kStopped;
    return summary.hasFaults() ? exitcode::kPassedOver : exitcode::kDone;
}

std::string outcome(Session& session, int code) {
    switch (code) {
        case exitcode::kDone:
            return session.text(text::terminal::kDone);
        case exitcode::kPassedOver:
            return session.text(text::terminal::kDoneWithRemarks);
        case exitcode::kCancelled:
            return session.text(text::run::kCancelled);
        default:
            return session.text(text::terminal::kStopped);
    }
}

// What the run did.
struct SummaryLine {
    ModuleKey label;
    std::int64_t count;
    bool always = true;  ///< also when it is 0
};

std::vector<SummaryLine> summaryLines(const RunSummary& summary) {
    const RunReport& report = summary.report;
    return {{text::terminal::kRecordsRead, summary.records},
            {text::terminal::kNewProducts, summary.newProducts},
            {text::terminal::kChangedProducts, summary.changed},
            {text::run::kSkippedRecords, summary.skipped},
            {text::terminal::kSupplierPrices, summary.priceList},
            {text::terminal::kAlternatives, summary.alternatives},
            {text::terminal::kDocuments, summary.documents},
            {text::run::kDeletedProducts, summary.deleted.products, false},
            {text::run::kDeletedSupplierPrices, summary.deleted.priceList, false},
            {text::run::kDeletedAlternatives, summary.deleted.alternatives, false},
            {text::terminal::kGroupsRead, summary.groups, false},
            {text::terminal::kGroupLinesSkipped, summary.groupLinesSkipped, false},
            {text::terminal::kFailedStatements, report.failed()},
            {text::remark::kNotNumbers, report.count(Remark::NotNumber)},
            {text::remark::kMissingPrices, report.count(Remark::MissingPrice)}};
}

void printSummary(Session& session, const RunResult& result, std::ostream& out) {
    for (const SummaryLine& line : summaryLines(result.summary)) {
        if (line.count == 0 && !line.always) continue;
        out << fmt::format("{}: {}\n", session.text(line.label), line.count);
        if (line.label != text::run::kSkippedRecords) continue;
        for (const std::string& reason : skipReasons(session.texts, result.summary.report))
            out << "  " << reason << '\n';
    }
    out << fmt::format("{}: {}\n", session.text(text::terminal::kNumberForm), result.numberForm);
    out << fmt::format("{}: {}\n", session.text(text::terminal::kSeconds),
                       session.state.locale.formatFixed(result.seconds, 2));
}

Locale localeOf(const std::string& name) {
    return Locale(name == "en" ? Locale::Kind::English : Locale::Kind::Swedish);
}

TerminalPort::Doubtful doubtful(const RunArguments& arguments) {
    if (arguments.strict) return TerminalPort::Doubtful::None;
    return arguments.force ? TerminalPort::Doubtful::All : TerminalPort::Doubtful::Harmless;
}

/// One run of the terminal, from the first look at the command line to its summary file.
class TerminalRun {
  public:
    TerminalRun(const RunArguments& arguments, const Surroundings& surroundings)
        : arguments_(arguments),
          surroundings_(surroundings),
          session_(surroundings, arguments.dataFolder),
          port_(surroundings.err, surroundings.cancel, arguments.emptyTables, doubtful(arguments)) {
        result_.numberForm = numberForm(session_.state.locale);
    }

    int run();

  private:
    [[nodiscard]] bool startSummary();
    [[nodiscard]] bool finishSummary();
    void carryOut();
    [[nodiscard]] std::optional<Job> findJob();
    [[nodiscard]] std::string nearJobs();
    void importJob(const Job& job);
    void tellResult();
    [[nodiscard]] std::string refusal(const DoubtfulFile& file);
    void say(const std::string& message);

    const RunArguments& arguments_;
    const Surroundings& surroundings_;
    Session session_;
    TerminalPort port_;
    std::optional<SummaryFile> summaryFile_;
    RunResult result_{.exitCode = exitcode::kStopped, .summary = {}, .numberForm = {}, .messages = {}};
};

int TerminalRun::run() {
    if (!startSummary()) return port_.cancelled() ? exitcode::kCancelled : exitcode::kStopped;
    try {
        carryOut();
    } catch (const PlatformError& error) {
        say(errorText(session_.texts, error));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        say(session_.text(text::terminal::kUnexpectedError, error.what()));
    }
    if (!finishSummary() && result_.exitCode != exitcode::kCancelled) return exitcode::kStopped;
    return result_.exitCode;
}

bool TerminalRun::startSummary() {
    if (arguments_.summaryFile.empty()) return true;
    try {
        summaryFile_.emplace(arguments_.summaryFile, arguments_.job, surroundings_.cancel);
        return true;
    } catch (const PlatformError& error) {
        say(session_.text(text::terminal::kSummaryNotWritten, arguments_.summaryFile) + ' ' +
            errorText(session_.texts, error));
        return false;
    }
}

bool TerminalRun::finishSummary() {
    if (!summaryFile_) return true;
    const auto& told = port_.messages();
    result_.messages.insert(result_.messages.end(), told.begin(), told.end());
    try {
        summaryFile_->finish(summaryJson(session_.texts, arguments_.job, result_));
        return true;
    } catch (const PlatformError& error) {
        say(session_.text(text::terminal::kSummaryNotWritten, arguments_.summaryFile) + ' ' +
            errorText(session_.texts, error));
        return false;
    }
}

void TerminalRun::carryOut() {
    const auto job = findJob();
    if (!job) return;
    const auto start = std::chrono::steady_clock::now();
    importJob(*job);
    result_.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    result_.exitCode = exitCode(result_.summary);
    tellResult();
}

std::optional<Job> TerminalRun::findJob() {
    std::ostringstream told;
    if (!session_.hasDataFolder(told)) {
        surroundings_.err << told.str();
        result_.messages.emplace_back(trimmed(replaceAll(told.str(), "\n", " ")));
        return std::nullopt;
    }
    auto job = JobFile(absoluteFolder(arguments_.dataFolder)).find(trimmed(arguments_.job));
    if (!job) say(session_.text(text::terminal::kNoSuchImport, arguments_.job) + ' ' + nearJobs());
    return job;
}

std::string TerminalRun::nearJobs() {
    std::vector<std::string> names;
    for (const Job& job : JobFile(absoluteFolder(arguments_.dataFolder)).all()) names.push_back(job.name);
    const std::vector<std::string> near = nearNames(arguments_.job, names);
    if (near.empty()) return session_.text(text::terminal::kListJobs, arguments_.dataFolder);
    return session_.text(text::terminal::kDidYouMean, fmt::format("\"{}\"", fmt::join(near, "\", \"")));
}

void TerminalRun::importJob(const Job& job) {
    MessageBoxes boxes(port_, session_.state.helpFile);
    CompanyRegister companies(session_.state, session_.texts, boxes);
    ImportContext context{.state = session_.state,
                          .texts = session_.texts,
                          .boxes = boxes,
                          .companies = companies,
                          .port = port_,
                          .Idag = Date::today(),
                          .JobbNr = job.number,
                          .shown = job};
    result_.summary = Utför(context, job.name);
    if (!companies.damagedCompany().empty()) say(session_.text(text::repair::kDamaged, companies.damagedCompany()));
}

void TerminalRun::tellResult() {
    if (result_.summary.completed) printSummary(session_, result_, surroundings_.out);
    if (port_.refusedFile()) surroundings_.err << refusal(*port_.refusedFile()) << '\n';
    std::ostream& stream = result_.exitCode == exitcode::kDone ? surroundings_.out : surroundings_.err;
    stream << outcome(session_, result_.exitCode) << '\n';
}

/// What can be done about a file that was not read.
std::string TerminalRun::refusal(const DoubtfulFile& file) {
    std::string text = session_.text(text::terminal::kNothingChanged);
    text +=
        ' ' + (file.garbage ? session_.text(text::terminal::kForce) : session_.text(text::terminal::kWithoutStrict));
    if (file.otherNumbers) text += ' ' + session_.text(text::terminal::kLocale);
    return text;
}

void TerminalRun::say(const std::string& message) {
    surroundings_.err << session_.text(text::terminal::kError) << ' ' << message << '\n';
    result_.messages.push_back(message);
}

}  // namespace

int runCommand(const RunArguments& arguments, const Surroundings& machine) {
    Surroundings surroundings = machine;
    if (!arguments.locale.empty()) surroundings.locale = localeOf(arguments.locale);
    return TerminalRun(arguments, surroundings).run();
}

}  // namespace kolmera::cli
