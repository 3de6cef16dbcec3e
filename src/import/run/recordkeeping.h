#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "history/recordreader.h"
#include "history/runfolder.h"
#include "platform/error.h"

namespace kolmera {

struct StartState;

/// Where and how a run keeps its record; and, when the run has ended, what became of it.
struct RecordKeeping {
    std::filesystem::path folder;  ///< made when it is missing
    RunKind kind = RunKind::Run;
    std::string user;
    bool copiesPriceFile = false;
    /// Older records of the folder are thinned when the run has ended; without it all stay.
    std::optional<RecordLimits> limits = std::nullopt;

    // Afterwards. A record that could not be made or written does not stop the run.
    std::string id = {};  ///< empty: there is no record
    std::optional<PlatformError> failure = std::nullopt;
    std::optional<PlatformError> notThinned = std::nullopt;
};

/// As the program's runs keep theirs: in the data folder, within the limits of its settings (`Korningar.ini`, section
/// "Körningar": Antal, Megabyte, Prisfil=1 for a copy of the price file).
RecordKeeping keptInDataFolder(const StartState& state);

}  // namespace kolmera
