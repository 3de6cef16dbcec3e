#include "platform/engine/sqlite/collation.h"

#include <sqlite3.h>

namespace kolmera {

int registerSwedishCollation(sqlite3* connection) {
    return sqlite3_create_collation_v2(connection, "SVENSKA", SQLITE_UTF8, nullptr, compareSwedishBytes, nullptr);
}

}  // namespace kolmera
