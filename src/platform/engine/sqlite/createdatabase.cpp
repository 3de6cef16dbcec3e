#include <fcntl.h>

#include <system_error>

#include "platform/descriptor.h"
#include "platform/engine/database.h"
#include "platform/engine/sqlite/companylayout.h"
#include "platform/engine/sqlite/password.h"
#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/error.h"

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
    std::filesystem::path unfinished = file;
    unfinished += ".new";
    std::filesystem::remove(unfinished, none);
    makeFile(unfinished, tables, password);
    moveOver(Descriptor(unfinished, O_RDWR | O_CLOEXEC), unfinished, file);
}

}  // namespace kolmera
