#include "platform/engine/sqlite/layoutstatement.h"

#include <algorithm>
#include <cstdint>

#include "platform/engine/declaredtype.h"
#include "platform/engine/pages/utf8text.h"
#include "platform/engine/sqlite/sqliteschema.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

constexpr std::size_t kLongestName = 128;   // bytes
constexpr std::size_t kMostColumns = 1000;  // SQLite takes 2000

bool isWordCharacter(char c) {
    const auto byte = static_cast<std::uint8_t>(c);
    return byte >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= 'a' && byte <= 'z') || byte == '_';
}

bool isName(std::string_view name) {
    // A semicolon separates the columns of an index in its description.
    const bool strange =
        std::ranges::any_of(name, [](char c) { return static_cast<std::uint8_t>(c) < ' ' || c == ';'; });
    return !name.empty() && name.size() <= kLongestName && !strange && isReadable(name) &&
           !startsWithNoCase(name, "sqlite_");
}

/// Takes a statement apart from its beginning. What does not come as expected leaves the cursor where it was.
class StatementCursor {
  public:
    explicit StatementCursor(std::string_view statement) : rest_(statement) { passBlanks(); }

    [[nodiscard]] bool atEnd() const { return rest_.empty(); }

    bool take(char sign) {
        if (rest_.empty() || rest_.front() != sign) return false;
        pass(1);
        return true;
    }
    bool takeWord(std::string_view wanted) {
        const std::string_view found = word();
        if (!equalNoCase(found, wanted)) return false;
        pass(found.size());
        return true;
    }
    bool takeWords(std::initializer_list<std::string_view> words) {
        return std::ranges::all_of(words, [this](std::string_view wanted) { return takeWord(wanted); });
    }
    /// The next word whatever it is, empty when there is none.
    std::string_view takeAnyWord() {
        const std::string_view found = word();
        pass(found.size());
        return found;
    }
    /// A name as it is or between double quotes; nothing when it is none that a company may have.
    std::optional<std::string> takeName() {
        std::string name = !rest_.empty() && rest_.front() == '"' ? takeQuoted() : std::string(takeAnyWord());
        return isName(name) ? std::optional(std::move(name)) : std::nullopt;
    }

  private:
    [[nodiscard]] std::string_view word() const {
        const auto end = std::ranges::find_if_not(rest_, isWordCharacter);
        return rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()));
    }
    std::string takeQuoted() {
        std::string name;
        for (std::size_t i = 1; i < rest_.size(); ++i) {
            if (rest_[i] == '"' && rest_.substr(i + 1, 1) != "\"") {
                pass(i + 1);
                return name;
            }
            if (rest_[i] == '"') ++i;
            name += rest_[i];
        }
        return {};
    }
    void pass(std::size_t count) {
        rest_.remove_prefix(count);
        passBlanks();
    }
    void passBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n"), rest_.size())); }

    std::string_view rest_;
};

/// "TEXT(20)", "MEMO TEXT", "LONG".
std::string takeType(StatementCursor& cursor) {
    std::string type(cursor.takeAnyWord());
    if (equalNoCase(type, "MEMO") && cursor.takeWord("TEXT")) type += " TEXT";
    if (!cursor.take('(')) return type;
    type.append("(").append(cursor.takeAnyWord()).append(")");
    return cursor.take(')') ? type : std::string();
}

std::optional<FieldDef> typedField(std::string_view name, std::string_view type, bool counter) {
    try {
        return fieldOfDeclaredType(name, type, counter);
    } catch (const PlatformError&) {
        return std::nullopt;
    }
}

std::optional<FieldDef> takeColumn(StatementCursor& cursor) {
    const auto name = cursor.takeName();
    if (!name) return std::nullopt;
    const std::string type = takeType(cursor);
    const bool counter = cursor.takeWord("PRIMARY");
    if (counter && (!cursor.takeWord("KEY") || !equalNoCase(type, "INTEGER"))) return std::nullopt;
    if (cursor.takeWord("COLLATE") && !cursor.takeWord("SVENSKA")) return std::nullopt;
    const bool zero = cursor.takeWord("DEFAULT");
    if (zero && !cursor.takeWord("0")) return std::nullopt;
    auto field = typedField(*name, type, counter);
    if (field) field->defaultNull = !zero && !counter && hasZeroDefault(field->type);
    return field;
}

bool addColumn(TableDef& table, std::optional<FieldDef> column) {
    if (!column || table.ordinal(column->name) >= 0 || table.fields.size() >= kMostColumns) return false;
    const bool secondCounter = column->counter && std::ranges::any_of(table.fields, &FieldDef::counter);
    table.fields.push_back(std::move(*column));
    return !secondCounter;
}

}  // namespace

std::optional<TableDef> parseTableStatement(std::string_view statement) {
    StatementCursor cursor(statement);
    if (!cursor.takeWords({"CREATE", "TABLE"})) return std::nullopt;
    const auto name = cursor.takeName();
    if (!name || !cursor.take('(')) return std::nullopt;
    TableDef table{*name, {}, {}};
    do {
        if (!addColumn(table, takeColumn(cursor))) return std::nullopt;
    } while (cursor.take(','));
    if (!cursor.take(')') || !cursor.atEnd()) return std::nullopt;
    return table;
}

std::optional<TableIndexDef> parseIndexStatement(std::string_view statement) {
    StatementCursor cursor(statement);
    if (!cursor.takeWord("CREATE")) return std::nullopt;
    TableIndexDef result;
    result.index.unique = cursor.takeWord("UNIQUE");
    if (!cursor.takeWord("INDEX")) return std::nullopt;
    const auto name = cursor.takeName();
    const auto table = name && cursor.takeWord("ON") ? cursor.takeName() : std::nullopt;
    if (!table || !cursor.take('(')) return std::nullopt;
    result.table = *table;
    result.index.name = indexName(*table, *name);
    do {
        const auto column = cursor.takeName();
        if (!column) return std::nullopt;
        const char direction = cursor.takeWord("DESC") ? '-' : '+';
        result.index.fields.append(result.index.fields.empty() ? "" : ";").append(1, direction).append(*column);
    } while (cursor.take(','));
    if (!cursor.take(')') || !cursor.atEnd()) return std::nullopt;
    return result;
}

}  // namespace kolmera
