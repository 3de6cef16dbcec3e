#include "import/dispatcher.h"

#include "import/masks/maskrun.h"
#include "import/tradeformats/traderun.h"

namespace kolmera {
namespace {

/// A trade format is known by the name of its job, whatever its kind letter says.
struct TradeRoutine {
    std::string_view job;
    RunSummary (*run)(ImportContext& context, std::string_view jobText);
};
constexpr TradeRoutine kTradeRoutines[] = {{"(EIO)", LäsEioRsk}, {"(RSK)", LäsEioRsk}, {"(FINFO)", LäsFinfo}};

}  // namespace

RunSummary Utför(ImportContext& context, std::string_view jobText) {
    if (context.JobbNr == 0) return {};
    for (const TradeRoutine& routine : kTradeRoutines) {
        if (routine.job == jobText) return routine.run(context, jobText);
    }
    return LäsMedMask(context, jobText);
}

}  // namespace kolmera
