#include <system_error>

#include "platform/engine/database.h"
#include "platform/engine/sqlite/companylayout.h"
#include "platform/engine/sqlite/password.h"
#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/error.h"
#include "platform/privatefile.h"

namespace kolmera {

namespace {

void makeFile(const std::filesystem::path& file, std::span<const TableDef> tables, const std::string& password) {
    SqliteConnection connection(file, {.create = true});
    connection.prepareForMaking();
    makeTables(connection, tables, !password.empty());
    for (const TableDef& table : tables) makeIndexes(connection, table);
    if (!password.empty()) storePassword(connection, password);
    connection.commit();
}

}  // namespace

void createFileDatabase(const std::filesystem::path& file, std::span<const TableDef> tables,
                        const std::string& password) {
    std::error_code none;
    if (std::filesystem::exists(file, none)) {
        throw PlatformError(errors::kInternal, "the file exists already: " + file.string());
    }
    PrivateFile unfinished(file, ".new", PrivateFile::kForAll);
    makeFile(unfinished.path(), tables, password);
    unfinished.moveTo(file);
}

}  // namespace kolmera
