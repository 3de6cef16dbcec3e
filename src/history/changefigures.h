#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "history/netchanges.h"

namespace kolmera {

/// Where the bars of a histogram of changes in per cent begin and end: the first bar is what is below the first edge,
/// the last one what is from the last edge on. A fall of exactly 5 per cent counts with the greater falls, a rise of 5
/// with the greater rises.
inline constexpr std::array kHistogramEdges{-50, -20, -10, -5, -2, 0, 2, 5, 10, 20, 50, 100};
inline constexpr std::size_t kHistogramBars = kHistogramEdges.size() + 1;
constexpr std::size_t histogramBar(double percent) {
    std::size_t bar = 0;
    for (const int edge : kHistogramEdges) bar += (edge > 0 ? percent >= edge : percent > edge) ? 1 : 0;
    return bar;
}

/// Whether a column holds a price: the purchase price and the nine sales prices of products and of the suppliers' price
/// lists, there also the price before the discount.
bool isPrice(std::string_view table, int column);

/// What became of a price column in rows that were there before and still are. A price that was 0 counts as raised, and
/// has no part in median, histogram and the largest rise.
struct PriceFigures {
    struct Extreme {
        double percent = 0;
        std::string product;
        double before = 0, after = 0;
    };
    std::string table;
    int column = 0;
    std::int64_t raised = 0, lowered = 0;
    std::int64_t fromZero = 0, toZero = 0;  ///< of the raised and the lowered ones
    std::optional<double> median;           ///< of the changes in per cent
    std::optional<Extreme> largestRise, largestFall;
    std::array<std::int64_t, kHistogramBars> histogram{};
};

/// What matters of a run, or of a preview, in one glance.
struct ChangeFigures {
    struct Remark {
        std::string name;  ///< of kRemarks (import/run/runreport.h)
        std::int64_t count = 0;
    };
    std::optional<std::int64_t> records;  ///< of the price file; nothing where the record does not tell
    std::optional<std::int64_t> skipped;  ///< of them, those that wrote nothing
    std::vector<Remark> remarks;          ///< why, and what else was remarkable; those that came
    std::int64_t newProducts = 0, changedProducts = 0, removedProducts = 0;
    /// Products that the file has and whose headline price stayed.
    std::optional<std::int64_t> unchanged;
    std::vector<PriceFigures> prices;  ///< the columns that changed, products before price lists

    /// The price that the run was about: the product's purchase price, unless less than a tenth as many of them changed
    /// as of the price that changed most; then that one. Null without any.
    [[nodiscard]] const PriceFigures* headline() const;
};

/// Rows of a table of which a price changed by more than so many per cent, up or down. Prices that were 0 do not count.
std::int64_t rowsBeyond(NetChanges& changes, std::string_view table, double percent);

/// `counts` as in the head of the record.
ChangeFigures changeFigures(NetChanges& changes, const std::string& counts);

}  // namespace kolmera
