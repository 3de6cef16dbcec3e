#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kolmera {

/// A text of a file for a window, a terminal or a log: at most `characters` of it, with "..." where it was longer.
/// Control characters, line breaks and what turns the direction of writing stand as "\\x1B"; a malformed byte too.
std::string printable(std::string_view text, std::size_t characters);

}  // namespace kolmera
