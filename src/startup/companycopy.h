#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/database.h"

namespace kolmera {

struct CopiedTable {
    std::string name;
    std::int64_t rows = 0;
};

struct CopyResult {
    enum class Outcome {
        Done,       ///< every row of the source is in the target, column by column
        Cancelled,  ///< whole batches are in the target; a second copy goes on behind them
        OtherRows,  ///< the target held rows that do not come from this source; nothing was changed
        Differs,    ///< after copying, a row is not the same: somebody else has written meanwhile
    };
    Outcome outcome = Outcome::Done;
    std::vector<CopiedTable> tables;  ///< Done: how many rows each table has
    std::string table;                ///< OtherRows, Differs: where, and in the row of which ID
    std::int64_t id = 0;
};

/// Copies every table of a company into another database with the same tables, rows with their IDs, in batches of some
/// hundred rows. The target may be new (its first settings rows are replaced) or hold what an earlier copy from the
/// same source has left: that is compared first and the copy goes on behind it. Afterwards all rows of both are read
/// and compared. Memory does not grow with the company.
///
/// `goOn` is asked between batches; false ends the copy. Throws PlatformError; what is committed then stays.
CopyResult copyCompany(Database& source, Database& target, const std::function<bool()>& goOn);

/// Copies every row of the tables of `target`, which are empty, but of those that are left out, without comparing them
/// afterwards. False when `goOn` has ended it.
bool fetchTables(Database& source, Database& target, std::span<const std::string_view> leftOut,
                 const std::function<bool()>& goOn);

}  // namespace kolmera
