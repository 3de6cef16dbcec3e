#pragma once

#include <span>
#include <string_view>

#include "import/run/importcontext.h"

namespace kolmera {

/// Runs the job "(EIO)" or "(RSK)"; `jobText` is the job's name as the job list shows it. Nothing is done for another.
RunSummary LäsEioRsk(ImportContext& context, std::string_view jobText);

/// Runs the job "(FINFO)".
RunSummary LäsFinfo(ImportContext& context, std::string_view jobText);

/// The jobs of the trade formats: each is known by its name, whatever its kind letter says.
struct TradeRoutine {
    std::string_view job;
    RunSummary (*run)(ImportContext& context, std::string_view jobText);
};
std::span<const TradeRoutine> tradeRoutines();

}  // namespace kolmera
