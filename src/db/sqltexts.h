#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/value.h"

namespace kolmera {

/// A statement with "?" in place of some of its values.
struct BoundStatement {
    std::string text;
    std::vector<Value> parameters;
};

/// What a server needs of a statement written for a file: FALSE and TRUE become 0 and 1 and "#" becomes an apostrophe,
/// wherever they stand. A quoted text that this would break ("#" in it) or that servers read in different ways (both
/// kinds of quotes, a backslash, NUL) becomes a parameter, between those of `parameters` that stand before and behind
/// it.
BoundStatement serverStatement(std::string_view statement, std::span<const Value> parameters);

}  // namespace kolmera
