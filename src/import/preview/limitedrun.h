#pragma once

#include <string_view>

#include "import/run/importcontext.h"
#include "import/run/runsummary.h"

namespace kolmera {

/// Carries out the current job as `Utför` does. A run of a job that has limits is previewed before it writes; when it
/// would break one, the port is asked. Limits that cannot be read are told of, and limit nothing.
RunSummary runWithinLimits(ImportContext& context, std::string_view jobText);

}  // namespace kolmera
