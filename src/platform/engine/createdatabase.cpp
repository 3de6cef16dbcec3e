#include <fcntl.h>

#include <system_error>

#include "platform/descriptor.h"
#include "platform/engine/companylayout.h"
#include "platform/engine/database.h"
#include "platform/engine/password.h"
#include "platform/engine/sqliteconnection.h"
#include "platform/engine/sqliteschema.h"
#include "platform/error.h"

namespace kolmera {

namespace {

std::vector<LayoutEntry> layoutOf(std::span<const TableDef> tables) {
    std::vector<LayoutEntry> layout;
    for (const TableDef& table : tables) {
        layout.push_back({"table", table.name, createTableStatement(table)});
        for (const IndexDef& index : table.indexes) {
            std::string statement = createIndexStatement(table, index);
            if (statement.empty()) continue;
            layout.push_back({"index", indexNameInFile(table, index), std::move(statement)});
        }
    }
    return layout;
}

void makeFile(const std::filesystem::path& file, std::span<const TableDef> tables, const std::string& password) {
    SqliteConnection connection(file, {.create = true});
    connection.prepareForMaking();
    std::vector<LayoutEntry> layout = layoutOf(tables);
    if (!password.empty()) {
        layout.push_back({"table", std::string(kPasswordTable), std::string(kPasswordTableStatement)});
    }
    writeLayoutCopy(connection, layout);
    for (const LayoutEntry& entry : layout) connection.run(entry.statement);
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
