#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/locale.h"
#include "registers/register.h"
#include "source/conversion/values.h"

namespace kolmera {

/// How a text is to be understood: as the user writes, or as a file has it.
struct Spelling {
    /// Of the user; nothing: by `signs` and `order`.
    std::optional<Locale> locale = {};
    NumberSigns signs = {};
    DateOrder order = DateOrder::Unknown;
};

/// The value that a text means in a cell of that kind; an empty text is the cell's empty value. Only the kind, length
/// and bounds are looked at, not what the text names.
[[nodiscard]] std::optional<RegisterProblem> readValue(const RegisterColumn& cell, int column, std::string_view text,
                                                       const Spelling& spelling, Value& value);

/// Without value: Null, or what the column's type has instead.
[[nodiscard]] Value emptyValue(const RegisterColumn& cell);
}  // namespace kolmera
