#include "cli/explaincommand.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "import/preview/preview.h"
#include "import/run/pricecalculation.h"
#include "lang/keys/calculation.h"
#include "lang/keys/preview.h"
#include "platform/lettercase.h"

namespace kolmera::cli {

namespace {

using Json = nlohmann::ordered_json;

/// Numbers that a step has not, and texts, are left out.
Json stepJson(const PriceCalculation::KeptStep& step) {
    Json json = {{"step", PriceCalculation::nameOf(step.step)}};
    const bool hasValue = step.step != PriceStep::FileText && !isReason(step.step);
    if (hasValue) json["value"] = step.value;
    if (hasValue && step.step != PriceStep::From && step.step != PriceStep::Written) json["operand"] = step.operand;
    if (step.step == PriceStep::Rate) json["units"] = step.second;
    if (!step.text.empty()) json["text"] = step.text;
    if (!step.source.empty()) json["source"] = step.source;
    return json;
}

std::string json(const PriceCalculation& calculation) {
    Json records = Json::array();
    for (const PriceCalculation::OfRecord& record : calculation.records()) {
        Json prices = Json::array();
        for (const PriceCalculation::Calculation& price : record.calculations) {
            Json steps = Json::array();
            for (const PriceCalculation::KeptStep& step : price.shown()) steps.push_back(stepJson(step));
            const bool net = price.column == PriceTrace::kNetCost;
            if (!steps.empty()) prices.push_back({{"column", net ? "net_cost" : price.column}, {"steps", steps}});
        }
        records.push_back({{"record", record.record}, {"prices", prices}, {"not_written", record.notWritten()}});
    }
    return Json{{"records", records}}.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace

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
    if (calculation.records().empty()) {
        session.say(session.session.text(text::calculation::kNoRecord, arguments.product));
        return exitcode::kStopped;
    }
    surroundings.out << (arguments.output.json ? json(calculation)
                                               : calculation.text(session.session.texts, session.session.state.locale));
    return exitcode::kDone;
}

}  // namespace kolmera::cli
