#include "import/run/runresult.h"

#include <fmt/format.h>

#include "history/changetable.h"
#include "lang/keys/result.h"
#include "lang/keys/run.h"
#include "lang/keys/runs.h"
#include "lang/keys/terminal.h"

namespace kolmera {
namespace {

ModuleKey outcomeOf(const RunSummary& summary) {
    if (summary.cancelled) return text::runs::kCancelled;
    return summary.hasFaults() ? text::runs::kWithRemarks : text::runs::kCompleted;
}

/// What was not taken as it stands: each may have to be corrected.
std::int64_t warningsOf(const RunSummary& summary) {
    std::int64_t warnings = summary.report.failed();
    for (const RemarkKind& kind : kRemarks) {
        if (!kind.asItStands) warnings += summary.report.count(kind.remark);
    }
    return warnings + (summary.readAsOneLine ? 1 : 0) + (summary.preparation.exitStatus != 0 ? 1 : 0);
}

}  // namespace

std::string RunResult::line() const {
    std::string text = heading + ".";
    for (const Figure& figure : figures) {
        text += &figure == &figures.front() ? " " : ", ";
        text += figure.label;
        text += " ";
        text += figure.number;
    }
    return text;
}

RunResult runResult(LanguageTexts& texts, const Locale& locale, const std::string& job, const RunSummary& summary,
                    double seconds) {
    if (!summary.completed) return {};
    const std::int64_t zeros = summary.report.count(Remark::NotNumber) + summary.report.count(Remark::MissingPrice);
    const std::int64_t removed = summary.deleted.products;
    const std::int64_t warnings = warningsOf(summary);
    const struct {
        ModuleKey label;
        std::int64_t number;
        bool always = true, fault = false;
    } figures[] = {{text::terminal::kRecordsRead, summary.records, true, false},
                   {text::terminal::kNewProducts, summary.newProducts, true, false},
                   {text::terminal::kChangedProducts, summary.changed, true, false},
                   {text::run::kSkippedRecords, summary.skipped, true, false},
                   {text::run::kDeletedProducts, removed, false, false},
                   {text::result::kZeros, zeros, true, true},
                   {text::result::kWarnings, warnings, true, true}};
    RunResult result;
    result.heading = fmt::format("{}: {}, {}", job, texts.ModulText(outcomeOf(summary)),
                                 texts.ModulTextMed(text::result::kSeconds, locale.formatFixed(seconds, 1)));
    for (const auto& figure : figures) {
        if (figure.number == 0 && !figure.always) continue;
        result.figures.push_back({.label = texts.ModulText(figure.label),
                                  .number = grouped(figure.number, locale),
                                  .remarkable = figure.fault && figure.number > 0});
    }
    result.good = !summary.cancelled && !summary.hasFaults();
    return result;
}

}  // namespace kolmera
