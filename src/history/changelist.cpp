#include "history/changelist.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <cmath>

#include "db/conversions.h"
#include "history/captions.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

constexpr std::int64_t kHeading = -1;

std::string_view textOf(sqlite3_value* value) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_value_text(value));
    return {bytes, static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

bool isText(sqlite3_value* value) { return sqlite3_value_type(value) == SQLITE_TEXT; }

bool contains(sqlite3_value* value, const std::string& lower) {
    if (!isText(value)) return false;
    const std::string_view text = textOf(value);
    if (text.size() < lower.size()) return false;
    return lowerCase(text).find(lower) != std::string::npos;
}

/// SQL's text of what rows are sorted by; empty for the order of the file.
std::string_view termOf(ChangeQuery::Sort sort) {
    switch (sort) {
        case ChangeQuery::Sort::Product:
            return "row.product COLLATE SVENSKA";
        case ChangeQuery::Sort::Name:
            return "row.name COLLATE SVENSKA";
        case ChangeQuery::Sort::Column:
            return "columnrank(row.tab, cell.n)";
        case ChangeQuery::Sort::Before:
            return "before COLLATE SVENSKA";
        case ChangeQuery::Sort::After:
            return "after COLLATE SVENSKA";
        case ChangeQuery::Sort::Percent:
            return "percent";
        case ChangeQuery::Sort::Kind:
            return "row.kind";
        default:
            return "";
    }
}

std::string_view termOf(ChangeQuery::Group group) {
    if (group == ChangeQuery::Group::Product) return termOf(ChangeQuery::Sort::Product);
    return group == ChangeQuery::Group::Column ? termOf(ChangeQuery::Sort::Column) : "";
}

}  // namespace

/// What the statements ask of the program: the place of a column among the captions, and whether the typed words fit.
struct ChangeList::Filter {
    struct Word {
        std::string lower;
        std::optional<double> number;
        std::vector<bool> columns;  ///< by rank: its caption has the word
    };

    std::vector<std::vector<int>> ranks;  ///< by table and column
    std::vector<Word> words;

    [[nodiscard]] int rank(sqlite3_value* table, sqlite3_value* cell) const {
        return ranks[static_cast<std::size_t>(sqlite3_value_int64(table))]
                    [static_cast<std::size_t>(NetChanges::columnOf(sqlite3_value_int64(cell)))];
    }

    /// Of product, name, before, after, table and cell.
    [[nodiscard]] bool fits(sqlite3_value** values) const {
        const auto column = static_cast<std::size_t>(rank(values[4], values[5]));
        return std::ranges::all_of(words, [&](const Word& word) {
            if (word.columns[column]) return true;
            if (word.number && (isNumber(values[2], *word.number) || isNumber(values[3], *word.number))) return true;
            return std::any_of(values, values + 4, [&](sqlite3_value* value) { return contains(value, word.lower); });
        });
    }

    static bool isNumber(sqlite3_value* value, double number) {
        const int type = sqlite3_value_type(value);
        return (type == SQLITE_FLOAT || type == SQLITE_INTEGER) && sqlite3_value_double(value) == number;
    }

    static void answerRank(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
        const auto& self = *static_cast<const Filter*>(sqlite3_user_data(context));
        sqlite3_result_int(context, self.rank(values[0], values[1]));
    }
    static void answerFits(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
        const auto& self = *static_cast<const Filter*>(sqlite3_user_data(context));
        sqlite3_result_int(context, self.fits(values) ? 1 : 0);
    }

    void registerAt(sqlite3* connection) {
        const int flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
        sqlite3_create_function(connection, "columnrank", 2, flags, this, answerRank, nullptr, nullptr);
        sqlite3_create_function(connection, "fits", 6, SQLITE_UTF8, this, answerFits, nullptr, nullptr);
    }

    void setWords(const std::string& text, const Locale& locale, const std::vector<ChangedColumn>& captions) {
        words.clear();
        for (const std::string& piece : split(lowerCase(text), " ")) {
            if (piece.empty()) continue;
            Word word{.lower = piece, .number = locale.parseNumber(piece), .columns = {}};
            for (const ChangedColumn& column : captions) {
                word.columns.push_back(lowerCase(column.caption).find(piece) != std::string::npos);
            }
            words.push_back(std::move(word));
        }
    }
};

