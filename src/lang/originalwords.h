#pragma once

#include <deque>
#include <string>
#include <string_view>

namespace kolmera {

/// The words that errors came with, by the sentence that a user was told instead: whoever shows the sentence can show
/// them on request. Knows the latest errors only, and of those told alike the last.
class OriginalWords {
  public:
    void keep(std::string_view sentence, std::string words);
    /// Of all sentences that stand in a text, a line each, in the order in which they were told.
    [[nodiscard]] std::string in(std::string_view text) const;

  private:
    struct Told {
        std::string beginning, words;
    };
    std::deque<Told> told_;
};

}  // namespace kolmera
