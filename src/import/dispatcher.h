#pragma once

#include <string_view>

#include "import/run/importcontext.h"

namespace kolmera {

/// Runs the current job by the routine that its name asks for: a trade format, or else a mask. Job number 0 runs
/// nothing. `jobText` is the job's name as the job list shows it.
RunSummary Utför(ImportContext& context, std::string_view jobText);

}  // namespace kolmera
