#include "history/recordfile.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <string>
#include <system_error>

#include "platform/descriptor.h"
#include "platform/engine/sqlite/sqlitestatement.h"
#include "platform/error.h"
#include "platform/paths.h"

namespace kolmera {

namespace {

struct HeaderText {
    std::string_view key;
    std::string& (*text)(RunHeader&);
};

/// `id` is the name of the file.
constexpr HeaderText kTexts[] = {
    {"of", [](RunHeader& header) -> std::string& { return header.of; }},
    {"started", [](RunHeader& header) -> std::string& { return header.started; }},
    {"ended", [](RunHeader& header) -> std::string& { return header.ended; }},
    {"outcome", [](RunHeader& header) -> std::string& { return header.outcome; }},
    {"user", [](RunHeader& header) -> std::string& { return header.user; }},
    {"host", [](RunHeader& header) -> std::string& { return header.host; }},
    {"version", [](RunHeader& header) -> std::string& { return header.version; }},
    {"job", [](RunHeader& header) -> std::string& { return header.job; }},
    {"definition", [](RunHeader& header) -> std::string& { return header.definition; }},
    {"companyName", [](RunHeader& header) -> std::string& { return header.companyName; }},
    {"companyFile", [](RunHeader& header) -> std::string& { return header.companyFile; }},
    {"priceFile", [](RunHeader& header) -> std::string& { return header.priceFile.path; }},
    {"priceFileModified", [](RunHeader& header) -> std::string& { return header.priceFile.modified; }},
    {"priceFileSha256", [](RunHeader& header) -> std::string& { return header.priceFile.sha256; }},
    {"counts", [](RunHeader& header) -> std::string& { return header.counts; }},
};

void put(SqliteStatement& statement, std::string_view key, std::string_view text) {
    const StatementUse use(statement);
    statement.bind(1, key);
    statement.bind(2, text);
    statement.step();
}

std::string textOf(const LastIds& ids) {
    std::string text;
    for (const auto& [table, id] : ids) text += fmt::format("{}\t{}\n", table, id);
    return text;
}

LastIds lastIdsOf(std::string_view text) {
    LastIds ids;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::size_t tab = line.find('\t');
        if (tab == std::string_view::npos) continue;
        std::int64_t id = 0;
        std::from_chars(line.data() + tab + 1, line.data() + line.size(), id);
        ids[std::string(line.substr(0, tab))] = id;
    }
    return ids;
}

}  // namespace

ConnectionOptions recordOptions(const std::filesystem::path& file, bool readOnly) {
    return {.create = false, .readOnly = readOnly, .exclusive = false, .onNetwork = onNetworkFileSystem(file)};
}

void makeRecordTables(SqliteConnection& connection) {
    connection.run(fmt::format("PRAGMA application_id = {}", kRecordApplication));
    connection.run(fmt::format("PRAGMA user_version = {}", kRecordVersion));
    connection.run("CREATE TABLE header (key TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID");
    connection.run("CREATE TABLE block (number INTEGER PRIMARY KEY, first INTEGER, last INTEGER, data BLOB)");
    connection.run("CREATE TABLE remark (number INTEGER PRIMARY KEY, data BLOB)");
    connection.run("CREATE TABLE keys (number INTEGER PRIMARY KEY, data BLOB)");
    connection.run("CREATE TABLE copy (number INTEGER PRIMARY KEY, data BLOB)");
}

void writeHeader(SqliteConnection& connection, const RunHeader& header) {
    RunHeader written = header;
    SqliteStatement statement(connection, "INSERT OR REPLACE INTO header VALUES (?, ?)");
    for (const HeaderText& row : kTexts) put(statement, row.key, row.text(written));
    put(statement, "kind", fmt::format("{}", static_cast<int>(header.kind)));
    put(statement, "lastIds", textOf(header.lastIds));
    put(statement, "priceFileSize", fmt::format("{}", header.priceFile.size));
    put(statement, "locked", header.locked ? "1" : "0");
    put(statement, "priceFileCopied", header.priceFile.copied ? "1" : "0");
}

RunHeader readHeader(SqliteConnection& connection) {
    const std::int64_t version = connection.number("PRAGMA user_version");
    if (connection.number("PRAGMA application_id") != kRecordApplication || version < 1 || version > kRecordVersion) {
        throw PlatformError(errors::kNotADatabase, "not the record of a run");
    }
    RunHeader header;
    SqliteStatement query(connection, "SELECT key, value FROM header");
    while (query.step()) {
        const std::string_view key = query.text(0);
        const auto text = std::ranges::find(kTexts, key, &HeaderText::key);
        if (text != std::end(kTexts)) text->text(header) = query.text(1);
        if (key == "kind") header.kind = static_cast<RunKind>(std::clamp<std::int64_t>(query.integer(1), 0, 2));
        if (key == "lastIds") header.lastIds = lastIdsOf(query.text(1));
        if (key == "priceFileSize") header.priceFile.size = query.integer(1);
        if (key == "locked") header.locked = query.integer(1) != 0;
        if (key == "priceFileCopied") header.priceFile.copied = query.integer(1) != 0;
    }
    return header;
}

void removeRecordFile(const std::filesystem::path& file) {
    for (const char* beside : {"-wal", "-shm", "-journal", ""}) {
        std::filesystem::path name = file;
        name += beside;
        std::error_code failed;
        std::filesystem::remove(name, failed);
        if (failed) throwSystemError(failed.value());
    }
}

}  // namespace kolmera
