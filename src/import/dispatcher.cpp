#include "import/dispatcher.h"

#include "import/masks/maskrun.h"
#include "import/tradeformats/traderun.h"

namespace kolmera {

RunSummary Utför(ImportContext& context, std::string_view jobText) {
    if (context.JobbNr == 0) return {};
    for (const TradeRoutine& routine : tradeRoutines()) {
        if (routine.job == jobText) return routine.run(context, jobText);
    }
    return LäsMedMask(context, jobText);
}

}  // namespace kolmera
