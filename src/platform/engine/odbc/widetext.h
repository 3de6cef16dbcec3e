#pragma once

#include <string>
#include <string_view>

namespace kolmera {

/// UTF-8 as UTF-16, the form in which texts go to a driver whatever the locale is. A malformed byte becomes U+FFFD.
std::u16string toWide(std::string_view text);
/// UTF-16 as UTF-8; half a surrogate pair becomes U+FFFD.
std::string fromWide(std::u16string_view text);

}  // namespace kolmera
