#pragma once

namespace kolmera {

/// Of ASCII, whatever the locale is.
constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace kolmera
