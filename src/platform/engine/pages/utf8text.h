#pragma once

#include <cstddef>
#include <string_view>

namespace kolmera {

/// How many bytes at the beginning of a text are well-formed UTF-8 without NUL, as all texts of a company are.
std::size_t readableLength(std::string_view text);

inline bool isReadable(std::string_view text) { return readableLength(text) == text.size(); }

}  // namespace kolmera
