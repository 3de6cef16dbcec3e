#pragma once

#include <string>
#include <string_view>

#include "platform/engine/database.h"
#include "support/errorof.h"

namespace kolmera::test {

/// A value as a test writes it: "Null", "true", "7", "2.5", "2026-11-22", "'text'". Numbers have all their digits.
std::string show(const Value& value);

/// What a statement selects: values separated by blanks, records by "; ".
std::string select(Database& database, std::string_view statement);

}  // namespace kolmera::test
