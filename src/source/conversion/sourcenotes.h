#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/encodings.h"

namespace kolmera {

/// What was not handed on as it stands in the source.
struct SourceNote {
    enum class Kind : std::uint8_t {
        Misfit,       ///< a value that is not what its column says, where the reader of the target does not tell
        BadNumber,    ///< the same of a number column, where it does
        Lacking,      ///< characters that the target's character set lacks; "?" stands for each
        Cut,          ///< a value that is longer than its piece of the record
        Short,        ///< a row that ends before its columns do
        LeftOut,      ///< a row that a pattern leaves out
        Breaks,       ///< line ends and tabs within a value, a blank stands for each
        Malformed,    ///< bytes that are no characters
        StrayQuotes,  ///< quotes within a value that should have been doubled
        ErrorValue,   ///< "#N/A" and its like in a sheet, taken as empty
    };
    static constexpr std::size_t kKinds = 10;

    std::uint64_t row = 0;  ///< Row::number
    std::string key;        ///< what names the record
    std::string column;     ///< as the user knows it
    std::string text;
};

/// Counts them, and keeps the first ones of each kind.
class SourceNotes {
  public:
    static constexpr std::size_t kMostKept = 1000;
    static constexpr std::size_t kLongestText = 400;  ///< of a kept one, in characters; a message shows fewer
    struct Tally {
        std::uint64_t count = 0;
        std::vector<SourceNote> kept;
    };

    void add(SourceNote::Kind kind, SourceNote note) { add(kind, 1, std::move(note)); }
    void add(SourceNote::Kind kind, std::uint64_t count, SourceNote first) {
        Tally& tally = tallies_[static_cast<std::size_t>(kind)];
        tally.count += count;
        if (tally.kept.size() >= kMostKept) return;
        for (std::string* text : {&first.key, &first.text}) *text = firstCharacters(*text, kLongestText);
        tally.kept.push_back(std::move(first));
    }
    [[nodiscard]] const Tally& tally(SourceNote::Kind kind) const { return tallies_[static_cast<std::size_t>(kind)]; }

  private:
    std::array<Tally, SourceNote::kKinds> tallies_;
};

}  // namespace kolmera
