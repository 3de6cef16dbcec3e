#pragma once

#include <array>
#include <string>
#include <string_view>

namespace kolmera {

/// Entries 1 to 48 of the built-in word table `Ordtabell` (entry 0 is empty), in English for "EN", else in Swedish.
std::array<std::string, 49> wordTable(std::string_view language);

}  // namespace kolmera
