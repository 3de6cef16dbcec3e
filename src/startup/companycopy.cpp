#include "startup/companycopy.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>
#include <span>

#include "db/batchtransaction.h"
#include "db/companyschema.h"
#include "db/conversions.h"
#include "db/sqllayer.h"
#include "platform/error.h"

namespace kolmera {

namespace {

constexpr std::int64_t kWindow = 500;  ///< IDs that are read at a time

using Row = std::vector<Value>;  ///< the values of a row in the order of the schema's columns; the first is the ID

std::int64_t idOf(const Row& row) { return std::get<std::int64_t>(row.front()); }

/// The rows of one table by ID, a window of IDs at a time: no more than that is in memory, and a server is asked no
/// more often.
class TableReader {
  public:
    TableReader(Database& database, const TableDef& table) : database_(database), table_(table) {}

    /// The next rows, some hundred at most; none behind the last.
    std::vector<Row> next() {
        const std::optional<std::int64_t> first = firstBehind(last_);
        if (!first) return {};
        last_ = *first + kWindow - 1;
        return rows(*first, last_);
    }

    /// Goes on behind this ID.
    void skipTo(std::int64_t id) { last_ = id; }

    [[nodiscard]] std::optional<std::int64_t> lastId() { return number("SELECT MAX(ID) FROM " + table_.name); }

  private:
    /// The one number that a statement selects, none for Null. It is the result of an expression, so of no certain
    /// type.
    std::optional<std::int64_t> number(const std::string& statement) {
        const auto records = database_.open(statement, RecordsetType::Snapshot, options::kReadOnly);
        const Value& value = records->value(0);
        if (isNull(value)) return std::nullopt;
        return static_cast<std::int64_t>(TillDbl(value, Locale()));
    }

    std::optional<std::int64_t> firstBehind(std::int64_t id) {
        return number(fmt::format("SELECT MIN(ID) FROM {} WHERE ID > {}", table_.name, id));
    }

    std::vector<Row> rows(std::int64_t first, std::int64_t last) {
        const auto records = database_.open(
            fmt::format("SELECT * FROM {} WHERE ID >= {} AND ID <= {} ORDER BY ID", table_.name, first, last),
            RecordsetType::Snapshot, options::kReadOnly);
        std::vector<int> ordinals;
        for (const FieldDef& field : table_.fields) ordinals.push_back(records->ordinal(field.name));
        std::vector<Row> rows;
        for (; !records->eof(); records->moveNext()) {
            Row& row = rows.emplace_back();
            row.reserve(ordinals.size());
            for (const int ordinal : ordinals) row.push_back(records->value(ordinal));
        }
        return rows;
    }

    Database& database_;
    const TableDef& table_;
    std::int64_t last_ = std::numeric_limits<std::int32_t>::min() - std::int64_t{1};  // below every ID
};

/// Goes through the rows of a table one by one.
class RowWalk {
  public:
    RowWalk(Database& database, const TableDef& table) : reader_(database, table) {}

    /// The row at hand, nullptr behind the last.
    const Row* row() {
        if (place_ == rows_.size() && !ended_) {
            rows_ = reader_.next();
            place_ = 0;
            ended_ = rows_.empty();
        }
        return ended_ ? nullptr : &rows_[place_];
    }
    void next() { ++place_; }

  private:
    TableReader reader_;
    std::vector<Row> rows_;
    std::size_t place_ = 0;
    bool ended_ = false;
};

class CompanyCopy {
  public:
    CompanyCopy(Database& source, Database& target, const std::function<bool()>& goOn)
        : source_(source), target_(target), goOn_(goOn), schema_(companySchema()) {}
    CompanyCopy(Database& source, Database& target, const std::function<bool()>& goOn, std::vector<TableDef> tables)
        : source_(source), target_(target), goOn_(goOn), schema_(std::move(tables)) {}

    /// Whether all rows of all tables are in the target.
    bool fetch() {
        const bool whole = std::ranges::all_of(schema_, [&](const TableDef& table) { return copy(table); });
        target_.settle();
        return whole;
    }

    CopyResult run() {
        const bool fresh = isNew();
        if (!fresh && !(holdsBeginnings() && goOn())) return ended();
        if (fresh) removeFirstRows();
        if (fetch()) verify();
        return ended();
    }

  private:
    enum class Extent { Beginning, Whole };

    CopyResult ended() {
        if (cancelled_) result_.outcome = CopyResult::Outcome::Cancelled;
        return result_;
    }

    bool goOn() {
        if (!goOn_()) cancelled_ = true;
        return !cancelled_;
    }

    /// The values that a new company's table has in columns without the default of their type.
    [[nodiscard]] static const NewCompanyRow* firstRow(const std::vector<NewCompanyRow>& rows, const TableDef& table) {
        const auto found = std::ranges::find(rows, table.name, &NewCompanyRow::table);
        return found == rows.end() ? nullptr : &*found;
    }

    /// Whether a row of settings is as a new company's; the company's name does not count.
    [[nodiscard]] static bool isFirstRow(const TableDef& table, const NewCompanyRow& first, const Row& row) {
        for (std::size_t i = 1; i < row.size(); ++i) {
            const auto given =
                std::ranges::find(first.values, table.fields[i].name, &std::pair<std::string, Value>::first);
            const bool same = given == first.values.end()
                                  ? isDefault(row[i])
                                  : std::holds_alternative<std::string>(given->second) || row[i] == given->second;
            if (!same) return false;
        }
        return true;
    }

