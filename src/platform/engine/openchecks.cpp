#include "platform/engine/openchecks.h"

#include "platform/engine/sqliteconnection.h"
#include "platform/engine/sqlitenames.h"
#include "platform/error.h"

namespace kolmera {

void checkHeader(SqliteConnection& connection, const std::filesystem::path& file) {
    const std::int64_t application = connection.number("PRAGMA application_id");
    const std::int64_t version = connection.number("PRAGMA user_version");
    connection.number("SELECT count(*) FROM sqlite_master");
    if (application == kApplicationId && version == kUserVersion) return;
    throw PlatformError(errors::kNotADatabase, "not a company file: " + file.string());
}

void checkTables(SqliteConnection& connection, const std::vector<std::string>& tables) {
    for (const std::string& name : tables) {
        connection.number("SELECT min(rowid) FROM " + identifier(name));
        connection.number("SELECT max(rowid) FROM " + identifier(name));
    }
}

}  // namespace kolmera
