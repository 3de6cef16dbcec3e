#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/engine/value.h"

namespace kolmera {

/// Reads what SQLite stores in a column as a value of a field type; what is stored in another form comes as it is
/// stored. A text keeps the memory that `into` already has. `Source` is one column: storage(), integer(), number(),
/// text().
template <typename Source>
void readStored(const Source& source, FieldType type, Value& into) {
    const int storage = source.storage();
    if (storage == SQLITE_NULL) {
        into = Null{};
        return;
    }
    if (storage == SQLITE_INTEGER || storage == SQLITE_FLOAT) {
        const bool whole = type == FieldType::Byte || type == FieldType::Integer || type == FieldType::Long;
        if (type == FieldType::Boolean) {
            into = source.integer() != 0;
        } else if (whole && storage == SQLITE_INTEGER) {
            into = static_cast<std::int64_t>(source.integer());
        } else {
            into = source.number();
        }
        return;
    }
    const std::string_view stored = source.text();
    if (type == FieldType::Date) {
        // A time of day that another tool may have appended does not count.
        if (const auto date = Date::fromIso(stored.substr(0, 10))) {
            into = *date;
            return;
        }
    }
    if (auto* kept = std::get_if<std::string>(&into)) {
        kept->assign(stored);
    } else {
        into.emplace<std::string>(stored);
    }
}

}  // namespace kolmera
