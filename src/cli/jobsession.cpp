#include "cli/jobsession.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <chrono>
#include <ostream>
#include <sstream>
#include <vector>

#include "cli/nearnames.h"
#include "import/run/filelook.h"
#include "import/run/runmessage.h"
#include "lang/keys/limits.h"
#include "lang/keys/remark.h"
#include "lang/keys/run.h"
#include "lang/keys/source.h"
#include "lang/keys/terminal.h"
#include "platform/lettercase.h"

namespace kolmera::cli {
namespace {

int exitCode(const RunSummary& summary) {
    if (summary.cancelled) return exitcode::kCancelled;
    if (summary.beyondLimits) return exitcode::kBeyondLimits;
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
        case exitcode::kBeyondLimits:
            return session.text(text::limits::kForce);
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

TerminalPort::Doubtful doubtful(const JobArguments& arguments) {
    if (arguments.strict) return TerminalPort::Doubtful::None;
    return arguments.force ? TerminalPort::Doubtful::All : TerminalPort::Doubtful::Harmless;
}

}  // namespace

Surroundings inLocale(const Surroundings& machine, const std::string& locale) {
    Surroundings surroundings = machine;
    if (!locale.empty()) surroundings.locale = Locale(locale == "en" ? Locale::Kind::English : Locale::Kind::Swedish);
    return surroundings;
}

JobSession::JobSession(const JobArguments& arguments, const Surroundings& surroundings)
    : session(surroundings, arguments.dataFolder),
      port(session, surroundings.err, surroundings.cancel, arguments.emptyTables, doubtful(arguments),
           !surroundings.quiet),
      arguments_(arguments),
      surroundings_(surroundings) {
    result.numberForm = numberForm(session.state.locale);
}

std::optional<Job> JobSession::findJob() {
    std::ostringstream told;
    if (!session.hasDataFolder(told)) {
        surroundings_.err << told.str();
        result.messages.emplace_back(trimmed(replaceAll(told.str(), "\n", " ")));
        return std::nullopt;
    }
    auto job = JobFile(absoluteFolder(arguments_.dataFolder)).find(trimmed(arguments_.job));
    if (!job) say(session.text(text::terminal::kNoSuchImport, arguments_.job) + ' ' + nearJobs());
    return job;
}

std::string JobSession::nearJobs() {
    std::vector<std::string> names;
    for (const Job& job : JobFile(absoluteFolder(arguments_.dataFolder)).all()) names.push_back(job.name);
    const std::vector<std::string> near = nearNames(arguments_.job, names);
    constexpr std::size_t kListed = 30;
    if (near.empty() && !names.empty() && names.size() <= kListed)
        return session.text(text::terminal::kJobNames, fmt::format("\"{}\"", fmt::join(names, "\", \"")));
    if (near.empty()) return session.text(text::terminal::kListJobs, arguments_.dataFolder);
    return session.text(text::terminal::kDidYouMean, fmt::format("\"{}\"", fmt::join(near, "\", \"")));
}

void JobSession::carryOut(const Job& job, const std::function<RunSummary(ImportContext&)>& work) {
    const auto start = std::chrono::steady_clock::now();
    MessageBoxes boxes(port, session.state.helpFile);
    CompanyRegister companies(session.state, session.texts, boxes);
    ImportContext context{.state = session.state,
                          .texts = session.texts,
                          .boxes = boxes,
                          .companies = companies,
                          .port = port,
                          .Idag = Date::today(),
                          .JobbNr = job.number,
                          .shown = job};
    context.otherFile = arguments_.file;
    if (!arguments_.file.empty()) {
        surroundings_.err << session.text(text::source::kOtherFile, arguments_.file) << '\n';
        if (!job.command.empty()) surroundings_.err << session.text(text::source::kCommandLeftOut) << '\n';
    }
    result.summary = work(context);
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    result.exitCode = exitCode(result.summary);
}

void JobSession::printSummary() {
    std::ostream& out = surroundings_.out;
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

void JobSession::tellOutcome() {
    if (port.refusedFile()) surroundings_.err << refusal(*port.refusedFile()) << '\n';
    if (surroundings_.verbose) {
        for (const auto& failure : result.summary.report.failures())
            surroundings_.err << failure.statement << ": " << session.explain(failure.error) << '\n';
    }
    std::ostream& stream = result.exitCode == exitcode::kDone ? surroundings_.out : surroundings_.err;
    stream << outcome(session, result.exitCode) << '\n';
}

/// What can be done about a file that was not read.
std::string JobSession::refusal(const DoubtfulFile& file) {
    std::string text = session.text(text::terminal::kNothingChanged);
    text += ' ' + (file.garbage ? session.text(text::terminal::kForce) : session.text(text::terminal::kWithoutStrict));
    if (file.otherNumbers) text += ' ' + session.text(text::terminal::kLocale);
    return text;
}

void JobSession::say(const std::string& message) {
    surroundings_.err << session.text(text::terminal::kError) << ' ' << replaceAll(message, "\r\n", "\n") << '\n';
    result.messages.push_back(message);
}

}  // namespace kolmera::cli
