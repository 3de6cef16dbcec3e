#include "import/dispatcher.h"

#include <array>

#include "import/maskrun.h"

namespace kolmera {
namespace {

/// A trade format is known by the name of its job, whatever its kind letter says.
struct TradeFormat {
    std::string_view job;
    RunSummary (*run)(ImportContext& context, std::string_view jobText);
};
constexpr std::array<TradeFormat, 0> kTradeFormats{};

}  // namespace

RunSummary Utför(ImportContext& context, std::string_view jobText) {
    if (context.JobbNr == 0) return {};
    for (const TradeFormat& format : kTradeFormats) {
        if (format.job == jobText) return format.run(context, jobText);
    }
    return LäsMedMask(context, jobText);
}

}  // namespace kolmera