    [[nodiscard]] static bool isDefault(const Value& value) {
        return isNull(value) || value == Value(false) || value == Value(std::int64_t{0}) || value == Value(0.0);
    }

    /// Whether the target is as it was made: no rows but its first ones.
    bool isNew() { return holdsOnly(newCompanyRows({})) || holdsOnly(filledCompanyRows({})); }

    bool holdsOnly(const std::vector<NewCompanyRow>& firstRows) {
        return std::ranges::all_of(schema_, [&](const TableDef& table) {
            TableReader reader(target_, table);
            const std::vector<Row> rows = reader.next();
            if (rows.empty()) return true;
            const NewCompanyRow* first = firstRow(firstRows, table);
            return first && rows.size() == 1 && isFirstRow(table, *first, rows.front()) && reader.next().empty();
        });
    }

    void removeFirstRows() {
        for (const NewCompanyRow& row : filledCompanyRows({})) target_.execute("DELETE FROM " + row.table);
    }

    /// Whether the rows of every table of the target are the first ones of the source's.
    bool holdsBeginnings() {
        return std::ranges::all_of(schema_, [&](const TableDef& table) {
            return compare(table, Extent::Beginning, CopyResult::Outcome::OtherRows);
        });
    }

    bool compare(const TableDef& table, Extent extent, CopyResult::Outcome outcome) {
        RowWalk from(source_, table);
        RowWalk to(target_, table);
        std::int64_t count = 0;
        for (; to.row() || (extent == Extent::Whole && from.row()); ++count, from.next(), to.next()) {
            if (count % kWindow == 0 && !goOn()) return false;
            const Row* wanted = from.row();
            const Row* found = to.row();
            if (wanted && found && *wanted == *found) continue;
            result_.outcome = outcome;
            result_.table = table.name;
            result_.id = idOf(found ? *found : *wanted);
            return false;
        }
        if (extent == Extent::Whole) result_.tables.push_back({table.name, count});
        return true;
    }

    bool copy(const TableDef& table) {
        std::vector<int> columns;
        for (const FieldDef& field : table.fields) columns.push_back(target_.table(table.name).ordinal(field.name));
        TableReader reader(source_, table);
        if (const auto last = TableReader(target_, table).lastId()) reader.skipTo(*last);
        BatchTransaction batch(target_);
        for (std::vector<Row> rows = reader.next(); !rows.empty(); rows = reader.next()) {
            if (!goOn()) break;
            insert(table, columns, rows);
            batch.next();
        }
        batch.end();
        return !cancelled_;
    }

    void insert(const TableDef& table, std::span<const int> columns, const std::vector<Row>& rows) {
        try {
            target_.insertRows(table.name, columns, rows);
        } catch (const PlatformError& error) {
            if (error.endsRun() || rows.size() == 1) throw error.about(placeOf(table, rows, error));
            for (const Row& row : rows) insert(table, columns, {row});  // to find the row; those before it are in order
        }
    }

    std::string placeOf(const TableDef& table, const std::vector<Row>& rows, const PlatformError& error) {
        const std::string place = fmt::format("{}, ID {}", table.name, idOf(rows.front()));
        if (rows.size() > 1) return fmt::format("{}-{}", place, idOf(rows.back()));
        const bool duplicate = error.number() == errors::kDuplicateKey;
        const std::optional<std::int64_t> twin = duplicate ? twinOf(table, rows.front()) : std::nullopt;
        return twin ? fmt::format("{} / ID {}", place, *twin) : place;
    }

    /// The row of the target that has the same value in a unique index.
    std::optional<std::int64_t> twinOf(const TableDef& table, const Row& row) {
        for (const IndexDef& index : table.indexes) {
            if (!index.unique || !hasTextsOnly(table, index)) continue;
            std::string criteria;
            for (const std::string& column : index.columns()) {
                const std::string_view text = textOf(row[static_cast<std::size_t>(table.ordinal(column))]);
                criteria +=
                    (criteria.empty() ? "" : " AND ") + fmt::format("[{}] = {}", column, SqlLayer::SQLText(text));
            }
            const auto found = target_.open(fmt::format("SELECT ID FROM {} WHERE {}", table.name, criteria),
                                            RecordsetType::Snapshot, options::kReadOnly);
            if (!found->eof()) return std::get<std::int64_t>(found->value(0));
        }
        return std::nullopt;
    }

    static bool hasTextsOnly(const TableDef& table, const IndexDef& index) {
        return std::ranges::all_of(index.columns(), [&](const std::string& column) {
            return table.fields[static_cast<std::size_t>(table.ordinal(column))].type == FieldType::Text;
        });
    }

    void verify() {
        for (const TableDef& table : schema_) {
            if (!goOn() || !compare(table, Extent::Whole, CopyResult::Outcome::Differs)) return;
        }
    }

    Database& source_;
    Database& target_;
    const std::function<bool()>& goOn_;
    std::vector<TableDef> schema_;
    CopyResult result_;
    bool cancelled_ = false;
};

}  // namespace

bool fetchTables(Database& source, Database& target, std::span<const std::string_view> leftOut,
                 const std::function<bool()>& goOn) {
    std::vector<TableDef> tables;
    for (const std::string& name : target.tableNames()) {
        if (std::ranges::find(leftOut, name) == leftOut.end()) tables.push_back(target.table(name));
    }
    return CompanyCopy(source, target, goOn, std::move(tables)).fetch();
}

CopyResult copyCompany(Database& source, Database& target, const std::function<bool()>& goOn) {
    return CompanyCopy(source, target, goOn).run();
}

}  // namespace kolmera
