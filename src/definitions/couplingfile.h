#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/recordfile.h"

namespace kolmera {

class RecordChange;

/// One supplier coupling of a trade-format job (record of PRISLEV.TXT): which supplier of the company a supplier code
/// in the price file stands for.
struct Coupling {
    int number = 0;  ///< record number, the identity while a window is open
    std::string job;
    std::string code;
    std::string supplier;
    bool mainSupplier = false;  ///< "H"

    bool operator==(const Coupling&) const = default;
};

inline constexpr int kCouplingTextLength = 20;  ///< code and supplier, in characters

/// The couplings in PRISLEV.TXT of the data folder.
class CouplingFile {
  public:
    explicit CouplingFile(std::filesystem::path dataFolder) : folder_(std::move(dataFolder)) {}

    /// The couplings of a job (exact name), in file order.
    [[nodiscard]] std::vector<Coupling> ofJob(std::string_view job) const;
    /// Saves by job and code (letter case does not count): overwrites, or appends. A main supplier takes the flag from
    /// the job's others. Returns the record number.
    int save(const Coupling& coupling);

    // For a window that shows the couplings of a job. Throws PlatformError(kChangedElsewhere), and changes nothing,
    // when they are no longer those.
    void save(const Coupling& coupling, const std::vector<Coupling>& shown);
    /// Removes one of them; later records move down.
    void remove(const Coupling& coupling, const std::vector<Coupling>& shown);

  private:
    std::filesystem::path folder_;
};

/// Within a change of several files: the couplings of a job in place of those that were shown (kChangedElsewhere when
/// it has others by now). One without a code is left out.
void putCouplings(RecordChange& change, std::string_view job, const std::vector<Coupling>& couplings,
                  const std::vector<Coupling>& shown);

}  // namespace kolmera
