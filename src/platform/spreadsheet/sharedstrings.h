#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/descriptor.h"
#include "platform/spreadsheet/archive.h"

namespace kolmera {

/// The texts that the cells of a workbook refer to by number, without their formatting. What is more than 32 MB of them
/// is kept in a temporary file.
class SharedStrings {
  public:
    /// An empty part name gives no texts. More than 2 GB of text are refused.
    static SharedStrings of(const Archive& archive, const std::string& part);

    /// Nothing for a number that no text has. Valid until the next call.
    [[nodiscard]] std::optional<std::string_view> text(std::size_t number) const;

    void add(std::string_view text);

  private:
    std::string texts_;  ///< those behind the ones in `file_`
    std::vector<std::uint32_t> ends_;
    std::size_t stored_ = 0;  ///< bytes in `file_`
    Descriptor file_;         ///< nameless; open when there are many
    mutable std::string read_;
};

}  // namespace kolmera
