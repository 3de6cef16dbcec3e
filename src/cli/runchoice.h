#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "cli/session.h"
#include "history/runfolder.h"

namespace kolmera::cli {

/// The runs of a folder, the newest first. Records that cannot be read, of which one may be the last, are told of.
std::vector<RunHeader> listedRuns(Session& session, const RunFolder& folder, std::ostream& err);

/// The run that a command line names: "last", or its name, as far as no other run's begins so. Nothing, and told, when
/// there is none or more than one.
std::optional<RunHeader> chosenRun(Session& session, const std::vector<RunHeader>& runs, std::string_view name,
                                   std::ostream& err);

/// How it ended, in the user's words.
std::string outcomeText(Session& session, const RunHeader& run);

}  // namespace kolmera::cli
