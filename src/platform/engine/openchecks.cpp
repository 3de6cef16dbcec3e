#include "platform/engine/openchecks.h"

#include "platform/engine/companylayout.h"
#include "platform/engine/sqliteconnection.h"
#include "platform/engine/sqlitenames.h"
#include "platform/error.h"

namespace kolmera {

namespace {

struct HeaderNumbers {
    std::int64_t application, version;
};

HeaderNumbers readHeader(SqliteConnection& connection) {
    const HeaderNumbers numbers{connection.number("PRAGMA application_id"), connection.number("PRAGMA user_version")};
    connection.number("SELECT count(*) FROM sqlite_master");
    return numbers;
}

/// What SQLite does not take for a database, or not for ours, may be a company file whose first page is gone.
[[noreturn]] void refuse(const std::filesystem::path& file) {
    if (carriesLayout(file)) throw PlatformError(errors::kDamaged, "the company file is damaged: " + file.string());
    throw PlatformError(errors::kNotADatabase, "not a company file: " + file.string());
}

}  // namespace

void checkHeader(SqliteConnection& connection, const std::filesystem::path& file) {
    HeaderNumbers numbers{};
    try {
        numbers = readHeader(connection);
    } catch (const PlatformError& error) {
        if (error.number() != errors::kNotADatabase) throw;
        refuse(file);
    }
    if (numbers.application != kApplicationId) refuse(file);
    if (numbers.version == kUserVersion) return;
    throw PlatformError(errors::kNotADatabase, "the company file was made by a newer version: " + file.string());
}

void checkTables(SqliteConnection& connection, const std::vector<std::string>& tables) {
    for (const std::string& name : tables) {
        connection.number("SELECT min(rowid) FROM " + identifier(name));
        connection.number("SELECT max(rowid) FROM " + identifier(name));
    }
}

}  // namespace kolmera
