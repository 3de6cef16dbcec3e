#include "platform/engine/sqlite/companylayout.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>

#include "platform/descriptor.h"
#include "platform/engine/pages/utf8text.h"
#include "platform/engine/sqlite/layoutstatement.h"
#include "platform/engine/sqlite/password.h"
#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/engine/sqlite/sqliteschema.h"
#include "platform/engine/sqlitenames.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

constexpr std::string_view kLayoutTable = "kolmera_layout";
constexpr std::string_view kMark = "Kolmera company file";
constexpr std::size_t kBeginning = std::size_t{256} << 10;  // bytes in which the copy lies
constexpr std::uint32_t kPagesLookedAt = 1U << 14;          // for rows, when the copy is gone
constexpr std::size_t kTellingColumns = 8;                  // rows of fewer fit other programs' tables

/// One table, index, view or trigger of a file.
struct LayoutEntry {
    std::string type, name;
    std::string table;  ///< what it belongs to; a table to itself
    std::string statement;
    std::uint32_t root = 0;  ///< page where its tree begins
};

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

std::vector<LayoutEntry> layoutOf(std::span<const TableDef> tables, bool password) {
    std::vector<LayoutEntry> layout;
    for (const TableDef& table : tables) {
        layout.push_back({"table", table.name, table.name, createTableStatement(table)});
        for (const IndexDef& index : table.indexes) {
            std::string statement = createIndexStatement(table, index);
            if (statement.empty()) continue;
            layout.push_back({"index", indexNameInFile(table, index), table.name, std::move(statement)});
        }
    }
    const std::string name(kPasswordTable);
    if (password) layout.push_back({"table", name, name, std::string(kPasswordTableStatement)});
    return layout;
}

/// FNV-1a: tells a damaged line of the copy from a whole one.
std::uint64_t checksum(std::string_view text) {
    std::uint64_t sum = 0xCBF29CE484222325;
    for (const char c : text) sum = (sum ^ static_cast<std::uint8_t>(c)) * 0x100000001B3;
    return sum;
}

/// What stands beside every line of the copy: what file it is, how many lines there are, and the line's checksum.
std::string markOf(const LayoutEntry& entry, std::size_t lines) {
    const std::string line = fmt::format("{}\n{}\n{}\n{}", lines, entry.type, entry.name, entry.statement);
    return fmt::format("{} {} {:016x}", kMark, lines, checksum(line));
}

std::size_t linesOf(std::string_view mark) {
    std::size_t lines = 0;
    const std::size_t at = kMark.size() + 1;
    if (mark.starts_with(kMark) && mark.size() > at)
        std::from_chars(mark.data() + at, mark.data() + mark.size(), lines);
    return lines;
}

/// Older files have marks without checksum.
bool isWhole(std::string_view mark, const LayoutEntry& line) {
    return mark == kMark || mark == markOf(line, linesOf(mark));
}

void writeCopy(SqliteConnection& connection, const std::vector<LayoutEntry>& layout) {
    connection.run("CREATE TABLE " + identifier(kLayoutTable) + " (mark TEXT, type TEXT, name TEXT, statement TEXT)");
    SqliteStatement insert(connection, "INSERT INTO " + identifier(kLayoutTable) + " VALUES (?, ?, ?, ?)");
    for (const LayoutEntry& entry : layout) {
        const std::string mark = markOf(entry, layout.size());
        insert.bind(1, std::string_view(mark));
        insert.bind(2, std::string_view(entry.type));
        insert.bind(3, std::string_view(entry.name));
        insert.bind(4, std::string_view(entry.statement));
        insert.run();
    }
}

std::vector<LayoutEntry> readSchema(const PageFile& file) {
    std::vector<LayoutEntry> layout;
    const SalvageTable schema{sqliteSchema(), 1};
    Salvage(file, {&schema, 1}).readAllRows([&](const SalvagedRow& row) {
        if (row.values.size() != schema.definition.fields.size()) return;
        const auto* root = std::get_if<std::int64_t>(&row.values[3]);
        layout.push_back({textOf(row.values[0]), textOf(row.values[1]), textOf(row.values[2]), textOf(row.values[4]),
                          root != nullptr ? static_cast<std::uint32_t>(*root) : 0U});
    });
    return layout;
}

/// The copy of the layout, and whether all of it is there.
struct Copy {
    std::vector<LayoutEntry> lines;
    bool complete = false;
};

