#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kolmera {

/// What a user has typed into a search box. A text is found when every word of it stands somewhere in the text; letter
/// case does not count.
class SearchWords {
  public:
    explicit SearchWords(std::string_view typed = {});

    [[nodiscard]] bool empty() const { return words_.empty(); }
    [[nodiscard]] bool in(std::string_view text) const;

  private:
    std::vector<std::string> words_;  ///< in upper case
};

}  // namespace kolmera
