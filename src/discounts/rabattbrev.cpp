#include "discounts/rabattbrev.h"

#include <fmt/format.h>

#include <array>

#include "db/conversions.h"

namespace kolmera {
namespace {

constexpr std::string_view kTable = "LevrabattBrev";
constexpr std::array<std::string_view, kDiscountSteps> kColumns = {"1Rabatt", "2Rabatt", "3Rabatt", "4Rabatt",
                                                                   "5Rabatt"};

/// A price file may name any number of codes, most of them unknown, and of any length.
constexpr std::size_t kMostRemembered = 10'000;
constexpr std::size_t kLongestRemembered = 100;  ///< bytes; more than any letter's supplier and code

/// The part of a price that is left behind discounts in per cent, one after the other.
template <typename Discounts>
double remaining(const Discounts& discounts) {
    double left = 1;
    for (const double discount : discounts) left *= 1 - discount / 100;
    return left;
}

}  // namespace

double TotalRabatt(std::span<const float, kDiscountSteps> discounts) { return 100 - remaining(discounts) * 100; }

Rabattbrev::Rabattbrev(SqlLayer& sql, PassedOver& passedOver, PriceTrace* trace)
    : sql_(sql), passedOver_(passedOver), trace_(trace) {
    attempt(passedOver_, kTable,
            [this] { letters_ = sql_.SQLÖppnaTabell(kTable, "Leverantör", options::kReadOnly, true); });
}

double Rabattbrev::BeräknaRabattbrev(std::string_view supplier, std::string_view discountCode) {
    if (!letters_) return 0;
    const std::uint64_t stamp = sql_.FtgDB->stamp(kTable);
    if (stamp != stamp_ || remembered_.size() >= kMostRemembered) remembered_.clear();
    stamp_ = stamp;
    key_.assign(supplier).append(1, '\0').append(discountCode);
    // Who listens hears every step each time.
    const auto known = trace_ ? remembered_.end() : remembered_.find(key_);
    if (known != remembered_.end()) return known->second;
    double fraction = 0;
    const bool read = attempt(passedOver_, kTable, [&] { fraction = readFraction(supplier, discountCode); });
    if (read && key_.size() <= kLongestRemembered) remembered_.emplace(key_, fraction);
    return fraction;
}

double Rabattbrev::readFraction(std::string_view supplier, std::string_view discountCode) {
    const std::array<Value, 2> keys = {std::string(supplier), std::string(discountCode)};
    if (sql_.SQLSökIngenTräff(letters_, "=", keys)) return 0;
    std::array<double, kDiscountSteps> discounts{};
    for (std::size_t step = 0; step < kColumns.size(); ++step) {
        discounts[step] = TillDbl(letters_->value(kColumns[step]), sql_.locale());
    }
    if (trace_) tell(supplier, discountCode, discounts);
    return 1 - remaining(discounts);
}

/// What is left of 100 behind each step.
void Rabattbrev::tell(std::string_view supplier, std::string_view code, std::span<const double> discounts) {
    trace_->column(fmt::format("{} {} {}", kTable, supplier, code));
    for (std::size_t step = 0; step < discounts.size(); ++step) {
        if (discounts[step] == 0) continue;
        trace_->step({.step = PriceStep::Deduction,
                      .value = remaining(discounts.first(step + 1)) * 100,
                      .operand = discounts[step]});
    }
}

}  // namespace kolmera
