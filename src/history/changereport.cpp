#include "history/changereport.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include "history/captions.h"
#include "history/changetable.h"
#include "history/warnings.h"
#include "lang/keys/changes.h"
#include "lang/keys/run.h"
#include "lang/keys/warning.h"

namespace kolmera {
namespace {

constexpr std::int64_t kChangesBetweenLooks = 1000;

}  // namespace

ChangeReport::ChangeReport(RecordSource source, LanguageTexts& texts, const Locale& locale,
                           std::function<std::string(std::string_view)> remarkText)
    : source_(std::move(source)), texts_(texts), locale_(locale), remarkText_(std::move(remarkText)) {}

bool ChangeReport::read(const std::function<bool(std::int64_t)>& keepOn) {
    std::int64_t count = 0;
    bool whole = true;
    source_.forEachChange([&](const RowChange& change) {
        changes_.add(change);
        if (++count % kChangesBetweenLooks == 0) whole = keepOn(count);
        return whole;
    });
    changes_.finish();
    if (!whole) return false;
    figures_ = changeFigures(changes_, source_.header.counts);
    list_.emplace(changes_, texts_, locale_);
    readNotices();
    return true;
}

void ChangeReport::readNotices() {
    std::map<std::string, Notice> notices;
    source_.forEachRemark([&](const RecordRemark& remark) {
        notices[remark.kind].records.push_back(remark.record);
        return true;
    });
    for (auto& [kind, notice] : notices) {
        notice.name = kind;
        notice.text = remarkText_(kind);
        list_->mark(static_cast<int>(notices_.size()), notice.records);
        notices_.push_back(std::move(notice));
    }
}

void ChangeReport::warn(const RunHeader* previous) {
    constexpr ModuleKey kTexts[] = {
        text::warning::kSameFile,       text::warning::kOlderFile,    text::warning::kFewerRecords,
        text::run::kReadAsOneLineTitle, text::changes::kToZero,       text::warning::kJumps,
        text::warning::kMedianChange,   text::warning::kNewSuppliers, text::warning::kTwice,
        text::warning::kNeverNumber,    text::warning::kHeading,      text::warning::kCharacters,
        text::warning::kMostUnmatched};
    static_assert(std::size(kTexts) == std::size(kWarningNames));
    std::vector<Notice> warnings;
    for (RunWarning& found : runWarnings(source_.header, changes_, figures_, source_.forEachRemark, previous)) {
        const auto row = static_cast<std::size_t>(found.warning);
        if (found.warning == Warning::MedianChange) found.detail = percentText(*figures_.headline()->median, locale_);
        warnings.push_back({.warning = true,
                            .name = std::string(kWarningNames[row]),
                            .text = texts_.ModulTextMed(kTexts[row], found.detail),
                            .records = std::move(found.records)});
    }
    warn(std::move(warnings));
}

void ChangeReport::warn(std::vector<Notice> warnings) {
    notices_.insert(notices_.begin(), std::make_move_iterator(warnings.begin()),
                    std::make_move_iterator(warnings.end()));
    list_->unmark();
    for (std::size_t number = 0; number < notices_.size(); ++number) {
        list_->mark(static_cast<int>(number), notices_[number].records);
    }
}

std::string ChangeReport::title() const {
    constexpr ModuleKey kTitles[] = {text::changes::kRunTitle, text::changes::kPreviewTitle, text::changes::kUndoTitle};
    return texts_.ModulTextMed(kTitles[static_cast<std::size_t>(header().kind)], header().job);
}

std::string ChangeReport::origin() const {
    const RunHeader& run = header();
    std::string started = run.started;
    std::ranges::replace(started, 'T', ' ');
    const std::string company = run.companyName.empty() ? run.companyFile : run.companyName;
    std::string line;
    for (const std::string& part : {started, run.user, run.priceFile.path, company}) {
        if (!part.empty()) line.append(line.empty() ? "" : " \u00B7 ").append(part);
    }
    if (run.ended.empty() && run.kind != RunKind::Preview) {
        line.append(" \u00B7 ").append(texts_.ModulText(text::changes::kNotEnded));
    }
    return line;
}

std::string ChangeReport::extreme(const std::optional<PriceFigures::Extreme>& extreme) const {
    if (!extreme) return "\u2013";
    return fmt::format("{} ({})", percentText(extreme->percent, locale_), extreme->product);
}

std::vector<ChangeReport::Figure> ChangeReport::figures() const {
    std::vector<Figure> figures;
    const auto add = [&](ModuleKey caption, std::string value) {
        figures.push_back({texts_.ModulText(caption), std::move(value)});
    };
    const auto addCount = [&](ModuleKey caption, std::optional<std::int64_t> count) {
        if (count) add(caption, grouped(*count, locale_));
    };
    const PriceFigures none;
    const PriceFigures& price = figures_.headline() == nullptr ? none : *figures_.headline();
    addCount(text::changes::kRecords, figures_.records);
    addCount(text::changes::kSkipped, figures_.skipped);
    addCount(text::changes::kNewProducts, figures_.newProducts);
    if (figures_.removedProducts > 0) addCount(text::changes::kRemovedProducts, figures_.removedProducts);
    addCount(text::changes::kRaised, price.raised);
    addCount(text::changes::kLowered, price.lowered);
    addCount(text::changes::kUnchanged, figures_.unchanged);
    if (price.toZero > 0) addCount(text::changes::kToZero, price.toZero);
    add(text::changes::kMedian, price.median ? percentText(*price.median, locale_) : "\u2013");
    add(text::changes::kLargestRise, extreme(price.largestRise));
    add(text::changes::kLargestFall, extreme(price.largestFall));
    return figures;
}

std::string ChangeReport::lineOf(const Notice& notice) const {
    if (notice.records.empty()) return notice.text;
    return fmt::format("{}: {}", notice.text, grouped(static_cast<std::int64_t>(notice.records.size()), locale_));
}

std::string ChangeReport::histogramCaption() const {
    const PriceFigures* price = figures_.headline();
    if (price == nullptr) return {};
    const auto table = std::ranges::find(changes_.tables(), price->table, &NetChanges::Table::name);
    return texts_.ModulTextMed(text::changes::kHistogram, columnCaption(texts_, table->definition, price->column));
}

std::string ChangeReport::barCaption(std::size_t bar) const {
    if (bar == 0) return fmt::format("\u2264 {}", kHistogramEdges.front());
    if (bar == kHistogramEdges.size()) return fmt::format("\u2265 {}", kHistogramEdges.back());
    return fmt::format("{}..{}", kHistogramEdges.at(bar - 1), kHistogramEdges.at(bar));
}

std::string ChangeReport::histogramText() const {
    const PriceFigures* price = figures_.headline();
    if (price == nullptr) return {};
    std::string text = histogramCaption() + ": ";
    bool first = true;
    for (std::size_t bar = 0; bar < kHistogramBars; ++bar) {
        if (price->histogram.at(bar) == 0) continue;
        text += fmt::format("{}{} %: {}", first ? "" : ", ", barCaption(bar), price->histogram.at(bar));
        first = false;
    }
    return text;
}

}  // namespace kolmera
