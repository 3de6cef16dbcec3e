#include "platform/engine/sqlite/indexwalk.h"

#include <algorithm>

namespace kolmera {

namespace {

std::uint32_t nullBits(std::span<const Value> keys) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (isNull(keys[i])) bits |= std::uint32_t{1} << i;
    }
    return bits;
}

}  // namespace

void IndexWalk::setIndex(const TableIndex* index) {
    index_ = index;
    kept_.clear();
}

bool IndexWalk::first(Direction direction) { return search({.direction = direction}, {}, 0); }

bool IndexWalk::equal(std::span<const Value> keys) {
    return search({.equal = keys.size(), .nulls = nullBits(keys)}, keys, 0);
}

bool IndexWalk::behind(std::span<const Value> keys, bool orEqual) {
    if (orEqual && equal(keys)) return true;
    for (std::size_t column = keys.size(); column-- > 0;) {
        if (behindColumn(keys, column, Direction::Forward)) return true;
    }
    return false;
}

bool IndexWalk::next(std::span<const Value> keys, std::int64_t id, Direction direction) {
    const Test test = direction == Direction::Forward ? Test::Greater : Test::Less;
    const std::size_t columns = keyColumns();
    const Stretch sameKey{.equal = columns, .nulls = nullBits(keys), .test = test, .direction = direction};
    if (search(sameKey, keys, id)) return true;
    for (std::size_t column = columns; column-- > 0;) {
        if (behindColumn(keys, column, direction)) return true;
    }
    return false;
}

/// The rows that equal the keys before a column and lie behind the key in it. Null is the smallest of all.
bool IndexWalk::behindColumn(std::span<const Value> keys, std::size_t column, Direction direction) {
    const bool ascending = (direction == Direction::Forward) != index_->columns[column].descending;
    Stretch stretch{.equal = column, .nulls = nullBits(keys.first(column)), .direction = direction};
    const bool fromNull = isNull(keys[column]);
    if (ascending) {
        stretch.test = fromNull ? Test::IsNotNull : Test::Greater;
        return search(stretch, keys, 0);
    }
    if (fromNull) return false;
    stretch.test = Test::Less;
    if (search(stretch, keys, 0)) return true;
    stretch.test = Test::IsNull;
    return search(stretch, keys, 0);
}

bool IndexWalk::search(const Stretch& stretch, std::span<const Value> keys, std::int64_t id) {
    table_.flush();
    SqliteStatement& statement = statementFor(stretch);
    const StatementUse use(statement);
    int parameter = 0;
    for (std::size_t i = 0; i < stretch.equal; ++i) {
        if (!isNull(keys[i])) statement.bind(++parameter, keys[i]);
    }
    if (stretch.test == Test::Greater || stretch.test == Test::Less) {
        if (stretch.equal == keyColumns()) {
            statement.bind(++parameter, id);
        } else {
            statement.bind(++parameter, keys[stretch.equal]);
        }
    }
    if (!statement.step()) return false;
    row_.take(statement);
    return true;
}

SqliteStatement& IndexWalk::statementFor(const Stretch& stretch) {
    if (keptSelection_ != row_.selectionSize()) {
        kept_.clear();
        keptSelection_ = row_.selectionSize();
    }
    for (auto& [shape, statement] : kept_) {
        if (shape == stretch) return statement;
    }
    kept_.emplace_back(stretch, SqliteStatement(table_.session().connection, statementText(stretch)));
    return kept_.back().second;
}

/// Whether at most one row can be in the stretch.
bool IndexWalk::unique(const Stretch& stretch) const {
    return index_ != nullptr && index_->unique && stretch.nulls == 0 && stretch.test == Test::None &&
           stretch.equal == index_->columns.size();
}

std::string IndexWalk::statementText(const Stretch& stretch) const {
    std::string text = "SELECT " + row_.selection() + " FROM " + table_.quotedName();
    if (const std::string where = conditions(stretch); !where.empty()) text += " WHERE " + where;
    if (unique(stretch)) return text;
    return text + " ORDER BY " + order(stretch.direction) + " LIMIT 1";
}

std::string IndexWalk::conditions(const Stretch& stretch) const {
    static constexpr const char* kTests[] = {"", " > ?", " >= ?", " < ?", " IS NULL", " IS NOT NULL"};
    std::string text;
    for (std::size_t i = 0; i < stretch.equal; ++i) {
        const bool null = (stretch.nulls >> i & 1) != 0;
        text += (text.empty() ? "" : " AND ") + columnName(i) + (null ? " IS NULL" : " = ?");
    }
    if (stretch.test == Test::None) return text;
    return text + (text.empty() ? "" : " AND ") + columnName(stretch.equal) +
           kTests[static_cast<std::size_t>(stretch.test)];
}

std::string IndexWalk::order(Direction direction) const {
    std::string text;
    for (std::size_t i = 0; i < keyColumns(); ++i) {
        const bool descending = (direction == Direction::Backward) != index_->columns[i].descending;
        text += columnName(i) + (descending ? " DESC, " : ", ");
    }
    return text + (direction == Direction::Backward ? "rowid DESC" : "rowid");
}

std::string IndexWalk::columnName(std::size_t column) const {
    return column < keyColumns() ? table_.quotedColumn(index_->columns[column].ordinal) : "rowid";
}

}  // namespace kolmera
