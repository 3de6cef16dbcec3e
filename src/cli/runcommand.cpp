#include "cli/runcommand.h"

#include <fmt/format.h>

#include <chrono>
#include <fstream>
#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/session.h"
#include "cli/terminalport.h"
#include "definitions/jobfile.h"
#include "import/dispatcher.h"
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
            return session.text(220);
        case exitcode::kPassedOver:
            return session.text(370);
        case exitcode::kCancelled:
            return session.text(222);
        default:
            return session.text(223);
    }
}

// What the run did, each number under its name in the JSON summary and the number of its label.
struct SummaryLine {
    const char* name;
    int label;
    std::int64_t count;
};

std::vector<SummaryLine> summaryLines(const RunSummary& summary) {
    return {{"records", 201, summary.records},
            {"new", 202, summary.newProducts},
            {"changed", 203, summary.changed},
            {"skipped", 204, summary.skipped},
            {"pricelist", 205, summary.priceList},
            {"alternatives", 206, summary.alternatives},
            {"documents", 207, summary.documents},
            {"passed_over", 208, summary.report.failed()},
            {"not_numbers", 213, summary.report.count(Remark::NotNumber)}};
}

void printSummary(Session& session, const std::vector<SummaryLine>& lines, double seconds, std::ostream& out) {
    for (const SummaryLine& line : lines) out << fmt::format("{}: {}\n", session.text(line.label), line.count);
    out << fmt::format("{}: {}\n", session.text(210), session.state.locale.formatFixed(seconds, 2));
}

bool writeSummary(const std::string& file, const std::string& job, const std::vector<SummaryLine>& lines,
                  bool cancelled, double seconds) {
    nlohmann::ordered_json json{{"job", job}};
    for (const SummaryLine& line : lines) json[line.name] = line.count;
    json["cancelled"] = cancelled;
    json["seconds"] = seconds;
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
    stream.close();
    return !stream.fail();
}

}  // namespace

int runCommand(const RunArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings, arguments.dataFolder);
    const auto folder = absoluteFolder(arguments.dataFolder);
    if (!session.hasDataFolder(surroundings.err)) return exitcode::kStopped;
    const auto job = JobFile(folder).find(trimmed(arguments.job));
    if (!job) {
        surroundings.err << session.text(250) << ' ' << session.text(125, arguments.job) << '\n';
        return exitcode::kStopped;
    }

    const auto start = std::chrono::steady_clock::now();
    TerminalPort port(surroundings.err, surroundings.cancel, arguments.emptyTables);
    MessageBoxes boxes(port, session.state.helpFile);
    CompanyRegister companies(session.state, session.texts, boxes);
    ImportContext context{.state = session.state,
                          .texts = session.texts,
                          .boxes = boxes,
                          .companies = companies,
                          .port = port,
                          .Idag = Date::today(),
                          .JobbNr = job->number};
    const RunSummary summary = Utför(context, job->name);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;

    int code = exitCode(summary);
    const auto lines = summaryLines(summary);
    if (summary.completed) printSummary(session, lines, elapsed.count(), surroundings.out);
    (code == exitcode::kDone ? surroundings.out : surroundings.err) << outcome(session, code) << '\n';
    if (!arguments.summaryFile.empty() &&
        !writeSummary(arguments.summaryFile, job->name, lines, summary.cancelled, elapsed.count())) {
        surroundings.err << session.text(250) << ' ' << session.text(253, arguments.summaryFile) << '\n';
        if (code != exitcode::kCancelled) code = exitcode::kStopped;
    }
    return code;
}

}  // namespace kolmera::cli
