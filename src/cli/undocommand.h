#pragma once

#include <string>

#include "cli/commandline.h"

namespace kolmera::cli {

struct UndoArguments {
    std::string run;  ///< see `chosenRun`
    std::string dataFolder;
    bool dryRun = false;  ///< only tell what would be taken back, and what would stay
    bool json = false;
};

/// `undo RUN --data DIR [--dry-run] [--json]`: takes a run back. kPassedOver when something stays.
int undoCommand(const UndoArguments& arguments, const Surroundings& surroundings);

}  // namespace kolmera::cli
