#pragma once

#include <string_view>
#include <vector>

#include "source/sourceformat.h"

namespace kolmera {

/// In which character set a text is.
struct CharacterGuess {
    CharacterSet characters = CharacterSet::Utf8;
    double confidence = 1;
    std::vector<CharacterSet> candidates;  ///< the likeliest first; one where it is sure
};

/// By its mark, by zeros in every other byte, by being UTF-8, and else by how well the letters of each code page fit
/// the words they stand in. `isCut` tells that the text goes on.
CharacterGuess guessCharacters(std::string_view bytes, bool isCut);

}  // namespace kolmera
