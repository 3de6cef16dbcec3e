#include "platform/engine/companylayout.h"

#include <fcntl.h>

#include <algorithm>

#include "platform/descriptor.h"
#include "platform/engine/sqliteconnection.h"
#include "platform/engine/sqlitenames.h"
#include "platform/engine/sqlitestatement.h"

namespace kolmera {

namespace {

constexpr std::string_view kLayoutTable = "kolmera_layout";
constexpr std::string_view kMark = "Kolmera company file";
constexpr std::size_t kBeginning = std::size_t{256} << 10;  // bytes in which the copy lies

TableDef textTable(std::string_view name, std::initializer_list<std::string_view> columns) {
    TableDef table{std::string(name), {}, {}};
    for (const std::string_view column : columns) table.fields.push_back({.name = std::string(column)});
    return table;
}

TableDef sqliteSchema() {
    TableDef schema = textTable("sqlite_master", {"type", "name", "tbl_name", "rootpage", "sql"});
    schema.fields[3].type = FieldType::Long;
    return schema;
}

TableDef copyOfSchema() { return textTable(kLayoutTable, {"mark", "type", "name", "statement"}); }

std::string textOf(const StoredValue& value) {
    const auto* text = std::get_if<std::string_view>(&value);
    return text != nullptr ? std::string(*text) : std::string();
}

std::vector<LayoutEntry> readSchema(const PageFile& file) {
    std::vector<LayoutEntry> layout;
    const SalvageTable schema{sqliteSchema(), 1};
    Salvage(file).readTables({&schema, 1}, [&](std::size_t, std::int64_t, std::span<const StoredValue> values) {
        if (values.size() != 5) return;
        const auto* root = std::get_if<std::int64_t>(&values[3]);
        LayoutEntry entry{textOf(values[0]), textOf(values[1]), textOf(values[4]),
                          root != nullptr ? static_cast<std::uint32_t>(*root) : 0U};
        if (!entry.statement.empty()) layout.push_back(std::move(entry));
    });
    return layout;
}

std::vector<LayoutEntry> readCopy(const PageFile& file, std::uint32_t root) {
    std::vector<LayoutEntry> layout;
    const SalvageTable copy{copyOfSchema(), root};
    Salvage(file).readTables({&copy, 1}, [&](std::size_t, std::int64_t, std::span<const StoredValue> values) {
        if (values.size() == 4 && textOf(values[0]) == kMark) {
            layout.push_back({textOf(values[1]), textOf(values[2]), textOf(values[3])});
        }
    });
    return layout;
}

}  // namespace

void writeLayoutCopy(SqliteConnection& connection, const std::vector<LayoutEntry>& layout) {
    connection.run("CREATE TABLE " + identifier(kLayoutTable) + " (mark TEXT, type TEXT, name TEXT, statement TEXT)");
    SqliteStatement insert(connection, "INSERT INTO " + identifier(kLayoutTable) + " VALUES (?, ?, ?, ?)");
    for (const LayoutEntry& entry : layout) {
        insert.bind(1, kMark);
        insert.bind(2, std::string_view(entry.type));
        insert.bind(3, std::string_view(entry.name));
        insert.bind(4, std::string_view(entry.statement));
        insert.run();
    }
}

bool carriesLayout(const std::filesystem::path& file) {
    const Descriptor descriptor(file, O_RDONLY | O_CLOEXEC);
    std::string beginning(kBeginning, '\0');
    beginning.resize(descriptor.readAt(0, beginning.data(), beginning.size()));
    return beginning.find(kMark) != std::string::npos;
}

std::vector<LayoutEntry> salvageLayout(const PageFile& file) {
    std::vector<LayoutEntry> layout = readSchema(file);
    const auto named = [&](std::string_view name) {
        return std::find_if(layout.begin(), layout.end(), [&](const LayoutEntry& entry) { return entry.name == name; });
    };
    const auto copy = named(kLayoutTable);
    const std::uint32_t root = copy != layout.end() ? copy->root : 0;
    if (copy != layout.end()) layout.erase(copy);
    for (LayoutEntry& entry : readCopy(file, root)) {
        if (named(entry.name) == layout.end()) layout.push_back(std::move(entry));
    }
    return layout;
}

}  // namespace kolmera
