#pragma once

#include <cstdint>
#include <string_view>
#include <variant>

namespace kolmera {

/// A value as a record of the file stores it: nothing, a whole number, a number, or a text that lies elsewhere.
using StoredValue = std::variant<std::monostate, std::int64_t, double, std::string_view>;

}  // namespace kolmera
