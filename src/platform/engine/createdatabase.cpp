#include <system_error>

#include "platform/engine/database.h"
#include "platform/engine/password.h"
#include "platform/engine/sqliteconnection.h"
#include "platform/engine/sqlitenames.h"
#include "platform/engine/sqliteschema.h"
#include "platform/error.h"

namespace kolmera {

namespace {

void makeTables(SqliteConnection& connection, std::span<const TableDef> tables) {
    for (const TableDef& table : tables) {
        connection.run(createTableStatement(table));
        for (const IndexDef& index : table.indexes) {
            const std::string statement = createIndexStatement(table, index);
            if (!statement.empty()) connection.run(statement);
        }
    }
}

void makeFile(const std::filesystem::path& file, std::span<const TableDef> tables, const std::string& password) {
    SqliteConnection connection(file, {.create = true});
    connection.run("PRAGMA encoding = 'UTF-8'");
    connection.begin();
    connection.run("PRAGMA application_id = " + std::to_string(kApplicationId));
    connection.run("PRAGMA user_version = " + std::to_string(kUserVersion));
    makeTables(connection, tables);
    if (!password.empty()) storePassword(connection, password);
    connection.commit();
}

}  // namespace

void createFileDatabase(const std::filesystem::path& file, std::span<const TableDef> tables,
                        const std::string& password) {
    if (std::filesystem::exists(file)) {
        throw PlatformError(errors::kInternal, "the file exists already: " + file.string());
    }
    std::filesystem::path unfinished = file;
    unfinished += ".new";
    std::filesystem::remove(unfinished);
    makeFile(unfinished, tables, password);
    std::error_code error;
    std::filesystem::rename(unfinished, file, error);
    if (error) throw PlatformError(errors::kInternal, error.message() + ": " + file.string());
}

}  // namespace kolmera
