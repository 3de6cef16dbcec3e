#include "cli/previewcommand.h"

#include <ostream>

#include "history/runfolder.h"
#include "history/warnings.h"
#include "import/preview/preview.h"
#include "lang/keys/preview.h"
#include "platform/lettercase.h"

namespace kolmera::cli {

namespace {

/// Prints or saves the changes.
int printChanges(Session& session, const RecordReader& record, const ChangeOutput& output,
                 const Surroundings& surroundings) {
    const std::vector<RunHeader> runs = RunFolder(session.state.dataFolder()).list();
    return cli::printChanges(session, record, previousRun(runs, record.header()), output, surroundings);
}

void tellAbout(const Preview& preview, const PreviewArguments& arguments, Session& session, std::ostream& err) {
    for (const std::string& text : preview.told) err << replaceAll(text, "\r\n", "\n") << '\n';
    if (!preview.commandLeftOut.empty() && !arguments.noPrepare)
        err << session.text(text::preview::kCommandNotRun, preview.commandLeftOut) << '\n';
}

}  // namespace

int previewCommand(const PreviewArguments& arguments, const Surroundings& machine) {
    const Surroundings surroundings = inLocale(machine, arguments.locale);
    JobSession command(arguments, surroundings);
    Session& session = command.session;
    const auto job = command.findJob();
    if (!job) return exitcode::kStopped;
    Preview preview;
    command.carryOut(*job, [&](ImportContext& context) {
        preview =
            previewRun(context, job->name, {.emptyTables = arguments.emptyTables, .runsCommand = arguments.prepare});
        return preview.summary;
    });
    tellAbout(preview, arguments, session, surroundings.err);
    if (preview.summary.completed && !preview.summary.cancelled && !preview.record)
        command.result.exitCode = exitcode::kStopped;
    int code = command.result.exitCode;
    if (!preview.record || code == exitcode::kCancelled || code == exitcode::kStopped) {
        command.tellOutcome();
        return code;
    }
    if (!arguments.output.json) command.printSummary();
    const bool wanted = arguments.output.json || !arguments.output.file.empty();
    const int printed =
        wanted ? printChanges(session, *preview.record, arguments.output, surroundings) : exitcode::kDone;
    if (printed == exitcode::kCancelled || printed == exitcode::kStopped) return printed;
    if (code == exitcode::kDone) code = printed;
    const bool asItStands = code == exitcode::kDone;
    std::ostream& stream = asItStands && !arguments.output.json ? surroundings.out : surroundings.err;
    stream << session.text(asItStands ? text::preview::kNothingChanged : text::preview::kWithRemarks) << '\n';
    return code;
}

}  // namespace kolmera::cli
