#include "history/netchanges.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "db/companyschema.h"

namespace kolmera {
namespace {

constexpr int kAdded = static_cast<int>(ChangeKind::Added);
constexpr int kChanged = static_cast<int>(ChangeKind::Changed);
constexpr int kRemoved = static_cast<int>(ChangeKind::Removed);
constexpr int kGone = kRemoved + 1;  ///< added and removed again
const Value kNothing;

/// What a row's next change makes of its change so far.
int following(int kind, int next) {
    const bool was = kind == kChanged || kind == kRemoved;
    if (next == kRemoved) return was ? kRemoved : kGone;
    return was ? kChanged : kAdded;
}

bool holdsNothing(const Value& value) {
    if (const auto* number = std::get_if<double>(&value)) return *number == 0;
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return *whole == 0;
    if (const auto* truth = std::get_if<bool>(&value)) return !*truth;
    return isNull(value) || value == Value(std::string());
}

/// What `holdsNothing`, as such a value would be.
Value nothingLike(const Value& value) {
    if (std::holds_alternative<double>(value)) return 0.0;
    if (std::holds_alternative<std::int64_t>(value)) return std::int64_t{0};
    if (std::holds_alternative<bool>(value)) return false;
    return std::holds_alternative<std::string>(value) ? Value(std::string()) : kNothing;
}

bool isFractional(FieldType type) {
    return type == FieldType::Double || type == FieldType::Single || type == FieldType::Currency;
}

/// How much more `after` is than `before` in per cent, as a term of SQL.
std::string percentTerm(std::string_view before, std::string_view after) {
    return fmt::format(
        "CASE WHEN ?5 = 0 OR typeof({0}) NOT IN ('real', 'integer') OR typeof({1}) NOT IN ('real', 'integer') "
        "OR {0} = {1} THEN NULL "
        "WHEN {0} = 0 THEN CASE WHEN {1} > 0 THEN 9e999 ELSE -9e999 END "
        "ELSE ({1} - {0}) * 100.0 / abs({0}) END",
        before, after);
}

std::string addCellText() {
    return fmt::format("INSERT INTO cell(n, before, after, record, percent) VALUES (?1, ?2, ?3, ?4, {})",
                       percentTerm("?2", "?3"));
}

/// For a row that has changed before: the cell may be there.
std::string putCellText() {
    return fmt::format(
        "{} ON CONFLICT(n) DO UPDATE SET after = excluded.after, record = excluded.record, percent = {}, "
        "again = CASE WHEN record > 0 AND excluded.record > 0 AND record <> excluded.record "
        "AND after IS NOT excluded.after THEN record ELSE again END",
        addCellText(), percentTerm("before", "excluded.after"));
}

struct Naming {
    std::string product;
    Value name;
};

/// Of which product a changed row is, as far as the change tells.
Naming namingOf(const RowChange& change, const NetChanges::Table& table) {
    Naming naming{.product = change.label, .name = {}};
    for (const CellChange& cell : change.cells) {
        const Value& value = change.kind == ChangeKind::Removed ? cell.before : cell.after;
        if (cell.column == table.productColumn && !textOf(value).empty()) naming.product = textOf(value);
        if (cell.column == table.nameColumn) naming.name = value;
    }
    return naming;
}

}  // namespace

NetChanges::NetChanges() : connection_("", {.create = true}), schema_(companySchema()) {
    connection_.run("PRAGMA journal_mode=OFF");
    connection_.run("PRAGMA synchronous=OFF");
    connection_.run("PRAGMA cache_size=-32768");
    connection_.run(
        "CREATE TABLE row(n INTEGER PRIMARY KEY, tab INTEGER, id INTEGER, kind INTEGER, product TEXT, name TEXT)");
    connection_.run("CREATE UNIQUE INDEX row_id ON row(tab, id)");
    connection_.run(
        "CREATE TABLE cell(n INTEGER PRIMARY KEY, before, after, record INTEGER, percent REAL, again INTEGER)");
    findRow_ = SqliteStatement(connection_, "SELECT n, kind FROM row WHERE tab = ?1 AND id = ?2");
    addRow_ = SqliteStatement(connection_,
                              "INSERT INTO row(n, tab, id, kind, product, name) VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
    setKind_ = SqliteStatement(connection_, "UPDATE row SET kind = ?2 WHERE n = ?1");
    nameRow_ = SqliteStatement(connection_,
                               "UPDATE row SET product = CASE WHEN ?2 = '' THEN product ELSE ?2 END, "
                               "name = coalesce(?3, name) WHERE n = ?1");
    putCell_ = SqliteStatement(connection_, putCellText());
    addCell_ = SqliteStatement(connection_, addCellText());
    emptyCells_ =
        SqliteStatement(connection_, "UPDATE cell SET after = NULL, percent = NULL WHERE n BETWEEN ?1 AND ?2");
    connection_.begin();
}

FieldType NetChanges::typeOf(int table, int column) const {
    const std::vector<FieldDef>& fields = tables_[static_cast<std::size_t>(table)].definition.fields;
    const auto place = static_cast<std::size_t>(column);
    return place < fields.size() ? fields[place].type : FieldType::Text;
}

int NetChanges::tableNumber(const std::string& name) {
    const auto known = std::ranges::find(tables_, name, &Table::name);
    if (known != tables_.end()) return static_cast<int>(known - tables_.begin());
    Table table{.name = name, .definition = {}, .changed = std::vector<bool>(std::size_t{1} << kColumnBits)};
    if (const auto found = std::ranges::find(schema_, name, &TableDef::name); found != schema_.end()) {
        table.definition = *found;
        const int product = found->ordinal("Produktnr");
        table.productColumn = product >= 0 ? product : found->ordinal("Nummer");
        table.nameColumn = found->ordinal("Benämning");
    }
    tables_.push_back(std::move(table));
    return static_cast<int>(tables_.size()) - 1;
}

void NetChanges::add(const RowChange& change) {
    const int table = tableNumber(change.table);
    const Row row = rowFor(change, table);
    if (change.kind == ChangeKind::Removed && !row.isNew) {
        emptyCells_.bind(1, cellNumber(row.number, 0));
        emptyCells_.bind(2, cellNumber(row.number + 1, 0) - 1);
        emptyCells_.run();
    }
    addCells(change, table, row);
    if (!row.isNew) nameAgain(change, table, row);
}

NetChanges::Row NetChanges::rowFor(const RowChange& change, int table) {
    const int kind = static_cast<int>(change.kind);
    findRow_.bind(1, std::int64_t{table});
    findRow_.bind(2, change.id);
    const StatementUse use(findRow_);
    if (!findRow_.step()) {
        const Naming naming = namingOf(change, tables_[static_cast<std::size_t>(table)]);
        addRow_.bind(1, ++lastRow_);
        addRow_.bind(2, std::int64_t{table});
        addRow_.bind(3, change.id);
        addRow_.bind(4, std::int64_t{kind});
        addRow_.bind(5, std::string_view(naming.product));
        addRow_.bind(6, naming.name);
        addRow_.run();
        return {lastRow_, kind, true};
    }
    again_ = true;
    const std::int64_t number = findRow_.integer(0);
    const int before = static_cast<int>(findRow_.integer(1));
    const int now = following(before, kind);
    if (now != before) {
        setKind_.bind(1, number);
        setKind_.bind(2, std::int64_t{now});
        setKind_.run();
    }
    return {number, now, false};
}

void NetChanges::addCells(const RowChange& change, int table, const Row& row) {
    SqliteStatement& statement = row.isNew ? addCell_ : putCell_;
    const bool anew = change.kind == ChangeKind::Added && row.kind == kChanged;
    for (const CellChange& cell : change.cells) {
        if (cell.column < 0 || cell.column >= 1 << kColumnBits) continue;
        // A later change of the row tells what stood there; of a row that is written anew, a cell that is not here.
        if (row.isNew && holdsNothing(cell.before) && holdsNothing(cell.after) && change.kind != ChangeKind::Changed) {
            continue;
        }
        tables_[static_cast<std::size_t>(table)].changed[static_cast<std::size_t>(cell.column)] = true;
        const bool withPercent = row.kind == kChanged && isFractional(typeOf(table, cell.column));
        const Value before = anew ? nothingLike(cell.after) : cell.before;
        statement.bind(1, cellNumber(row.number, cell.column));
        statement.bind(2, row.kind == kAdded ? kNothing : before);
        statement.bind(3, cell.after);
        statement.bind(4, change.record);
        statement.bind(5, std::int64_t{withPercent});
        statement.run();
    }
}

void NetChanges::nameAgain(const RowChange& change, int table, const Row& row) {
    const Naming naming = namingOf(change, tables_[static_cast<std::size_t>(table)]);
    if (isNull(naming.name)) return;
    nameRow_.bind(1, row.number);
    nameRow_.bind(2, std::string_view(naming.product));
    nameRow_.bind(3, naming.name);
    nameRow_.run();
}

void NetChanges::finish() {
    if (again_) {
        connection_.run(
            fmt::format("DELETE FROM cell WHERE before IS after OR n >> {} IN "
                        "(SELECT n FROM row WHERE kind = {})",
                        kColumnBits, kGone));
        connection_.run(
            fmt::format("DELETE FROM row WHERE kind = {0} OR kind = {1} AND NOT EXISTS (SELECT 1 FROM cell "
                        "WHERE cell.n BETWEEN row.n << {2} AND (row.n + 1 << {2}) - 1)",
                        kGone, kChanged, kColumnBits));
    }
    connection_.commit();
}

std::vector<std::string> NetChanges::tablesWithoutProduct() {
    std::vector<std::string> names;
    SqliteStatement any(connection_, "SELECT 1 FROM row WHERE tab = ?1 AND product = ''");
    for (std::size_t table = 0; table < tables_.size(); ++table) {
        if (tables_[table].definition.ordinal("Produktnr") < 0) continue;
        const StatementUse use(any);
        any.bind(1, static_cast<std::int64_t>(table));
        if (any.step()) names.push_back(tables_[table].name);
    }
    return names;
}

void NetChanges::nameRows(
    std::string_view table,
    const std::function<void(const std::function<void(std::int64_t, std::string_view)>& take)>& each) {
    connection_.begin();
    SqliteStatement product(connection_, "UPDATE row SET product = ?3 WHERE tab = ?1 AND id = ?2 AND product = ''");
    const std::int64_t number = tableNumber(std::string(table));
    each([&](std::int64_t id, std::string_view text) {
        product.bind(1, number);
        product.bind(2, id);
        product.bind(3, text);
        product.run();
    });
    connection_.commit();
}

void NetChanges::nameProducts(const std::function<void(const std::function<void(const NamedProduct&)>& take)>& each) {
    const int products = tableNumber("Produkt");
    connection_.begin();
    connection_.run("CREATE INDEX IF NOT EXISTS row_product ON row(product COLLATE NOCASE)");
    SqliteStatement number(connection_, "UPDATE row SET product = ?3 WHERE tab = ?1 AND id = ?2 AND product = ''");
    SqliteStatement name(
        connection_, "UPDATE row SET name = ?2 WHERE product = ?1 COLLATE NOCASE AND product <> '' AND name IS NULL");
    each([&](const NamedProduct& product) {
        number.bind(1, std::int64_t{products});
        number.bind(2, product.id);
        number.bind(3, product.number);
        number.run();
        name.bind(1, product.number);
        name.bind(2, product.name);
        name.run();
    });
    connection_.commit();
}

}  // namespace kolmera
