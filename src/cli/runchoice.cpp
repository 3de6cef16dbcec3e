#include "cli/runchoice.h"

#include <fmt/format.h>

#include <algorithm>
#include <ostream>

#include "lang/keys/history.h"
#include "lang/keys/runs.h"
#include "lang/keys/terminal.h"

namespace kolmera::cli {
namespace {

constexpr struct {
    std::string_view outcome;
    ModuleKey text;
} kOutcomes[] = {{"", text::history::kEndedFromOutside},
                 {"completed", text::history::kCompleted},
                 {"cancelled", text::history::kCancelled},
                 {"stopped", text::history::kStopped}};

}  // namespace

std::vector<RunHeader> listedRuns(Session& session, const RunFolder& folder, std::ostream& err) {
    std::int64_t unreadable = 0;
    std::vector<RunHeader> runs = folder.list(&unreadable);
    if (unreadable > 0) err << session.text(text::history::kUnreadable, fmt::format("{}", unreadable)) << '\n';
    return runs;
}

std::optional<RunHeader> chosenRun(Session& session, const std::vector<RunHeader>& runs, std::string_view name,
                                   std::ostream& err) {
    if (name == "last" && !runs.empty()) return runs.front();
    std::vector<const RunHeader*> found;
    for (const RunHeader& run : runs) {
        if (!name.empty() && run.id.starts_with(name)) found.push_back(&run);
    }
    if (found.size() == 1) return *found.front();
    err << session.text(text::terminal::kError) << ' ';
    if (found.empty()) {
        err << session.text(text::history::kNoSuchRun, name) << '\n';
        return std::nullopt;
    }
    err << session.text(text::history::kAmbiguous, name) << '\n';
    for (const RunHeader* run : found) err << "  " << run->id << ' ' << run->job << '\n';
    return std::nullopt;
}

std::string outcomeText(Session& session, const RunHeader& run) {
    if (run.underWay) return session.text(text::runs::kUnderWay);
    const auto known = std::ranges::find(kOutcomes, run.outcome, [](const auto& row) { return row.outcome; });
    return known == std::end(kOutcomes) ? run.outcome : session.text(known->text);
}

}  // namespace kolmera::cli
