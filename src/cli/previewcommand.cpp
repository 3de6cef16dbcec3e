#include "cli/previewcommand.h"

#include <ostream>

#include "import/preview/preview.h"
#include "lang/keys/preview.h"
#include "platform/lettercase.h"

namespace kolmera::cli {

int previewCommand(const PreviewArguments& arguments, const Surroundings& machine) {
    const Surroundings surroundings = inLocale(machine, arguments.locale);
    JobSession session(arguments, surroundings);
    const auto job = session.findJob();
    if (!job) return session.result.exitCode;
    Preview preview;
    session.carryOut(*job, [&](ImportContext& context) {
        preview =
            previewRun(context, job->name, {.emptyTables = arguments.emptyTables, .runsCommand = arguments.prepare});
        return preview.summary;
    });
    for (const std::string& text : preview.told) surroundings.err << replaceAll(text, "\r\n", "\n") << '\n';
    if (!preview.commandLeftOut.empty() && !arguments.noPrepare)
        surroundings.err << session.session.text(text::preview::kCommandNotRun, preview.commandLeftOut) << '\n';
    const RunResult& result = session.result;
    if (!result.summary.completed || result.summary.cancelled) {
        session.tellOutcome();
        return result.exitCode;
    }
    session.printSummary();
    const bool asItStands = result.exitCode == exitcode::kDone;
    (asItStands ? surroundings.out : surroundings.err)
        << session.session.text(asItStands ? text::preview::kNothingChanged : text::preview::kWithRemarks) << '\n';
    return result.exitCode;
}

}  // namespace kolmera::cli
