#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "lang/languagetexts.h"
#include "platform/locale.h"

namespace kolmera {

/// How far a run has come, how fast it is and how long it will take. Told what `RunPort::progress` is told.
class RunPace {
  public:
    using Time = std::chrono::milliseconds;

    /// Something new begins, of which nothing is known yet.
    void begin() { *this = RunPace(); }
    /// `now` counts from any moment on.
    void at(std::uint64_t position, std::uint64_t size, std::int64_t records, Time now);

    /// Nothing can be said yet: how long the preparation takes is not known.
    [[nodiscard]] bool unknown() const { return size_ == 0; }
    /// The part that is done, from 0 to 1.
    [[nodiscard]] double done() const;
    /// "42 %, 1 200 poster/s, 1 min 20 s kvar"; the time that is left when it can be told.
    [[nodiscard]] std::string text(LanguageTexts& texts, const Locale& locale) const;

  private:
    [[nodiscard]] Time elapsed() const { return now_ - began_; }

    std::uint64_t position_ = 0, size_ = 0;
    std::int64_t records_ = 0;
    std::uint64_t firstPosition_ = 0;  ///< where it was when the measuring began
    std::int64_t firstRecords_ = 0;
    Time began_{}, now_{};
};

}  // namespace kolmera
