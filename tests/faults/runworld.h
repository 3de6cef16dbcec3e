#pragma once

#include <cstdlib>
#include <filesystem>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "faults/systemcalls.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {

/// How often a random trial is repeated: few times with every push, often where the environment sets KOLMERA_LONG.
inline int trials(int withEveryPush, int atLength) {
    return std::getenv("KOLMERA_LONG") == nullptr ? withEveryPush : atLength;
}

/// Spreads trials over the calls of an operation, the first and the last among them; from 1.
std::vector<int> spread(int calls, int trials);

/// A data folder that a test may spoil, with the commands of kolmera-cli on it.
class DataFolder {
  public:
    DataFolder() = default;
    /// As another one is now.
    explicit DataFolder(const std::filesystem::path& like);

    [[nodiscard]] const std::filesystem::path& root() const { return folder_.path(); }  ///< also of the settings
    [[nodiscard]] std::filesystem::path path() const { return folder_ / "data"; }
    [[nodiscard]] std::filesystem::path company() const { return path() / "FTG1.mdb"; }
    [[nodiscard]] std::filesystem::path file(std::string_view name) const { return folder_ / name; }

    /// Carries out a command in a process of its own. "--data" and the folder are added.
    [[nodiscard]] Outcome run(const std::vector<std::string>& arguments, CallPlan plan = {}) const;
    /// The same, to be handed on.
    [[nodiscard]] std::function<int(std::ostream& told)> command(const std::vector<std::string>& arguments) const;

    /// All rows of the company. Opening looks the whole file through.
    [[nodiscard]] std::string rows() const;
    /// All files but the company, its log and the records of runs, by name.
    [[nodiscard]] std::map<std::string, std::string> otherFiles() const;

    std::filesystem::path programFolder = {};  ///< of the programs that commands start; empty: that of the build

  private:
    TemporaryFolder folder_;
};

/// A price file of one format and the company that a job reads it into: one record a product, a third of them there
/// before.
class RunWorld {
  public:
    static constexpr int kManyRecords = 80;  ///< three batches of 25, and some
    static constexpr const char* kFormats[] = {"(EIO)", "(RSK)", "(FINFO)", "lines", "tabs"};

    explicit RunWorld(const std::string& format, int records = kManyRecords);

    [[nodiscard]] const DataFolder& before() const { return before_; }
    [[nodiscard]] std::vector<std::string> command(bool emptied) const;

    /// How many batches a company has got; -1 where it is in between: half a batch, or rows of a product apart.
    [[nodiscard]] int batches(const std::string& rows, const std::string& after, bool emptied) const;

  private:
    DataFolder before_;
    int records_;
    std::string job_, beforeRows_;
};

}  // namespace kolmera::test
