#pragma once

#include <cstddef>

#include "platform/lettercase.h"

struct sqlite3;

namespace kolmera {

/// `compareSwedish` in the form that SQLite calls.
inline int compareSwedishBytes(void* /*unused*/, int aLength, const void* a, int bLength, const void* b) {
    return compareSwedish({static_cast<const char*>(a), static_cast<std::size_t>(aLength)},
                          {static_cast<const char*>(b), static_cast<std::size_t>(bLength)});
}

/// Makes the collation SVENSKA known to a connection. Returns the result code of SQLite.
int registerSwedishCollation(sqlite3* connection);

}  // namespace kolmera
