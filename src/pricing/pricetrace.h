#pragma once

#include <cstdint>
#include <string_view>

namespace kolmera {

/// What a step of the calculation of a price does. Each tells the value behind it; `operand`, `second` and `text` are
/// what it worked with.
enum class PriceStep {
    FileText,   ///< `text` stands in the price file, in the column `source`; no value
    Number,     ///< the text as a number with `operand` implied decimals
    NotNumber,  ///< the text is none
    From,       ///< the calculation begins with the value of the column `source`
    Vat,        ///< `operand` per cent more
    Deduction,  ///< `operand` per cent less
    Rate,       ///< the currency `text`, at the rate `operand` for `second` units
    Factor,     ///< divided by `operand`, units of a purchase
    Markup,     ///< `operand` per cent more
    Margin,     ///< so that `operand` per cent of the price are margin
    Decimals,   ///< rounded to `operand` decimals
    Range,      ///< rounded as the range `operand` says, which is `source` to `text`
    Kept,       ///< the column has a price already, and stays as it was
    Written,    ///< into the column
    // Why a coupled price was not computed; without a value.
    CouplingOff,  ///< the company does not update coupled prices by itself
    NotCoupled,   ///< the level is coupled to nothing
    NoMarkup,     ///< the product has neither markup nor margin for the level
    NoBase,       ///< the price that the level is coupled to is 0
};

/// Whether a step says why there is no price, instead of computing one.
constexpr bool isReason(PriceStep step) { return step >= PriceStep::CouplingOff; }

/// Hears how prices are computed, from the code that computes them. The pointer to it is null but where somebody wants
/// to know. Order: `record`, then its calculations and, as soon as it is known, its `product`.
class PriceTrace {
  public:
    struct Step {
        PriceStep step;
        double value = 0;
        double operand = 0;
        double second = 0;
        std::string_view text = {};
        std::string_view source = {};
    };

    /// In place of a column: what the product costs in home currency before its prices are computed from it.
    static constexpr std::string_view kNetCost{};

    virtual ~PriceTrace() = default;
    /// A record of the price file (a line of a trade format), from 1.
    virtual void record(std::int64_t number) = 0;
    virtual void product(std::string_view number) = 0;
    /// The steps from here on compute this column ("Produkt.Inpris"), or go on with it.
    virtual void column(std::string_view name) = 0;
    virtual void step(const Step& step) = 0;
    /// A number has been written into a column, of which there may have been no steps.
    virtual void written(std::string_view column, double value) = 0;
};

/// The calculation of a column begins with the value of another one, of the company or of the price file.
inline void startFrom(PriceTrace& trace, std::string_view column, std::string_view source, double value) {
    trace.column(column);
    trace.step({.step = PriceStep::From, .value = value, .source = source});
}

/// A number of the price file.
inline void tellFileNumber(PriceTrace& trace, std::string_view column, std::string_view source, std::string_view text,
                           double value, int decimals, bool isNumber) {
    trace.column(column);
    trace.step({.step = PriceStep::FileText, .text = text, .source = source});
    const PriceStep step = isNumber ? PriceStep::Number : PriceStep::NotNumber;
    trace.step({.step = step, .value = value, .operand = static_cast<double>(decimals)});
}

}  // namespace kolmera
