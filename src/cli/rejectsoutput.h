#pragma once

#include <string>

#include "cli/session.h"
#include "history/runfolder.h"

namespace kolmera::cli {

/// Writes the rejected records of a run to a file and prints, and hands over in `told`, what became of it. False when
/// there is no such file although there are rejects.
bool printRejects(Session& session, const RunFolder& runs, const std::string& run, const std::string& file,
                  const Surroundings& surroundings, std::string& told);

}  // namespace kolmera::cli
