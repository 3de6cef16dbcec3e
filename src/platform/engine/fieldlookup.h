#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/schema.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

/// Place of a field in a list by its name without regard to letter case; throws kUnknownField.
inline int requiredOrdinal(const std::vector<FieldDef>& fields, std::string_view name) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (equalNoCase(fields[i].name, name)) return static_cast<int>(i);
    }
    throw PlatformError(errors::kUnknownField, std::string("there is no field ").append(name));
}

/// Throws kUnknownField for a number that is no place in a list of so many fields.
inline std::size_t requiredPlace(int ordinal, std::size_t fields) {
    const auto place = static_cast<std::size_t>(ordinal);
    if (place < fields) return place;  // a negative number has become a large one
    throw PlatformError(errors::kUnknownField, "there is no field number " + std::to_string(ordinal));
}

}  // namespace kolmera
