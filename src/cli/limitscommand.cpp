#include "cli/limitscommand.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>

#include "cli/jobsession.h"
#include "cli/printablelines.h"
#include "definitions/joboptions.h"
#include "definitions/limitseditor.h"

namespace kolmera::cli {
namespace {

/// Whether "NAME=NUMBER" could be written into its row.
bool set(LimitsEditor& editor, const std::string& wanted) {
    const std::size_t sign = wanted.find('=');
    const auto row = std::ranges::find(editor.rows, std::string_view(wanted).substr(0, sign), &LimitsEditor::Row::name);
    if (sign == std::string::npos || row == editor.rows.end()) return false;
    row->text = wanted.substr(sign + 1);
    return !editor.unreadable();
}

void print(const LimitsEditor& editor, Session& session, const std::string& job, std::ostream& terminal) {
    PrintableStream out(terminal);
    const auto isSet = [](const LimitsEditor::Row& row) { return !row.text.empty(); };
    if (std::ranges::none_of(editor.rows, isSet)) out << session.text(text::limits::kNone, job) << '\n';
    for (const LimitsEditor::Row& row : editor.rows) {
        if (isSet(row)) out << row.name << '=' << row.text << "  " << row.caption << '\n';
    }
}

}  // namespace

int limitsCommand(const LimitsArguments& arguments, const Surroundings& surroundings) {
    const JobArguments named{.job = arguments.job, .dataFolder = arguments.dataFolder, .locale = {}};
    JobSession found(named, surroundings);
    const auto job = found.findJob();
    if (!job) return exitcode::kStopped;
    Session& session = found.session;
    JobOptionsFile options(session.state.dataFolder());
    const Limits stored = options.limits(job->name);
    LimitsEditor editor(session.texts, session.state.locale, arguments.clear ? Limits{} : stored);
    for (const std::string& wanted : arguments.set) {
        if (set(editor, wanted)) continue;
        found.say(session.text(text::limits::kNoSuchLimit, wanted));
        for (const LimitsEditor::Row& row : editor.rows)
            surroundings.err << "  " << row.name << "  " << row.caption << '\n';
        return exitcode::kUsage;
    }
    if (editor.limits() != stored) options.setLimits(job->name, editor.limits());
    if (arguments.json) {
        const Limits limits = editor.limits();
        auto json = nlohmann::ordered_json::object();
        for (const LimitKind& kind : kLimits) {
            if (const auto& limit = limits.*kind.value) json[std::string(kind.name)] = *limit;
        }
        surroundings.out << json.dump(2) << '\n';
    } else {
        print(editor, session, job->name, surroundings.out);
    }
    return exitcode::kDone;
}

}  // namespace kolmera::cli
