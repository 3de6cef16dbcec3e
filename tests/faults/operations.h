#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "faults/runworld.h"

namespace kolmera::test {

/// Something that a program does to the files of a data folder.
struct Operation {
    const char* name;
    const DataFolder* before;  ///< the folder on which it is carried out
    /// The exit code; what went wrong is told.
    std::function<int(const DataFolder& data, std::ostream& told)> carryOut;
    bool inBatches = false;  ///< the company may be left between the old and the new: what is whole is committed
    bool company = false;    ///< it changes the company
    bool byLibrary = false;  ///< libzip makes the calls: it tells of a signal as of any failure
};

/// The folders that operations begin with, and the operations.
class Operations {
  public:
    Operations();
    [[nodiscard]] const std::vector<Operation>& all() const { return all_; }
    [[nodiscard]] const RunWorld& world() const { return world_; }

  private:
    void addDefinitions();
    void addCommands();

    RunWorld world_;
    DataFolder ran_;      ///< a run has been carried out
    DataFolder defined_;  ///< jobs, masks and couplings, and no company
    std::vector<Operation> all_;
};

/// What a folder holds: the company's rows where it has one, and the files by name. What an interrupted change has left
/// is completed first, as every reader does.
struct Content {
    std::string rows;
    std::map<std::string, std::string> files;

    explicit Content(const DataFolder& data);
    /// What is not as in the other one, files that nobody knows apart; "" when it is all the same.
    [[nodiscard]] std::string differenceFrom(const Content& other) const;
    /// The same, where each file and the rows may be as in either.
    [[nodiscard]] std::string differenceFrom(const Content& old, const Content& now, bool rowsToo) const;
};

}  // namespace kolmera::test