ChangeList::ChangeList(NetChanges& changes, LanguageTexts& texts, const Locale& locale)
    : changes_(changes), locale_(locale), filter_(std::make_unique<Filter>()) {
    for (std::size_t table = 0; table < changes.tables().size(); ++table) {
        NetChanges::Table about = changes.tables()[table];
        about.definition.name = about.name;
        filter_->ranks.emplace_back(about.changed.size());
        for (std::size_t column = 0; column < about.changed.size(); ++column) {
            if (!about.changed[column]) continue;
            const int place = static_cast<int>(column);
            columns_.push_back({static_cast<int>(table), place, columnCaption(texts, about.definition, place)});
        }
    }
    std::ranges::stable_sort(columns_, [](const ChangedColumn& a, const ChangedColumn& b) {
        return compareSwedish(a.caption, b.caption) < 0;
    });
    for (std::size_t rank = 0; rank < columns_.size(); ++rank) {
        const ChangedColumn& column = columns_[rank];
        filter_->ranks[static_cast<std::size_t>(column.table)][static_cast<std::size_t>(column.column)] =
            static_cast<int>(rank);
    }
    filter_->registerAt(changes_.connection().handle());
    changes_.connection().run(
        "CREATE TABLE IF NOT EXISTS mark(mark INTEGER, record INTEGER, PRIMARY KEY(record, mark)) WITHOUT ROWID");
    const std::string select = fmt::format(
        "SELECT row.tab, row.id, row.kind, row.product, row.name, before, after, percent, record, cell.n FROM cell "
        "CROSS JOIN row ON row.n = cell.n >> {} WHERE ",
        NetChanges::kColumnBits);
    cell_ = SqliteStatement(changes_.connection(), select + "cell.n = ?1");
    stretch_ = SqliteStatement(changes_.connection(), select + "cell.n BETWEEN ?1 AND ?2 ORDER BY cell.n");
}

ChangeList::~ChangeList() {
    cell_ = SqliteStatement();
    stretch_ = SqliteStatement();
    sqlite3* connection = changes_.connection().handle();
    sqlite3_create_function(connection, "columnrank", 2, SQLITE_UTF8, nullptr, nullptr, nullptr, nullptr);
    sqlite3_create_function(connection, "fits", 6, SQLITE_UTF8, nullptr, nullptr, nullptr, nullptr);
}

void ChangeList::mark(int mark, std::span<const std::int64_t> records) {
    SqliteConnection& connection = changes_.connection();
    connection.begin();
    SqliteStatement add(connection, "INSERT OR IGNORE INTO mark(mark, record) VALUES (?1, ?2)");
    for (const std::int64_t record : records) {
        add.bind(1, std::int64_t{mark});
        add.bind(2, record);
        add.run();
    }
    connection.commit();
}

void ChangeList::unmark() { changes_.connection().run("DELETE FROM mark"); }

std::string ChangeList::statementOf(const ChangeQuery& query) const {
    std::string where;
    const auto condition = [&](std::string_view term) {
        where.append(where.empty() ? " WHERE " : " AND ").append(term);
    };
    if (query.over) condition("abs(percent) > ?1");
    if (query.onlyNew) condition(fmt::format("row.kind = {}", static_cast<int>(ChangeKind::Added)));
    if (query.onlyMarked) condition("record IN (SELECT record FROM mark)");
    if (query.mark)
        condition(
            fmt::format("EXISTS (SELECT 1 FROM mark WHERE mark.record = cell.record AND mark = {})", *query.mark));
    if (query.column) {
        condition(fmt::format("row.tab = {} AND cell.n & {} = {}", query.column->first,
                              (1 << NetChanges::kColumnBits) - 1, query.column->second));
    }
    if (!filter_->words.empty()) condition("fits(row.product, row.name, before, after, row.tab, cell.n)");
    const std::string_view group = termOf(query.group);
    const std::string_view sort = termOf(query.sort);
    std::string order;
    const auto orderBy = [&](std::string_view term, bool descending) {
        order = fmt::format("{}{}{}{}", order, order.empty() ? " ORDER BY " : ", ", term, descending ? " DESC" : "");
    };
    if (!group.empty()) orderBy(group, query.descending && sort == group);
    if (!sort.empty() && sort != group) orderBy(sort, query.descending);
    orderBy("cell.n", query.descending && sort.empty());
    const std::string_view key = query.group == ChangeQuery::Group::Product ? "row.product"
                                 : group.empty()                            ? "0"
                                                                            : group;
    if (where.empty() && query.group == ChangeQuery::Group::None && sort.empty())
        return fmt::format("SELECT cell.n, 0 FROM cell{}", order);
    return fmt::format("SELECT cell.n, {} FROM cell JOIN row ON row.n = cell.n >> {}{}{}", key, NetChanges::kColumnBits,
                       where, order);
}

