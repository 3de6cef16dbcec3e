#pragma once

#include <array>
#include <string>
#include <string_view>

#include "db/productcolumns.h"

namespace kolmera {

/// One text for each of the nine price lists, kept as one setting: "1=EUR;3=USD" says EUR and USD for lists 1 and 3,
/// and the standard text for the others.
class ListSetting {
  public:
    explicit ListSetting(std::string_view standard);

    /// Replaces all nine texts; of several entries for one list the first counts.
    void read(std::string_view setting);

    [[nodiscard]] const std::string& of(int list) const { return texts_.at(place(list)); }
    void set(int list, std::string_view text) { texts_.at(place(list)) = text; }

  private:
    static std::size_t place(int list) { return static_cast<std::size_t>(list - 1); }

    std::string standard_;
    std::array<std::string, kPriceLists> texts_;
};

}  // namespace kolmera
