#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "import/run/runreport.h"

namespace kolmera {

/// Tells products apart that a run has saved: remembers a hash of each number, letter case of A to Z not counting.
class SavedProducts {
  public:
    /// True for a number that was not there.
    bool add(std::string_view number);

    /// What is added from now on counts only if it is kept.
    void hold() { holding_ = true; }
    void keepHeld();
    void dropHeld();

  private:
    [[nodiscard]] bool holds(std::uint64_t hash) const;
    bool place(std::uint64_t hash);
    void grow();

    std::vector<std::uint64_t> slots_;  ///< 0: free
    std::size_t used_ = 0;
    bool holding_ = false;
    std::unordered_set<std::uint64_t> held_;
};

/// How the preparation command of a run went.
struct PreparationReport {
    int exitStatus = 0;           ///< not 0: it failed; 127: there is no such program
    bool stillRunning = false;    ///< the wait for it was given up
    bool fileNotRenewed = false;  ///< the price file is the same as before the command
};

/// What a run did. Rows are counted when they are written.
struct RunSummary {
    std::int64_t records = 0;  ///< records (mask) or lines (trade formats) read
    std::int64_t used = 0;     ///< of them, those that wrote something
    std::int64_t newProducts = 0;
    std::int64_t changed = 0;  ///< existing products saved, each once
    std::int64_t saved = 0;    ///< products saved, every time
    std::int64_t skipped = 0;  ///< records or lines that wrote nothing, by `report`
    std::int64_t priceList = 0;
    std::int64_t alternatives = 0;
    std::int64_t documents = 0;
    std::int64_t groups = 0;             ///< RSK: product groups saved
    std::int64_t groupLinesSkipped = 0;  ///< RSK: lines of RKOD.DAT without a number
    struct {
        std::int64_t products = 0, priceList = 0, alternatives = 0;
    } deleted;                   ///< rows that went before the file was read
    bool readAsOneLine = false;  ///< the price file has line feeds where it should have line ends
    bool cancelled = false;
    bool beyondLimits = false;  ///< nothing was written, because the limits of the job would have been broken
    bool completed = false;     ///< the run reached its close-down (also when cancelled)
    PreparationReport preparation;
    RunReport report;
    SavedProducts products;

    void productSaved(std::string_view number, bool isNew);
    /// The file was read to its end, and nothing of it could be used.
    [[nodiscard]] bool nothingUsed() const { return completed && !cancelled && used == 0; }
    /// The file was not prepared, or something in it was not taken as it stands.
    [[nodiscard]] bool hasFaults() const {
        return preparation.exitStatus != 0 || report.hasFaults() || readAsOneLine || nothingUsed();
    }
};

}  // namespace kolmera
