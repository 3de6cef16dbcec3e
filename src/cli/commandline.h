#pragma once

#include <atomic>
#include <filesystem>
#include <iosfwd>
#include <string>
#include <vector>

#include "platform/locale.h"

namespace kolmera::cli {

/// What the headless program needs of the machine; tests hand in their own.
struct Surroundings {
    std::ostream& out;
    std::ostream& err;
    std::filesystem::path programFolder;  ///< holds DVLang.sys and demo/
    std::filesystem::path settingsFile;   ///< the user's settings store
    Locale locale;
    const std::atomic<bool>& cancel;  ///< set by Ctrl-C
    bool quiet = false;               ///< no progress bar
    bool verbose = false;             ///< errors with their number and the words that they came with
};

/// Exit codes of the program.
namespace exitcode {
inline constexpr int kDone = 0;
inline constexpr int kStopped = 1;       ///< stopped by a message
inline constexpr int kUsage = 2;         ///< the command line is wrong
inline constexpr int kPassedOver = 3;    ///< done, but statements were passed over
inline constexpr int kBeyondLimits = 4;  ///< nothing was written: the limits of the job would have been broken
inline constexpr int kCancelled = 130;
}  // namespace exitcode

/// Runs one command line (without the program's name) and returns its exit code: never kDone when what it prints could
/// not be written. Throws std::bad_alloc only.
int runCommandLine(const std::vector<std::string>& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
