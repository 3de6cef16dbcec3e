// The collation SVENSKA as a loadable extension, so that other tools can open a company file:
//   sqlite3 -cmd ".load ./svenska" FTG1.mdb
#include <sqlite3ext.h>

#include "platform/engine/sqlite/collation.h"

SQLITE_EXTENSION_INIT1

// The name is the one that SQLite derives from the file name svenska.so.
extern "C" __attribute__((visibility("default"))) int sqlite3_svenska_init(sqlite3* connection, char** /*message*/,
                                                                           const sqlite3_api_routines* routines) {
    SQLITE_EXTENSION_INIT2(routines);
    return sqlite3_create_collation_v2(connection, "SVENSKA", SQLITE_UTF8, nullptr, kolmera::compareSwedishBytes,
                                       nullptr);
}
