#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "lang/keys/limits.h"
#include "source/sourcesettings.h"

namespace kolmera {

/// What a run of a job may change without asking. A limit that is not set limits nothing.
struct Limits {
    std::optional<double> changePercent = {};   ///< a price change beyond it is a large one; without it 10
    std::optional<double> changeShare = {};     ///< largest share of products with a large price change, in per cent
    std::optional<double> largestChange = {};   ///< of one price, in per cent
    std::optional<double> zeroPrices = {};      ///< most prices that become 0
    std::optional<double> unmatchedShare = {};  ///< largest share of records that found no product, in per cent
    std::optional<double> fewestRecords = {};

    static constexpr double kLargeChange = 10;

    /// Whether there is anything to look into.
    [[nodiscard]] bool any() const {
        return changeShare || largestChange || zeroPrices || unmatchedShare || fewestRecords;
    }
    bool operator==(const Limits&) const = default;
};

struct LimitKind {
    std::string_view name;  ///< in the file and on the command line
    std::optional<double> Limits::*value;
    ModuleKey text;
};

/// One row a limit.
inline constexpr LimitKind kLimits[] = {
    {"change-percent", &Limits::changePercent, text::limits::kChangePercent},
    {"change-share", &Limits::changeShare, text::limits::kChangeShare},
    {"largest-change", &Limits::largestChange, text::limits::kLargestChange},
    {"zero-prices", &Limits::zeroPrices, text::limits::kZeroPrices},
    {"unmatched-share", &Limits::unmatchedShare, text::limits::kUnmatchedShare},
    {"fewest-records", &Limits::fewestRecords, text::limits::kFewestRecords},
};

/// What is kept of a job beside its fixed record: KOLMERA.JSON of the data folder, by the job's name. Members that this
/// version does not know stay. Throws PlatformError: kUnreadableOptions for a file that cannot be understood.
class JobOptionsFile {
  public:
    explicit JobOptionsFile(std::filesystem::path dataFolder) : folder_(std::move(dataFolder)) {}

    /// None where there is no file, or nothing in it about the job.
    [[nodiscard]] Limits limits(std::string_view job) const;
    void setLimits(std::string_view job, const Limits& limits);
    /// How the job's price file is turned into what its mask reads; nothing: the mask reads the file as it is. Nothing,
    /// too, where the file cannot be understood, but shows that it has nothing of the job.
    [[nodiscard]] std::optional<SourceSettings> source(std::string_view job) const;
    void setSource(std::string_view job, const std::optional<SourceSettings>& source);

  private:
    std::filesystem::path folder_;
};

// The file within a change of KOLMERA.TXT. `content` is its text, empty for a missing file; one that cannot be
// understood stays as it is.
inline constexpr std::string_view kJobOptionsFile = "KOLMERA.JSON";
/// What a change of a job writes of them. What is not set stays; a source that is set to nothing is taken away.
struct JobOptionsChange {
    std::optional<Limits> limits = {};
    std::optional<std::optional<SourceSettings>> source = {};
};
/// Throws kUnreadableOptions for a file that cannot be understood.
void putOptions(std::string& content, std::string_view job, const JobOptionsChange& change);
/// `copies` where another job keeps the old name.
void renameJobOptions(std::string& content, std::string_view from, std::string_view to, bool copies);
void removeJobOptions(std::string& content, std::string_view job);

}  // namespace kolmera
