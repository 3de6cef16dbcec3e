#pragma once

#include <array>
#include <optional>

#include "db/sqllayer.h"
#include "platform/attempt.h"

namespace kolmera {

/// The company's VAT rates, read at the first question.
class VatRates {
  public:
    VatRates(SqlLayer& sql, PassedOver& passedOver) : sql_(sql), passedOver_(passedOver) {}

    /// The rate of a VAT code in per cent; nothing for codes other than 1 to 3.
    [[nodiscard]] std::optional<double> of(int momskod);

  private:
    SqlLayer& sql_;
    PassedOver& passedOver_;
    std::optional<std::array<double, 3>> rates_;
};

}  // namespace kolmera
