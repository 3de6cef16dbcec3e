#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "lang/languagetexts.h"
#include "platform/locale.h"
#include "pricing/pricetrace.h"

namespace kolmera {

/// How the prices of one product came about in a run: keeps what the trace tells of the records that are about it.
class PriceCalculation final : public PriceTrace {
  public:
    struct KeptStep {
        PriceStep step;
        double value, operand, second;
        std::string text, source;
    };
    struct Calculation {
        std::string column;
        std::vector<KeptStep> steps;

        /// The steps that led to a price or, where there is none, why.
        [[nodiscard]] std::vector<KeptStep> shown() const;
    };
    struct OfRecord {
        std::int64_t record = 0;
        std::vector<Calculation> calculations;

        /// The product's prices that the import does not write.
        [[nodiscard]] std::vector<std::string> notWritten() const;
    };

    explicit PriceCalculation(std::string_view product) : product_(product) {}

    void record(std::int64_t number) override;
    void product(std::string_view number) override;
    void column(std::string_view name) override;
    void step(const Step& step) override;
    void written(std::string_view column, double value) override;

    [[nodiscard]] std::span<const OfRecord> records() const;
    /// The name of a step in JSON.
    static std::string_view nameOf(PriceStep step);
    /// All of it as lines for a person; empty when no record was about the product.
    [[nodiscard]] std::string text(LanguageTexts& texts, const Locale& locale) const;

  private:
    [[nodiscard]] std::vector<Calculation>& calculations() { return records_.back().calculations; }

    std::string product_;
    std::vector<OfRecord> records_;  ///< the last one is the one at hand
    bool wanted_ = true;             ///< it is about the product
    std::size_t current_ = 0;        ///< of its calculations
};

}  // namespace kolmera
