#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "db/sqllayer.h"
#include "platform/attempt.h"
#include "pricing/pricetrace.h"

namespace kolmera {

inline constexpr int kDiscountSteps = 5;

/// The combined discount, in per cent, of discounts in per cent that apply one after the other: 10, 5 and 2 give
/// 16.21. A 0 is no step, a negative one a surcharge.
double TotalRabatt(std::span<const float, kDiscountSteps> discounts);

/// Whether a discount, or a surcharge, is more than the whole price: most often a decimal sign is missing.
inline bool isBeyondPrice(double percent) { return percent > 100 || percent < -100; }

/// The suppliers' discount letters of the open company, open for a run. Must be gone before the company database is
/// closed.
class Rabattbrev {
  public:
    /// Opens "LevrabattBrev"; when that fails there are no discounts.
    Rabattbrev(SqlLayer& sql, PassedOver& passedOver, PriceTrace* trace = nullptr);

    /// The combined discount of a supplier's discount code as a fraction (0.25 is 25 %), 0 when there is no such
    /// letter.
    double BeräknaRabattbrev(std::string_view supplier, std::string_view discountCode);

  private:
    void tell(std::string_view supplier, std::string_view code, std::span<const double> discounts);
    double readFraction(std::string_view supplier, std::string_view discountCode);

    SqlLayer& sql_;
    PassedOver& passedOver_;
    PriceTrace* trace_;
    std::unique_ptr<Recordset> letters_;
    std::unordered_map<std::string, double> remembered_;  ///< by supplier, NUL, code: read while stamped `stamp_`
    std::uint64_t stamp_ = 0;
    std::string key_;  ///< reused for every look-up
};

}  // namespace kolmera
