#pragma once

#include <string_view>

#include "import/run/importcontext.h"

namespace kolmera {

/// Runs the job "(EIO)" or "(RSK)"; `jobText` is the job's name as the job list shows it. Nothing is done for another.
RunSummary LäsEioRsk(ImportContext& context, std::string_view jobText);

/// Runs the job "(FINFO)".
RunSummary LäsFinfo(ImportContext& context, std::string_view jobText);

}  // namespace kolmera
