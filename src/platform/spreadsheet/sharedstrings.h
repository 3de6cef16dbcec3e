#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/spreadsheet/archive.h"

namespace kolmera {

/// The texts that the cells of a workbook refer to by number, without their formatting.
class SharedStrings {
  public:
    /// An empty part name gives no texts. More than 256 MB of text are refused.
    static SharedStrings of(const Archive& archive, const std::string& part);

    /// Nothing for a number that no text has.
    [[nodiscard]] std::optional<std::string_view> text(std::size_t number) const;

    void add(std::string_view text);

  private:
    std::string texts_;
    std::vector<std::uint32_t> ends_;
};

}  // namespace kolmera
