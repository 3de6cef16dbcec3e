#include "import/preview/limitedrun.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "definitions/joboptions.h"
#include "history/changefigures.h"
#include "import/dispatcher.h"
#include "import/preview/preview.h"
#include "lang/errortext.h"
#include "lang/keys/run.h"

namespace kolmera {
namespace {

double percentOf(std::int64_t part, std::int64_t whole) {
    return whole > 0 ? 100.0 * static_cast<double>(part) / static_cast<double>(whole) : 0;
}

double largestChange(const ChangeFigures& figures) {
    double largest = 0;
    for (const PriceFigures& price : figures.prices) {
        for (const auto& extreme : {price.largestRise, price.largestFall}) {
            if (extreme) largest = std::max(largest, std::abs(extreme->percent));
        }
    }
    return largest;
}

/// Of the products that the file has and that were there before. A run that writes price lists alone is measured by
/// their rows.
double changeShare(NetChanges& changes, const ChangeFigures& figures, const RunSummary& summary, double percent) {
    const PriceFigures* headline = figures.headline();
    if (headline == nullptr) return 0;
    const bool products = headline->table == "Produkt";
    const std::int64_t all = products ? summary.changed : summary.priceList;
    return percentOf(rowsBeyond(changes, headline->table, percent), all);
}

double zeroPrices(const ChangeFigures& figures, const RunReport& report) {
    std::int64_t toZero = 0;
    for (const PriceFigures& price : figures.prices) toZero += price.toZero;
    return static_cast<double>(std::max(toZero, report.count(Remark::MissingPrice)));
}

/// What a preview found, as limits measure it.
Limits measured(const Preview& preview, const Limits& limits) {
    NetChanges changes;
    preview.record->forEachChange([&](const RowChange& change) {
        changes.add(change);
        return true;
    });
    changes.finish();
    const RunSummary& summary = preview.summary;
    const ChangeFigures figures = changeFigures(changes, {});
    Limits found;
    found.changeShare = changeShare(changes, figures, summary, limits.changePercent.value_or(Limits::kLargeChange));
    found.largestChange = largestChange(figures);
    found.zeroPrices = zeroPrices(figures, summary.report);
    found.unmatchedShare = percentOf(summary.newProducts + summary.report.count(Remark::NoProduct), summary.records);
    found.fewestRecords = static_cast<double>(summary.records);
    return found;
}

std::string shown(const Locale& locale, double value) {
    constexpr double kTenths = 10;
    return locale.formatNumber(std::round(value * kTenths) / kTenths);
}

/// A line for each limit that is broken; empty when none is.
std::string brokenLines(LanguageTexts& texts, const Locale& locale, const Limits& limits, const Limits& found) {
    std::string lines;
    for (const LimitKind& kind : kLimits) {
        const std::optional<double>& limit = limits.*kind.value;
        const std::optional<double>& value = found.*kind.value;
        if (!limit || !value) continue;
        const bool least = kind.value == &Limits::fewestRecords;
        if (least ? *value >= *limit : *value <= *limit) continue;
        lines += "\r\n" + texts.ModulText(kind.text) + ": " + shown(locale, *value) + " (" +
                 texts.ModulTextMed(text::limits::kLimitIs, locale.formatNumber(*limit)) + ")";
    }
    return lines;
}

/// The limits of the job; none, and told, where they cannot be read.
Limits limitsOf(ImportContext& context, std::string_view job) {
    try {
        return JobOptionsFile(context.state.dataFolder()).limits(job);
    } catch (const PlatformError& error) {
        context.boxes.MeddelandeVarning(context.texts.ModulTextMed(text::limits::kUnreadable, kJobOptionsFile) +
                                        "\r\n\r\n" + errorText(context.texts, error));
        return {};
    }
}

/// What a preview said at its end, with its record missing.
void tellNotChecked(ImportContext& context, const Preview& preview) {
    std::string text = context.texts.ModulText(text::limits::kNotChecked);
    for (const std::string& told : preview.told) text.append("\r\n\r\n").append(told);
    context.boxes.MeddelandeVarning(text, context.texts.ModulText(text::run::kStoppedTitle));
}

/// Whether the run may write.
bool keepsLimits(ImportContext& context, std::string_view jobText, const Limits& limits, bool emptyTables,
                 bool& beyond) {
    const Preview preview = previewRun(context, jobText, {.emptyTables = emptyTables, .withinRun = true});
    if (!preview.summary.completed || preview.summary.cancelled) return false;
    if (!preview.record) {
        tellNotChecked(context, preview);
        return false;
    }
    const std::string lines = brokenLines(context.texts, context.state.locale, limits, measured(preview, limits));
    if (lines.empty()) return true;
    beyond = !context.port.goesBeyondLimits({.title = context.texts.ModulText(text::limits::kBeyondTitle),
                                             .text = context.texts.ModulText(text::limits::kBeyond) + "\r\n" + lines,
                                             .question = context.texts.ModulText(text::limits::kRunAllTheSame)});
    return !beyond;
}

}  // namespace

RunSummary runWithinLimits(ImportContext& context, std::string_view jobText) {
    const Limits limits = limitsOf(context, jobText);
    if (!limits.any()) return Utför(context, jobText);
    bool beyond = false;
    context.mayWrite = [&](bool emptyTables) { return keepsLimits(context, jobText, limits, emptyTables, beyond); };
    RunSummary summary = Utför(context, jobText);
    context.mayWrite = nullptr;
    summary.beyondLimits = beyond;
    return summary;
}

}  // namespace kolmera
