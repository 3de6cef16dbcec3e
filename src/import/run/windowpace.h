#pragma once

#include <cstddef>

namespace kolmera {

/// How many records a window has: as many as the server takes a quarter of a second for, 2000 at most. Cancel waits
/// that long, and others wait for their rows while they are written.
class WindowPace {
  public:
    [[nodiscard]] std::size_t size() const { return size_; }
    /// The server has taken so long for a window of `size` records.
    void took(double milliseconds);
    /// The window has been rolled back.
    void startAnew() { size_ = kFirstSize; }

  private:
    static constexpr std::size_t kFirstSize = 50;

    std::size_t size_ = kFirstSize;
};

}  // namespace kolmera
