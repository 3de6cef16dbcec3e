#include "import/run/windowpace.h"

#include <algorithm>

namespace kolmera {
namespace {

constexpr std::size_t kMostRecords = 2000;
constexpr double kWanted = 250;     // milliseconds
constexpr std::size_t kBatch = 25;  // whole batches, as without windows

}  // namespace

/// Part of the time does not depend on the number of records, so that a step may be too short, never too long.
void WindowPace::took(double milliseconds) {
    const double factor = std::clamp(kWanted / std::max(milliseconds, 1.0), 0.5, 2.0);
    const auto wanted = static_cast<std::size_t>(static_cast<double>(size_) * factor);
    size_ = std::clamp(wanted / kBatch * kBatch, kFirstSize, kMostRecords);
}

}  // namespace kolmera
