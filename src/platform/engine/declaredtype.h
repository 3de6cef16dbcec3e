#pragma once

#include <string>
#include <string_view>

#include "platform/engine/schema.h"

namespace kolmera {

/// The type of a column as a company file declares it: "TEXT(20)", "MEMO TEXT", "INTEGER" (the counter, too) ...
std::string declaredType(const FieldDef& field);

/// The field of a column with this name and declared type; `counter` when it is the primary key. Throws PlatformError
/// for a type that the engine does not know.
FieldDef fieldOfDeclaredType(std::string_view name, std::string_view type, bool counter);

/// Whether a new record has 0 or false in a field of this type, when nothing else is said.
bool hasZeroDefault(FieldType type);

}  // namespace kolmera
