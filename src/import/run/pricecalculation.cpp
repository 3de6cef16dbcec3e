#include "import/run/pricecalculation.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <iterator>

#include "db/productcolumns.h"
#include "lang/keys/calculation.h"
#include "lang/keys/run.h"
#include "platform/lettercase.h"
#include "platform/printable.h"

namespace kolmera {
namespace {

using KeptStep = PriceCalculation::KeptStep;
using Calculation = PriceCalculation::Calculation;

class CalculationText {
  public:
    CalculationText(LanguageTexts& texts, const Locale& locale) : texts_(texts), locale_(locale) {}

    void heading(std::int64_t record, std::string_view product) {
        const std::string where = texts_.ModulTextMed(text::run::kRecord, fmt::format("{}", record));
        text_ += fmt::format("{}, {}\n", where, product);
    }
    void calculation(const Calculation& calculation);
    void notWritten(const std::vector<std::string>& columns) {
        if (columns.empty()) return;
        text_ += fmt::format("  {}: {}\n", texts_.ModulText(text::calculation::kNotByImport), fmt::join(columns, ", "));
    }
    [[nodiscard]] std::string text() && { return std::move(text_); }

  private:
    [[nodiscard]] std::string name(std::string_view column) {
        return column == PriceTrace::kNetCost ? texts_.ModulText(text::calculation::kNetCost) : std::string(column);
    }
    /// As it was set: seven digits, which is what 32 bits hold.
    [[nodiscard]] std::string operand(double number) const { return locale_.formatSingle(static_cast<float>(number)); }
    [[nodiscard]] std::string label(const KeptStep& step);
    [[nodiscard]] std::string value(const KeptStep& step) const;

    LanguageTexts& texts_;
    Locale locale_;
    std::string text_;
};

void CalculationText::calculation(const Calculation& calculation) {
    text_ += fmt::format("  {}\n", name(calculation.column));
    for (const KeptStep& step : calculation.shown())
        text_ += isReason(step.step) ? fmt::format("    {}\n", label(step))
                                     : fmt::format("    {}: {}\n", label(step), value(step));
}

std::string CalculationText::value(const KeptStep& step) const {
    constexpr std::size_t kShown = 80;
    if (step.step == PriceStep::FileText) return fmt::format("\"{}\"", printable(step.text, kShown));
    return locale_.formatNumber(step.value);
}

std::string CalculationText::label(const KeptStep& step) {
    const auto with = [&](ModuleKey key, const std::string& var1) { return texts_.ModulTextMed(key, var1); };
    switch (step.step) {
        case PriceStep::FileText:
            return with(text::calculation::kFileText, step.source);
        case PriceStep::Number:
            return with(text::calculation::kNumber, operand(step.operand));
        case PriceStep::NotNumber:
            return texts_.ModulText(text::calculation::kNotNumber);
        case PriceStep::From:
            return with(text::calculation::kFrom, name(step.source));
        case PriceStep::Vat:
            return with(text::calculation::kVat, operand(step.operand));
        case PriceStep::Deduction:
            return with(text::calculation::kDeduction, operand(step.operand));
        case PriceStep::Rate:
            return with(text::calculation::kRate,
                        fmt::format("{} {} / {}", step.text, operand(step.operand), operand(step.second)));
        case PriceStep::Factor:
            return with(text::calculation::kFactor, operand(step.operand));
        case PriceStep::Markup:
            return with(text::calculation::kMarkup, operand(step.operand));
        case PriceStep::Margin:
            return with(text::calculation::kMargin, operand(step.operand));
        case PriceStep::Decimals:
            return with(text::calculation::kDecimals, operand(step.operand));
        case PriceStep::Range:
            return with(text::calculation::kRange,
                        fmt::format("{} ({} - {})", operand(step.operand), step.source, step.text));
        case PriceStep::Kept:
            return texts_.ModulText(text::calculation::kKept);
        case PriceStep::Written:
            return texts_.ModulText(text::calculation::kWritten);
        case PriceStep::CouplingOff:
            return texts_.ModulText(text::calculation::kCouplingOff);
        case PriceStep::NotCoupled:
            return texts_.ModulText(text::calculation::kNotCoupled);
        case PriceStep::NoMarkup:
            return texts_.ModulText(text::calculation::kNoMarkup);
        case PriceStep::NoBase:
            return texts_.ModulText(text::calculation::kNoBase);
    }
    return {};
}

}  // namespace

std::vector<KeptStep> Calculation::shown() const {
    const bool computed = std::ranges::any_of(steps, [](const KeptStep& step) { return !isReason(step.step); });
    std::vector<KeptStep> shown;
    std::ranges::copy_if(steps, std::back_inserter(shown),
                         [&](const KeptStep& step) { return isReason(step.step) != computed; });
    return shown;
}

std::vector<std::string> PriceCalculation::OfRecord::notWritten() const {
    std::vector<std::string> columns;
    for (int level = 0; level <= kPriceLists; ++level) {
        const std::string column = level == 0 ? "Produkt.Inpris" : fmt::format("Produkt.{}Utpris", level);
        if (std::ranges::find(calculations, column, &Calculation::column) == calculations.end())
            columns.push_back(column);
    }
    return columns;
}

std::string_view PriceCalculation::nameOf(PriceStep step) {
    static constexpr std::string_view kNames[] = {"file_text",   "number",    "not_number", "from",    "vat",
                                                  "deduction",   "rate",      "factor",     "markup",  "margin",
                                                  "decimals",    "range",     "kept",       "written", "coupling_off",
                                                  "not_coupled", "no_markup", "no_base"};
    static_assert(std::size(kNames) == static_cast<std::size_t>(PriceStep::NoBase) + 1);
    return kNames[static_cast<std::size_t>(step)];
}

void PriceCalculation::record(std::int64_t number) {
    if (!records_.empty() && !wanted_) records_.pop_back();
    records_.push_back({.record = number, .calculations = {}});
    wanted_ = false;
    current_ = 0;
}

void PriceCalculation::product(std::string_view number) { wanted_ = equalNoCase(number, product_); }

void PriceCalculation::column(std::string_view name) {
    auto& all = calculations();
    const auto found = std::ranges::find(all, name, &Calculation::column);
    current_ = static_cast<std::size_t>(found - all.begin());
    if (found == all.end()) all.push_back({.column = std::string(name), .steps = {}});
}

void PriceCalculation::step(const Step& step) {
    if (records_.empty() || current_ >= calculations().size()) return;
    calculations()[current_].steps.push_back({.step = step.step,
                                              .value = step.value,
                                              .operand = step.operand,
                                              .second = step.second,
                                              .text = std::string(step.text),
                                              .source = std::string(step.source)});
}

void PriceCalculation::written(std::string_view column, double value) {
    auto& all = calculations();
    const auto found = std::ranges::find(all, column, &Calculation::column);
    if (found == all.end()) return;
    current_ = static_cast<std::size_t>(found - all.begin());
    step({.step = PriceStep::Written, .value = value});
}

std::span<const PriceCalculation::OfRecord> PriceCalculation::records() const {
    return std::span(records_).first(records_.size() - (records_.empty() || wanted_ ? 0 : 1));
}

std::string PriceCalculation::text(LanguageTexts& texts, const Locale& locale) const {
    CalculationText text(texts, locale);
    for (const OfRecord& of : records()) {
        text.heading(of.record, product_);
        for (const Calculation& calculation : of.calculations) {
            if (!calculation.steps.empty()) text.calculation(calculation);
        }
        text.notWritten(of.notWritten());
    }
    return std::move(text).text();
}

}  // namespace kolmera
