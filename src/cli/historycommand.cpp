#include "cli/historycommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/changeoutput.h"
#include "cli/runchoice.h"
#include "cli/session.h"
#include "cli/texttable.h"
#include "history/runfolder.h"
#include "history/runlist.h"
#include "lang/keys/changes.h"
#include "lang/keys/history.h"
#include "lang/keys/terminal.h"
#include "platform/lettercase.h"

namespace kolmera::cli {
namespace {

using Json = nlohmann::ordered_json;

std::string countText(const RunHeader& run, const char* name) {
    const auto count = countOf(run, name);
    return count ? fmt::format("{}", *count) : std::string();
}

std::vector<std::string> asRow(Session& session, const RunHeader& run) {
    std::string started = run.started.substr(0, std::min<std::size_t>(run.started.size(), 16));
    std::ranges::replace(started, 'T', ' ');
    const bool undo = run.kind == RunKind::Undo;
    return {run.id,
            started,
            undo ? session.text(text::changes::kUndoTitle, run.of) : run.job,
            run.companyName.empty() ? run.companyFile : run.companyName,
            countText(run, "records"),
            countText(run, "new"),
            countText(run, undo ? "changed_back" : "changed"),
            outcomeText(session, run)};
}

}  // namespace

int historyCommand(const HistoryArguments& arguments, const Surroundings& surroundings) {
    Session session(surroundings, arguments.dataFolder);
    if (!session.hasDataFolder(surroundings.err)) return exitcode::kStopped;
    const RunFolder folder(session.state.dataFolder());
    std::int64_t unreadable = 0;
    std::vector<RunHeader> runs = folder.list(&unreadable);
    if (!arguments.company.empty()) {
        std::erase_if(runs, [&](const RunHeader& run) {
            return !equalNoCase(run.companyFile, arguments.company) && !equalNoCase(run.companyName, arguments.company);
        });
    }
    if (arguments.json) {
        Json list = Json::array();
        for (const RunHeader& run : runs) list.push_back(runJson(run));
        surroundings.out << list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
    } else if (runs.empty()) {
        surroundings.out << session.text(text::history::kNoRuns, folder.path().string()) << '\n';
    } else {
        TextTable table({session.text(text::history::kRunHeading), session.text(text::history::kTimeHeading),
                         session.text(text::terminal::kImportHeading), session.text(text::terminal::kCompanyHeading),
                         session.text(text::changes::kRecords), session.text(text::changes::kNewProducts),
                         session.text(text::terminal::kChangedProducts), session.text(text::history::kOutcomeHeading)});
        for (const RunHeader& run : runs) table.add(asRow(session, run));
        table.print(surroundings.out);
    }
    if (unreadable > 0) {
        surroundings.err << session.text(text::history::kUnreadable, fmt::format("{}", unreadable)) << '\n';
    }
    return unreadable > 0 ? exitcode::kPassedOver : exitcode::kDone;
}

}  // namespace kolmera::cli
