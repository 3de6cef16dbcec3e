#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/joboptions.h"
#include "platform/recordfile.h"

namespace kolmera {

class RecordChange;

/// One import job (inläsning): a record of KOLMERA.TXT.
struct Job {
    int number = 0;  ///< JobbNr: record number, 0 for a new job
    std::string name;
    std::string priceFile;  ///< path as written by the user
    std::string mask;       ///< mask name, empty for trade formats
    std::string company;    ///< database name, up to 60 characters
    std::string supplier;
    std::string command;    ///< expansion command, empty when the file is not compressed
    std::string kind;       ///< "E", "R", "F" for trade formats, else empty
    std::string fromGroup;  ///< FINFO: lowest product group
    std::string toGroup;    ///< FINFO: highest product group
    int heading1 = 0;       ///< FINFO: heading of the Micronic number, 0 none
    int heading2 = 0;       ///< FINFO: heading of the EAN code, 0 none

    bool operator==(const Job&) const = default;
};

// What the fields of a job hold, in characters.
inline constexpr int kJobTextLength = 100;  ///< name, price file, command
inline constexpr int kJobGroupLength = 8;

/// True for exactly "(EIO)", "(RSK)" and "(FINFO)".
bool ÄrStandardFormat(std::string_view name);

/// The job list in KOLMERA.TXT of the data folder. Reading makes a missing file, with the trade-format jobs, where the
/// folder can be written.
class JobFile {
  public:
    explicit JobFile(std::filesystem::path dataFolder) : folder_(std::move(dataFolder)) {}

    [[nodiscard]] std::vector<Job> all() const;
    [[nodiscard]] std::optional<Job> read(int number) const;
    [[nodiscard]] std::optional<Job> find(std::string_view name) const;  ///< the first job of that name
    /// Writes the job over its record, or appends it (number 0). Reserved bytes stay. Returns the number.
    int save(const Job& job);
    /// Adds those of "(EIO)", "(RSK)" and "(FINFO)" that are missing.
    void addTradeJobs(std::string_view company);

    // For windows. Throws PlatformError, and changes nothing: kChangedElsewhere when the records are no longer those
    // that were shown.
    /// Saves over the job that was shown, or appends a new one. What KOLMERA.JSON holds of it follows a new name.
    /// kDuplicateKey for a new name that another job has (letter case does not count). What changes of KOLMERA.JSON is
    /// saved with it: both or nothing.
    int save(const Job& job, const std::optional<Job>& shown, const JobOptionsChange& options = {});
    /// Appends another job like the one that was shown, with what KOLMERA.JSON holds of it; `name` and `mask` are the
    /// new one's. kDuplicateKey for a name that another job has.
    int copy(const Job& shown, const std::string& name, const std::string& mask);
    /// Removes the jobs, which were all of one name, and what KOLMERA.JSON holds of them; later ones move down.
    void remove(const std::vector<Job>& shown);

  private:
    [[nodiscard]] Records records() const;

    std::filesystem::path folder_;
};

/// Within a change of several files: writes the job over the first one of its name, which has to be the one that was
/// shown (kChangedElsewhere), or appends it. Returns the number.
int putJob(RecordChange& change, Job job, const std::optional<Job>& shown);

/// The trade-format jobs that a list lacks.
std::vector<std::string> missingTradeJobs(const std::vector<Job>& jobs);

}  // namespace kolmera
