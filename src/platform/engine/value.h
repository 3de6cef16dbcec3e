#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "platform/date.h"

namespace kolmera {

struct Null {
    bool operator==(const Null&) const = default;
};

/// A value of a field: Null, a Boolean, a whole number, a floating-point number, a date or a text (UTF-8).
using Value = std::variant<Null, bool, std::int64_t, double, Date, std::string>;

inline bool isNull(const Value& value) { return std::holds_alternative<Null>(value); }
/// The text of a text value; empty for everything else. No conversion, no copy.
inline std::string_view textOf(const Value& value) {
    const auto* text = std::get_if<std::string>(&value);
    return text ? std::string_view(*text) : std::string_view();
}

/// The suite's field-type codes.
enum class FieldType : std::int16_t {
    Boolean = 1,
    Byte = 2,
    Integer = 3,  ///< 16 bits
    Long = 4,     ///< 32 bits; COUNTER too
    Currency = 5,
    Single = 6,
    Double = 7,
    Date = 8,
    Text = 10,
    Memo = 12,
};

}  // namespace kolmera
