#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "source/sourcesettings.h"

namespace kolmera {

/// Headings that the settings name, and which the file has not, or more than once.
struct HeadingFault {
    std::vector<std::string> missing, doubled;

    [[nodiscard]] bool any() const { return !missing.empty() || !doubled.empty(); }
};

/// Finds the columns that settings name in the file at hand.
class ColumnFinder {
  public:
    /// `headings` of the file; none where it has none.
    explicit ColumnFinder(const std::vector<std::string>& headings);

    /// The place of a column, from 0; nothing for no column. A heading that is not there, or more than once, is noted.
    std::optional<std::size_t> find(const ColumnName& name);
    [[nodiscard]] const HeadingFault& fault() const { return fault_; }

  private:
    std::vector<std::string> headings_;  ///< as they are compared
    HeadingFault fault_;
};

}  // namespace kolmera
