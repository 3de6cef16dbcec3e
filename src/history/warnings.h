#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "history/changefigures.h"
#include "history/netchanges.h"
#include "history/recordreader.h"

namespace kolmera {

/// What may be wrong with a price file, as far as its record shows it.
enum class Warning {
    SameFile,       ///< the file that the run before has read; `detail`: when
    OlderFile,      ///< older than that one; `detail`: when that one was read
    FewerRecords,   ///< less than half as many records as then; `detail`: so many it were
    OneLine,        ///< a file of line feeds, read as one line
    ZeroPrices,     ///< prices became 0
    Jumps,          ///< prices became about 10, 100 or 1000 times as high or low: implied decimals
    MedianChange,   ///< the headline price changed by more than kMedianPercent in the middle
    NewSuppliers,   ///< many products changed their supplier
    Twice,          ///< a later record wrote another price into the same row
    NeverNumber,    ///< a column that is hardly ever a number or a date; `detail`: which
    Heading,        ///< the first record looks like a line of headings
    Characters,     ///< letters that show the wrong character set; `detail`: some of them
    MostUnmatched,  ///< most records found no product
};

/// One row a warning, in their order: its name in JSON.
inline constexpr std::string_view kWarningNames[] = {
    "same_file",     "older_file", "fewer_records", "read_as_one_line", "zero_prices", "jumps",         "median_change",
    "new_suppliers", "key_twice",  "never_number",  "heading_line",     "characters",  "most_unmatched"};

inline constexpr double kMedianPercent = 20;

struct RunWarning {
    Warning warning{};
    std::string detail = {};
    std::vector<std::int64_t> records = {};  ///< of the price file, ascending; none where it concerns the file
};

/// What there is to warn of in a run or a preview. `previous` is the run before of the same job and company, as far as
/// there is one. A key that comes twice is seen where both records changed the price: the first one to what differs
/// from the company's, the second one to what differs from that.
std::vector<RunWarning> runWarnings(
    const RunHeader& run, NetChanges& changes, const ChangeFigures& figures,
    const std::function<void(const std::function<bool(const RecordRemark&)>& take)>& forEachRemark,
    const RunHeader* previous);

/// The run before of the same job and company that reached its end, among those of a folder, the newest first.
const RunHeader* previousRun(const std::vector<RunHeader>& runs, const RunHeader& run);

}  // namespace kolmera
