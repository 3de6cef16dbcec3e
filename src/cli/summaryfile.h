#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "import/run/runsummary.h"
#include "lang/languagetexts.h"
#include "platform/descriptor.h"

namespace kolmera::cli {

/// How a run of the terminal went.
struct RunResult {
    int exitCode = 0;
    RunSummary summary;
    double seconds = 0;
    std::string numberForm;             ///< how numbers were read: "12,50" or "12.50"
    std::vector<std::string> messages;  ///< what was told, in the user's language
};

/// The summary of a run as JSON: its members are documented in the user's guide.
nlohmann::ordered_json summaryJson(LanguageTexts& texts, const std::string& job, const RunResult& result);

/// The file of `--summary`. It is there as soon as the run starts, with the outcome "running", and is replaced when the
/// run ends, whole or not at all. A link is replaced, not followed; what is no ordinary file (a pipe, a terminal) gets
/// the last words only. Errors are PlatformError.
class SummaryFile {
  public:
    /// Throws when the file cannot be written. A pipe is waited for until it has a reader or `cancel` is set.
    SummaryFile(const std::filesystem::path& file, const std::string& job, const std::atomic<bool>& cancel);
    void finish(const nlohmann::ordered_json& summary);

  private:
    void replaceBy(const nlohmann::ordered_json& summary) const;
    [[nodiscard]] Descriptor openInPlace() const;
    void writeInPlace(const std::string& text) const;

    std::filesystem::path file_;
    const std::atomic<bool>& cancel_;
    Descriptor existing_;  ///< the file that is replaced, for its rights, or the pipe
    bool writtenDirectly_ = false;
};

}  // namespace kolmera::cli
