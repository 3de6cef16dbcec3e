#pragma once

#include <string_view>

#include "import/run/importcontext.h"

namespace kolmera {

/// Runs a job whose file type is a mask: `jobText` is the job's name as the job list shows it.
RunSummary LäsMedMask(ImportContext& context, std::string_view jobText);

}  // namespace kolmera
