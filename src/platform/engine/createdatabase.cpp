#include <system_error>

#include "platform/engine/companylayout.h"
#include "platform/engine/database.h"
#include "platform/engine/password.h"
#include "platform/engine/sqliteconnection.h"
#include "platform/engine/sqlitenames.h"
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
    connection.run("PRAGMA encoding = 'UTF-8'");
    connection.begin();
    connection.run("PRAGMA application_id = " + std::to_string(kApplicationId));
    connection.run("PRAGMA user_version = " + std::to_string(kUserVersion));
    const std::vector<LayoutEntry> layout = layoutOf(tables);
    writeLayoutCopy(connection, layout);
    for (const LayoutEntry& entry : layout) connection.run(entry.statement);
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
