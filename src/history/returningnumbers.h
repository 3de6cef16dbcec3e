#pragma once

#include <set>
#include <utility>

#include "history/netrows.h"
#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/engine/sqlite/sqlitestatement.h"

namespace kolmera {

/// The numbers that rows get back when a run is taken back. Who names such a number names it afterwards too, whatever
/// becomes of the row that has it now. In a temporary file without a name, as NetRows; read when first asked for.
class ReturningNumbers {
  public:
    explicit ReturningNumbers(NetRows& net);

    /// Whether a row other than `row` is still to get this value back in the column.
    [[nodiscard]] bool has(const NetRow& row, int column, const Value& number);

  private:
    void read(int table, int column);

    NetRows& net_;
    SqliteConnection file_;
    SqliteStatement add_, find_;
    std::set<std::pair<int, int>> read_;  ///< tables and columns
};

}  // namespace kolmera
