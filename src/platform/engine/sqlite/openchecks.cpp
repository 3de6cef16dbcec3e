#include "platform/engine/sqlite/openchecks.h"

#include <system_error>

#include "platform/engine/sqlite/companylayout.h"
#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/engine/sqlitenames.h"
#include "platform/error.h"
#include "platform/jet/jeterrors.h"
#include "platform/jet/jetreader.h"

namespace kolmera {

namespace {

constexpr std::uintmax_t kLargestChecked = std::uintmax_t{64} << 20;  // bytes; checked in a few tenths of a second

struct HeaderNumbers {
    std::int64_t application, version;
};

HeaderNumbers readHeader(SqliteConnection& connection) {
    const HeaderNumbers numbers{connection.number("PRAGMA application_id"), connection.number("PRAGMA user_version")};
    connection.number("SELECT count(*) FROM sqlite_master");
    return numbers;
}

[[noreturn]] void sayDamaged(const std::filesystem::path& file) {
    throw PlatformError(errors::kDamaged, "the company file is damaged").about(file.string());
}

/// What SQLite does not take for a database, or not for ours, may be a company file whose first page is gone.
[[noreturn]] void refuse(const std::filesystem::path& file, const std::function<std::vector<TableDef>()>& knownTables) {
    if (jet::isAccessFile(file)) {
        throw PlatformError(errors::kAccessFile, "an Access-format file, which has to be imported")
            .about(file.string());
    }
    if (wasCompanyFile(file, knownTables)) sayDamaged(file);
    throw PlatformError(errors::kNotADatabase, "not a company file").about(file.string());
}

}  // namespace

void checkHeader(SqliteConnection& connection, const std::filesystem::path& file,
                 const std::function<std::vector<TableDef>()>& knownTables) {
    HeaderNumbers numbers{};
    try {
        numbers = readHeader(connection);
    } catch (const PlatformError& error) {
        // A word of the schema that is damaged has no number of its own.
        if (error.number() != errors::kNotADatabase && error.number() != errors::kInternal) throw;
        refuse(file, knownTables);
    }
    if (numbers.application != kApplicationId) refuse(file, knownTables);
    if (numbers.version == kUserVersion) return;
    throw PlatformError(errors::kNotADatabase, "the company file was made by a newer version").about(file.string());
}

bool findsNoDamage(SqliteConnection& connection, const std::string& check) {
    return agreesWithCopy(connection) &&
           connection.number("SELECT count(*) FROM pragma_" + check + "(1) WHERE " + check + " <> 'ok'") == 0;
}

void checkPages(SqliteConnection& connection, const std::filesystem::path& file, bool onNetwork,
                const std::vector<std::string>& tables) {
    for (const std::string& name : tables) {
        connection.number("SELECT min(rowid) FROM " + identifier(name));
        connection.number("SELECT max(rowid) FROM " + identifier(name));
    }
    std::error_code unreadable;
    const bool small = !onNetwork && std::filesystem::file_size(file, unreadable) <= kLargestChecked;
    if (!(small ? findsNoDamage(connection, "quick_check") : agreesWithCopy(connection))) sayDamaged(file);
}

}  // namespace kolmera
