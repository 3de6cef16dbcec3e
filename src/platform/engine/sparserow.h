#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "platform/engine/columnset.h"
#include "platform/engine/value.h"

namespace kolmera {

/// Values of some columns of a row, by ordinal; takes no room for the others.
class SparseRow {
  public:
    [[nodiscard]] const ColumnSet& columns() const { return columns_; }
    /// nullptr for a column that has none.
    [[nodiscard]] const Value* find(int column) const {
        return columns_.has(column) ? &values_[columns_.rank(column)] : nullptr;
    }
    void set(int column, Value value) {
        const std::size_t place = columns_.rank(column);
        if (columns_.has(column)) {
            values_[place] = std::move(value);
            return;
        }
        columns_.add(column);
        values_.insert(values_.begin() + static_cast<std::ptrdiff_t>(place), std::move(value));
    }
    /// Takes these columns of a row that has them all.
    void set(const ColumnSet& columns, const std::vector<Value>& row) {
        if (columns_.empty()) {
            columns_ = columns;
            columns.forEach([&](int column) { values_.push_back(row[static_cast<std::size_t>(column)]); });
        } else {
            columns.forEach([&](int column) { set(column, row[static_cast<std::size_t>(column)]); });
        }
    }

  private:
    ColumnSet columns_;
    std::vector<Value> values_;
};

}  // namespace kolmera
