#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/locale.h"

namespace kolmera {

/// What the spin control UCUppNer steps, and how. A step stops at the bounds, it never wraps. The boxes of this program
/// step numbers; times of day and letters are what other windows of the suite step.
class SpinSteps {
  public:
    static constexpr std::int16_t kNumber = 0, kTimeOfDay = 1, kLetter = 2;

    float Max = 10;       ///< for a letter: its code
    float Min = 1;        ///< for a time of day: the minimum in days
    float Increment = 1;  ///< for a time of day: in minutes
    std::string Mask;     ///< "0.00": two decimals, at least one digit before them; empty: as short as possible
    [[nodiscard]] std::int16_t Typ() const { return typ_; }
    /// A time of day gets the mask "hh:mm".
    void setTyp(std::int16_t typ);

    /// The text one step up or down.
    [[nodiscard]] std::string stepped(std::string_view text, bool up, const Locale& locale) const;

  private:
    [[nodiscard]] std::string number(double value, const Locale& locale) const;

    std::int16_t typ_ = kNumber;
};

}  // namespace kolmera
