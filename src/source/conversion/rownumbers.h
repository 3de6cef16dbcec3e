#pragma once

#include <cstdint>
#include <string>

#include "platform/descriptor.h"

namespace kolmera {

/// The rows of a source that its records come from, in a file without a name: eight bytes a record.
class RowNumbers {
  public:
    explicit RowNumbers(Descriptor file) : file_(std::move(file)) {}

    void add(std::uint64_t row);
    /// Behind the last `add`.
    void finish();
    /// The row of a record, from 1; 0 behind the last one. Quick in the order of the records.
    [[nodiscard]] std::uint64_t of(std::uint64_t record);

  private:
    Descriptor file_;
    std::string block_;        ///< what is not written yet, or what was read last
    std::uint64_t first_ = 0;  ///< record of the first number in the block
};

}  // namespace kolmera