/// Older files have a copy without checksums: it counts when all of it can be read.
Copy readCopy(const PageFile& file, std::uint32_t root) {
    const SalvageTable table{copyOfSchema(), root};
    const Salvage salvage(file, {&table, 1});
    std::vector<LayoutEntry> checked;
    std::vector<LayoutEntry> unchecked;
    std::size_t lines = 0;
    salvage.readAllRows([&](const SalvagedRow& row) {
        if (row.values.size() != table.definition.fields.size()) return;
        const std::string mark = textOf(row.values[0]);
        LayoutEntry entry{textOf(row.values[1]), textOf(row.values[2]), {}, textOf(row.values[3])};
        if (mark == kMark) {
            unchecked.push_back(std::move(entry));
        } else if (isWhole(mark, entry)) {
            lines = linesOf(mark);
            checked.push_back(std::move(entry));
        }
    });
    const bool old = checked.empty() && salvage.whole();
    const bool complete = old ? !unchecked.empty() : lines > 0 && checked.size() == lines;
    return {old ? std::move(unchecked) : std::move(checked), complete};
}

bool sameField(const FieldDef& a, const FieldDef& b) {
    return a.name == b.name && a.type == b.type && a.size == b.size && a.counter == b.counter &&
           a.defaultNull == b.defaultNull;
}

/// Whether one table is the other with more columns behind its own.
bool sameBeginning(const TableDef& a, const TableDef& b) {
    const std::size_t common = std::min(a.fields.size(), b.fields.size());
    return std::equal(a.fields.begin(), a.fields.begin() + static_cast<std::ptrdiff_t>(common), b.fields.begin(),
                      sameField);
}

/// Puts a layout together from its sources, the most trustworthy first.
class LayoutBuilder {
  public:
    [[nodiscard]] TableDef* table(std::string_view name) {
        const auto found = std::ranges::find_if(
            layout_.tables, [&](const SalvageTable& table) { return equalNoCase(table.definition.name, name); });
        return found == layout_.tables.end() ? nullptr : &found->definition;
    }

    void addCopy(const std::vector<LayoutEntry>& lines) {
        for (const LayoutEntry& line : lines) {
            if (line.type == "table") addTable(line);
        }
        for (const LayoutEntry& line : lines) {
            if (line.type == "index") addIndex(line);
        }
    }

    void addKnown(std::span<const TableDef> known) {
        for (const TableDef& definition : known) {
            TableDef* there = table(definition.name);
            if (there == nullptr) {
                layout_.tables.push_back({definition});
                continue;
            }
            for (const IndexDef& index : definition.indexes) addIndex(*there, index);
        }
    }

    /// Takes what was added later, and where the trees begin. A name counts when the statement says it, too.
    void addSchema(const std::vector<LayoutEntry>& schema) {
        for (const LayoutEntry& entry : schema) {
            if (entry.type == "table" && entry.name == entry.table) addTable(entry);
        }
        for (const LayoutEntry& entry : schema) {
            if (entry.type == "index") addIndex(entry);
            if (entry.type != "index") addRoot(entry);
        }
    }

    [[nodiscard]] SalvagedLayout take() && { return std::move(layout_); }

  private:
    void addTable(const LayoutEntry& entry) {
        if (entry.name == kPasswordTable) layout_.password = true;
        auto parsed = parseTableStatement(entry.statement);
        if (!parsed || parsed->name != entry.name || parsed->name.starts_with(kInternalPrefix)) return;
        TableDef* there = table(entry.name);
        if (there == nullptr) {
            layout_.tables.push_back({std::move(*parsed)});
        } else if (parsed->name == there->name && sameBeginning(*parsed, *there)) {
            there->fields = std::move(parsed->fields);
        }
    }

    void addIndex(const LayoutEntry& entry) {
        const auto parsed = parseIndexStatement(entry.statement);
        TableDef* owner = parsed ? table(parsed->table) : nullptr;
        if (owner == nullptr ||
            (indexNameInFile(*owner, parsed->index) != entry.name && parsed->index.name != entry.name))
            return;
        addIndex(*owner, parsed->index);
    }

    static void addIndex(TableDef& owner, const IndexDef& index) {
        const std::vector<std::string> columns = index.columns();
        const bool complete =
            std::ranges::all_of(columns, [&](const std::string& column) { return owner.ordinal(column) >= 0; });
        if (complete && owner.index(index.name) == nullptr) owner.indexes.push_back(index);
    }

    /// One damaged word of an entry does not lose its root.
    void addRoot(const LayoutEntry& entry) {
        if (entry.type != "table" && !entry.statement.starts_with("CREATE TABLE")) return leaveOut(entry);
        if (entry.name == kPasswordTable || entry.table == kPasswordTable) {
            layout_.password = true;
            layout_.passwordRoot = entry.root;
            return;
        }
        const auto found = std::ranges::find_if(layout_.tables, [&](const SalvageTable& table) {
            const std::string& name = table.definition.name;
            return name == entry.name || name == entry.table ||
                   createTableStatement(table.definition) == entry.statement;
        });
        if (found == layout_.tables.end()) return leaveOut(entry);
        if (found->root == 0) found->root = entry.root;
    }

