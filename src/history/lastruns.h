#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "history/runfolder.h"

namespace kolmera {

/// How a job was run the last time.
struct LastRun {
    RunHeader run;  ///< without its definition
    bool takenBack = false;
};

/// The last run of each job, for lists of jobs: `look`, then `read` until there is nothing more to read. A record is
/// read once, the newest first, and no more of them than the jobs need.
class LastRuns {
  public:
    explicit LastRuns(RunFolder folder) : folder_(std::move(folder)) {}

    /// Looks which records there are. What has been read of them is kept, unless the run was under way.
    void look();
    /// Reads so many records, if these jobs need them. True when there may be more to read.
    bool read(int most, const std::vector<std::string>& jobs);
    /// Nothing for a job that has never been run, or whose record is gone.
    [[nodiscard]] std::optional<LastRun> of(const std::string& job) const;

  private:
    [[nodiscard]] bool knows(const std::vector<std::string>& jobs) const;

    RunFolder folder_;
    std::vector<std::string> ids_;                          ///< the newest first
    std::map<std::string, std::optional<RunHeader>> read_;  ///< by id; nothing where it cannot be read
};

}  // namespace kolmera
