#include "cli/explaincommand.h"

#include <ostream>

#include "import/preview/preview.h"
#include "import/run/pricecalculation.h"
#include "lang/keys/calculation.h"
#include "lang/keys/preview.h"
#include "platform/lettercase.h"

namespace kolmera::cli {

int explainCommand(const ExplainArguments& arguments, const Surroundings& machine) {
    const Surroundings surroundings = inLocale(machine, arguments.locale);
    JobSession session(arguments, surroundings);
    const auto job = session.findJob();
    if (!job) return session.result.exitCode;
    PriceCalculation calculation(trimmed(arguments.product));
    std::string commandLeftOut;
    session.carryOut(*job, [&](ImportContext& context) {
        context.trace = &calculation;
        Preview preview =
            previewRun(context, job->name, {.emptyTables = arguments.emptyTables, .runsCommand = arguments.prepare});
        commandLeftOut = std::move(preview.commandLeftOut);
        return std::move(preview.summary);
    });
    if (!commandLeftOut.empty() && !arguments.noPrepare)
        surroundings.err << session.session.text(text::preview::kCommandNotRun, commandLeftOut) << '\n';
    const RunSummary& summary = session.result.summary;
    if (!summary.completed || summary.cancelled) {
        session.tellOutcome();
        return session.result.exitCode;
    }
    const std::string text = calculation.text(session.session.texts, session.session.state.locale);
    if (text.empty()) {
        session.say(session.session.text(text::calculation::kNoRecord, arguments.product));
        return exitcode::kStopped;
    }
    surroundings.out << text;
    return exitcode::kDone;
}

}  // namespace kolmera::cli
