#pragma once

#include <string>
#include <string_view>

namespace kolmera {

/// The path up to and including its last "\", else its last ":" (its last "/" when it begins with "/"). A path with
/// none, or whose only separator is its first character, is returned whole.
std::string Mappdel(std::string_view path);

}  // namespace kolmera
