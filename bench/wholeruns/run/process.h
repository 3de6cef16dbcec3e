#pragma once

#include <string>
#include <vector>

namespace kolmera::bench {

/// What one whole process cost.
struct ProcessCost {
    double seconds = 0;     ///< wall time from start to end
    double cpuSeconds = 0;  ///< user and system
    double peakMegabytes = 0;
    int exitCode = 0;
};

/// Runs a program to its end, its output discarded, and measures it. Throws std::system_error when it cannot be
/// started.
ProcessCost runProcess(const std::vector<std::string>& command);

}  // namespace kolmera::bench