    void leaveOut(const LayoutEntry& entry) {
        const auto isInternal = [](std::string_view name) {
            return name.starts_with("sqlite_") || name.starts_with(kInternalPrefix);
        };
        const bool counts = entry.type == "table" || entry.type == "view" || entry.type == "trigger";
        if (!counts || isInternal(entry.name) || isInternal(entry.table)) return;
        layout_.leftOut.push_back(entry.name.substr(0, readableLength(entry.name)));
    }

    SalvagedLayout layout_;
};

/// Whether a statement makes what that of the copy makes.
bool makesTheSame(const LayoutEntry& line, std::string_view statement) {
    if (line.statement == statement) return true;
    if (line.type == "index") {
        const auto copied = parseIndexStatement(line.statement);
        const auto kept = parseIndexStatement(statement);
        return copied && kept && copied->table == kept->table && copied->index.fields == kept->index.fields &&
               copied->index.unique == kept->index.unique;
    }
    const auto copied = parseTableStatement(line.statement);
    const auto kept = parseTableStatement(statement);
    return copied && kept && copied->name == kept->name && kept->fields.size() >= copied->fields.size() &&
           sameBeginning(*copied, *kept);
}

bool hasRowsOf(const PageFile& file, std::uint32_t page, std::span<const SalvageTable> tables) {
    const LeafPage leaf = readLeafPage(file, page);
    return leaf.sound() && fitsSomeTable(leaf, tables);
}

}  // namespace

void makeTables(SqliteConnection& connection, std::span<const TableDef> tables, bool password) {
    writeCopy(connection, layoutOf(tables, password));
    for (const TableDef& table : tables) connection.run(createTableStatement(table));
    if (password) connection.run(std::string(kPasswordTableStatement));
}

void makeIndexes(SqliteConnection& connection, const TableDef& table) {
    for (const IndexDef& index : table.indexes) {
        const std::string statement = createIndexStatement(table, index);
        if (!statement.empty()) connection.run(statement);
    }
}

bool agreesWithCopy(SqliteConnection& connection) {
    // Not there without columns of these names, of which a letter may be damaged, too.
    if (connection.number("SELECT group_concat(name) = 'mark,type,name,statement' "
                          "FROM pragma_table_info('kolmera_layout')") == 0)
        return false;
    // What is missing has been dropped; a name that has changed leaves the statement.
    SqliteStatement lines(connection,
                          "SELECT l.mark, l.type, l.name, l.statement, m.type, m.name, m.sql FROM kolmera_layout l "
                          "LEFT JOIN sqlite_master m ON m.name = l.name OR m.sql = l.statement");
    while (lines.step()) {
        const LayoutEntry line{std::string(lines.text(1)), std::string(lines.text(2)), {}, std::string(lines.text(3))};
        if (!isWhole(lines.text(0), line)) return false;
        if (lines.isNull(5)) continue;
        const bool named = lines.text(4) == line.type && lines.text(5) == line.name;
        if (!named || !makesTheSame(line, lines.text(6))) return false;
    }
    return true;
}

bool wasCompanyFile(const std::filesystem::path& file, const std::function<std::vector<TableDef>()>& known) {
    {
        const Descriptor descriptor(file, O_RDONLY | O_CLOEXEC);
        std::string beginning(kBeginning, '\0');
        beginning.resize(descriptor.readAt(0, beginning.data(), beginning.size()));
        if (beginning.find(kMark) != std::string::npos) return true;
    }
    std::vector<SalvageTable> tables;
    if (known) {
        for (TableDef& table : known()) {
            if (table.fields.size() >= kTellingColumns) tables.push_back({std::move(table)});
        }
    }
    const PageFile pages(file);
    const std::uint32_t last = tables.empty() ? 0 : std::min(pages.count(), kPagesLookedAt);
    for (std::uint32_t page = 1; page <= last; ++page) {
        if (hasRowsOf(pages, page, tables)) return true;
    }
    return false;
}

SalvagedLayout salvageLayout(const PageFile& file, std::span<const TableDef> known) {
    const std::vector<LayoutEntry> schema = readSchema(file);
    const auto own = std::ranges::find(schema, kLayoutTable, &LayoutEntry::name);
    const Copy copy = readCopy(file, own != schema.end() ? own->root : 0);
    LayoutBuilder builder;
    builder.addCopy(copy.lines);
    if (!copy.complete) builder.addKnown(known);
    builder.addSchema(schema);
    return std::move(builder).take();
}

std::vector<SalvageTable> engineTables() { return {{sqliteSchema(), 1}, {copyOfSchema(), 0}}; }

}  // namespace kolmera