void ChangeList::show(const ChangeQuery& query) {
    query_ = query;
    order_.clear();
    headings_.clear();
    filter_->setWords(query.text, locale_, columns_);
    SqliteStatement statement(changes_.connection(), statementOf(query));
    if (query.over) statement.bind(1, Value(*query.over));
    std::string group;
    while (statement.step()) {
        if (query.group != ChangeQuery::Group::None && (headings_.empty() || statement.text(1) != group)) {
            group = statement.text(1);
            headings_.push_back(order_.size());
            order_.push_back(kHeading);
        }
        order_.push_back(statement.integer(0));
    }
}

std::vector<ChangeRow> ChangeList::rows(std::int64_t first, std::int64_t most) {
    std::vector<ChangeRow> rows;
    const std::int64_t end = std::min(count(), first + most);
    if (query_ == ChangeQuery() && first < end) {
        return stretch(order_[static_cast<std::size_t>(first)], order_[static_cast<std::size_t>(end - 1)]);
    }
    for (std::int64_t place = first; place < end; ++place) rows.push_back(rowAt(static_cast<std::size_t>(place)));
    return rows;
}

ChangeRow ChangeList::rowAt(std::size_t place) {
    if (order_[place] != kHeading) return cell(order_[place]);
    const ChangeRow member = cell(order_[place + 1]);
    const auto next = std::ranges::upper_bound(headings_, place);
    const std::size_t end = next == headings_.end() ? order_.size() : *next;
    ChangeRow heading;
    heading.members = static_cast<std::int64_t>(end - place) - 1;
    if (query_.group == ChangeQuery::Group::Product) {
        heading.product = member.product;
        heading.name = member.name;
    } else {
        heading.caption = member.caption;
    }
    return heading;
}

ChangeRow ChangeList::cell(std::int64_t number) {
    const StatementUse use(cell_);
    cell_.bind(1, number);
    return cell_.step() ? cellOf(cell_) : ChangeRow();
}

/// In the order of the file the cells stand one behind the other.
std::vector<ChangeRow> ChangeList::stretch(std::int64_t first, std::int64_t last) {
    const StatementUse use(stretch_);
    stretch_.bind(1, first);
    stretch_.bind(2, last);
    std::vector<ChangeRow> rows;
    while (stretch_.step()) rows.push_back(cellOf(stretch_));
    return rows;
}

ChangeRow ChangeList::cellOf(const SqliteStatement& statement) const {
    ChangeRow row;
    row.table = static_cast<int>(statement.integer(0));
    row.column = NetChanges::columnOf(statement.integer(9));
    row.id = statement.integer(1);
    row.kind = static_cast<ChangeKind>(statement.integer(2));
    row.product = statement.text(3);
    row.name = statement.text(4);
    row.caption = captionOf(row.table, row.column);
    const FieldType type = changes_.typeOf(row.table, row.column);
    statement.read(5, type, row.before);
    statement.read(6, type, row.after);
    row.beforeText = text(row.before, row.table, row.column);
    row.afterText = text(row.after, row.table, row.column);
    Value percent;
    statement.read(7, FieldType::Double, percent);
    if (const auto* value = std::get_if<double>(&percent)) {
        row.fromZero = !std::isfinite(*value);
        if (!row.fromZero) row.percent = *value;
    }
    row.record = statement.integer(8);
    return row;
}

std::string ChangeList::text(const Value& value, int table, int column) const {
    return TillText(value, changes_.typeOf(table, column), locale_);
}

const std::string& ChangeList::captionOf(int table, int column) const {
    const int rank = filter_->ranks[static_cast<std::size_t>(table)][static_cast<std::size_t>(column)];
    return columns_[static_cast<std::size_t>(rank)].caption;
}

}  // namespace kolmera
