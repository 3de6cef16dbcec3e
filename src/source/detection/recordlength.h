#pragma once

#include <cstddef>
#include <string_view>

namespace kolmera {

/// After how many characters the records of a text of fixed positions repeat, with what parts them: by where its
/// blanks, digits, letters and line ends stand. 0 when nothing repeats. `text` is UTF-8; `isWhole` tells that it is not
/// cut, and its length then says something, too.
std::size_t repeatedLength(std::string_view text, bool isWhole);

}  // namespace kolmera
