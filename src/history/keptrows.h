#pragma once

#include <cstdint>
#include <functional>

#include "history/undo.h"
#include "platform/engine/sqlite/sqliteconnection.h"

namespace kolmera {

/// The rows that stay when a run is taken back, in a temporary file without a name.
class KeptRows {
  public:
    KeptRows();

    void add(const KeptRow& row);
    /// Rows, however often each was added.
    [[nodiscard]] std::int64_t count();
    void forEach(const std::function<bool(const KeptRow&)>& take);

  private:
    SqliteConnection file_;
    SqliteStatement add_;
};

}  // namespace kolmera
