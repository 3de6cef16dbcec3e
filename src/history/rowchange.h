#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/engine/value.h"

namespace kolmera {

enum class ChangeKind : std::uint8_t { Added, Changed, Removed };

/// One column of a changed row.
struct CellChange {
    int column = 0;  ///< ordinal in the company's table
    Value before, after;
    bool operator==(const CellChange&) const = default;
};

/// A row that a run added, changed or removed. Of added and removed rows all columns that are not empty are there; the
/// column ID is never among them.
struct RowChange {
    ChangeKind kind{};
    std::string table;
    std::int64_t id = 0;
    std::int64_t record = 0;  ///< of the price file, from 1; 0 outside the file
    std::string label;        ///< the row's product number, as far as the run had read it
    std::vector<CellChange> cells;
};

}  // namespace kolmera
