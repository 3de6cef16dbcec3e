#include "platform/engine/odbc/servertext.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "platform/error.h"

namespace kolmera {

namespace {

constexpr std::string_view kTranslated[] = {"SELECT", "INSERT", "UPDATE", "DELETE"};

/// Transactions are the engine's own business.
constexpr std::string_view kTransactionWords[] = {"BEGIN", "START", "COMMIT", "ROLLBACK", "SAVEPOINT", "RELEASE"};

/// Words that a statement is made of; a column of that name has to stand in brackets.
constexpr std::string_view kKeywords[] = {
    "SELECT", "DISTINCT", "FROM",   "WHERE",  "AND", "OR",     "NOT",   "NULL",   "IS",     "IN",   "LIKE", "BETWEEN",
    "ORDER",  "GROUP",    "BY",     "HAVING", "ASC", "DESC",   "LIMIT", "AS",     "ON",     "JOIN", "LEFT", "INNER",
    "INSERT", "INTO",     "VALUES", "UPDATE", "SET", "DELETE", "UNION", "ALL",    "EXISTS", "CASE", "WHEN", "THEN",
    "ELSE",   "END",      "COUNT",  "MIN",    "MAX", "SUM",    "AVG",   "OFFSET", "TOP",    "CAST"};

bool isOneOf(const Token& token, std::span<const std::string_view> words) {
    return std::ranges::any_of(words, [&](std::string_view word) { return token.is(word); });
}

/// Translates pieces of a statement one after the other.
class Translator {
  public:
    Translator(const Dialect& dialect, const Locale& locale, const NameLookup& exactName, std::span<const Value> given)
        : dialect_(dialect), locale_(locale), exactName_(exactName), given_(given) {}

    /// `ordering` for columns to order by: a number among them is the place of a column.
    ServerStatement translate(std::span<const Token> pieces, bool ordering = false) {
        ServerStatement statement;
        ordering_ = ordering;
        for (std::size_t at = 0; at < pieces.size(); ++at) {
            const bool negative = isNegativeNumber(pieces, at);
            if (negative) ++at;
            if (!statement.text.empty() && needsBlank(pieces, negative ? at - 1 : at)) statement.text += ' ';
            add(statement, pieces[at], negative);
        }
        return statement;
    }
    void requireAllGiven() const {
        if (next_ != given_.size()) refuseGiven();
    }

  private:
    [[noreturn]] static void refuseGiven() {
        throw PlatformError(errors::kInternal, "the statement has another number of parameters");
    }

    /// "-" before a number belongs to it, unless it stands between two operands.
    static bool isNegativeNumber(std::span<const Token> pieces, std::size_t at) {
        if (!pieces[at].is("-") || at + 1 >= pieces.size() || pieces[at + 1].kind != Token::Kind::Number) return false;
        if (at == 0) return true;
        const Token& before = pieces[at - 1];
        return (before.kind == Token::Kind::Symbol && !before.is(")") && !before.is("?")) || isOneOf(before, kKeywords);
    }

    /// Everything stands apart but the parts of "T.B" and "count(".
    static bool needsBlank(std::span<const Token> pieces, std::size_t at) {
        const Token& before = pieces[at - 1];
        if (pieces[at].is(".") || before.is(".") || before.is("(") || pieces[at].is(")") || pieces[at].is(",")) {
            return false;
        }
        return !pieces[at].is("(") || before.end != pieces[at].begin;
    }

    void add(ServerStatement& statement, const Token& token, bool negative) {
        switch (token.kind) {
            case Token::Kind::Text:
                return addParameter(statement, token.text);
            case Token::Kind::Date:
                return addParameter(statement, date(token.text));
            case Token::Kind::Number:
                return addNumber(statement, token.text, negative);
            case Token::Kind::Name:
            case Token::Kind::Word:
                return addName(statement, token);
            case Token::Kind::Symbol:
                break;
        }
        if (token.is(";")) throw PlatformError(errors::kInternal, "more than one statement");
        if (token.text != "?") {
            statement.text += token.text;
            return;
        }
        if (next_ >= given_.size()) refuseGiven();
        addParameter(statement, given_[next_++]);
    }

    void addParameter(ServerStatement& statement, Value value) {
        statement.text += parameterMark(dialect_, value);
        statement.parameters.push_back(std::move(value));
    }

    /// Numbers that name a column or limit the rows are part of the statement.
    void addNumber(ServerStatement& statement, const std::string& digits, bool negative) {
        if (ordering_) {
            statement.text += digits;
            return;
        }
        double number = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (negative) number = -number;
        std::int64_t whole = 0;
        const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), whole);
        if (parsed.ec != std::errc() || parsed.ptr != digits.data() + digits.size()) {
            return addParameter(statement, number);
        }
        addParameter(statement, negative ? -whole : whole);
    }

    void addName(ServerStatement& statement, const Token& token) {
        const bool bracketed = token.kind == Token::Kind::Name;
        if (!bracketed && isOneOf(token, kKeywords)) {
            ordering_ = token.is("BY") || token.is("LIMIT") || token.is("OFFSET") || token.is("TOP") ||
                        (ordering_ && (token.is("ASC") || token.is("DESC")));
            statement.text += token.text;
            return;
        }
        if (const auto exact = exactName_(token.text)) {
            statement.text += quotedName(dialect_, *exact);
        } else if (bracketed) {
            statement.text += quotedName(dialect_, token.text);
        } else if (token.is("TRUE") || token.is("FALSE")) {
            addParameter(statement, token.is("TRUE"));
        } else {
            statement.text += token.text;
        }
    }

    Date date(const std::string& text) const {
        auto date = Date::fromIso(text);
        if (!date) date = locale_.parseDate(text);
        if (!date) throw PlatformError(errors::kWrongType, "#" + text + "# is no date");
        return *date;
    }

    const Dialect& dialect_;
    const Locale& locale_;
    const NameLookup& exactName_;
    std::span<const Value> given_;
    std::size_t next_ = 0;
    bool ordering_ = false;
};

/// One column of ORDER BY; Null comes first, as in a file.
std::string orderTerm(const Dialect& dialect, Translator& translator, std::span<const Token> pieces) {
    std::string term = translator.translate(pieces, true).text;
    if (dialect.nullsLast) term += pieces.back().is("DESC") ? " NULLS LAST" : " NULLS FIRST";
    return term;
}

std::string orderText(const Dialect& dialect, Translator& translator, std::span<const Token> pieces) {
    std::vector<std::string> terms;
    while (!pieces.empty()) {
        const auto comma = std::ranges::find_if(pieces, [](const Token& token) { return token.is(","); });
        const auto length = static_cast<std::size_t>(comma - pieces.begin());
        if (length > 0) terms.push_back(orderTerm(dialect, translator, pieces.first(length)));
        pieces = pieces.subspan(std::min(length + 1, pieces.size()));
    }
    return joined(terms, ", ");
}

std::string marks(std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) text += i == 0 ? "?" : ", ?";
    return text;
}

}  // namespace

bool isTranslated(std::string_view statement) {
    const std::vector<Token> pieces = tokens(statement);
    return !pieces.empty() && isOneOf(pieces.front(), kTranslated);
}

ServerStatement serverStatement(const Dialect& dialect, std::string_view statement, std::span<const Value> given,
                                const Locale& locale, const NameLookup& exactName) {
    const std::vector<Token> all = tokens(statement);
    std::span<const Token> pieces(all);
    if (!pieces.empty() && pieces.back().is(";")) pieces = pieces.first(pieces.size() - 1);
    if (pieces.empty() || isOneOf(pieces.front(), kTransactionWords)) {
        throw PlatformError(errors::kInternal, "not an action statement: " + std::string(statement));
    }
    if (!isOneOf(pieces.front(), kTranslated)) return {std::string(statement), {given.begin(), given.end()}};
    Translator translator(dialect, locale, exactName, given);
    ServerStatement translated = translator.translate(pieces);
    translator.requireAllGiven();
    return translated;
}

ServerSelectRest serverSelectRest(const Dialect& dialect, std::string_view rest, const Locale& locale,
                                  const NameLookup& exactName, std::span<const Value> given) {
    const std::vector<Token> pieces = tokens(rest);
    std::span<const Token> where(pieces);
    if (!where.empty() && where.back().is(";")) where = where.first(where.size() - 1);
    const auto order = std::ranges::find_if(where, [](const Token& token) { return token.is("ORDER"); });
    const auto whereLength = static_cast<std::size_t>(order - where.begin());
    std::span<const Token> columns = where.subspan(whereLength);
    where = where.first(whereLength);

    Translator translator(dialect, locale, exactName, given);
    ServerSelectRest result;
    if (!where.empty()) result.where = translator.translate(where.subspan(1));
    if (columns.size() > 2) result.order = orderText(dialect, translator, columns.subspan(2));
    return result;
}

ActionParts actionParts(std::string_view statement) {
    const std::vector<Token> pieces = tokens(statement);
    const bool updates = !pieces.empty() && pieces.front().is("UPDATE");
    const std::size_t name = updates ? 1 : 2;  // behind DELETE FROM, INSERT INTO
    const std::size_t behind = name + 1;
    if (pieces.size() <= name || !pieces[name].isName()) return {};
    ActionParts parts{.kind = ActionParts::Kind::Insert, .table = pieces[name].text, .rest = {}};
    if (pieces.front().is("INSERT")) return parts;
    parts.kind = updates ? ActionParts::Kind::Update : ActionParts::Kind::Delete;
    int depth = 0;
    for (std::size_t at = behind; at < pieces.size(); ++at) {
        if (pieces[at].is("(")) ++depth;
        if (pieces[at].is(")")) --depth;
        if (depth == 0 && pieces[at].kind == Token::Kind::Word && pieces[at].is("WHERE")) {
            parts.rest = statement.substr(pieces[at].begin);
            return parts;
        }
        if (pieces[at].is("?")) ++parts.parametersBefore;
    }
    return parts;
}

std::string orderWithKey(std::string_view order, std::string_view key) {
    constexpr std::string_view kSeparator = ", ";
    for (std::size_t begin = 0; begin < order.size();) {
        const std::size_t end = std::min(order.find(kSeparator, begin), order.size());
        const std::string_view term = order.substr(begin, end - begin);
        const bool isKey = term == key || term.starts_with(std::string(key) + " ");
        const bool alone = begin == 0 && end == order.size();
        if (isKey) return std::string(alone && term.find(" DESC") == std::string_view::npos ? key : order);
        begin = end + kSeparator.size();
    }
    return std::string(order) + std::string(order.empty() ? "" : kSeparator) + std::string(key);
}

std::string joined(std::span<const std::string> texts, std::string_view separator) {
    std::string result;
    for (const std::string& text : texts) {
        if (!result.empty()) result += separator;
        result += text;
    }
    return result;
}

std::string selectText(const Dialect& dialect, const SelectParts& parts) {
    const bool top = dialect.limit == Dialect::Limit::Top;
    std::string text = "SELECT ";
    if (parts.limit > 0 && top) text += "TOP (" + std::to_string(parts.limit) + ") ";
    text += joined(parts.columns, ", ") + " FROM " + std::string(parts.table);
    if (!parts.where.empty()) text += " WHERE " + std::string(parts.where);
    if (!parts.order.empty()) text += " ORDER BY " + std::string(parts.order);
    if (parts.limit > 0 && !top) text += " LIMIT " + std::to_string(parts.limit);
    return text;
}

std::string insertText(const Dialect& dialect, std::string_view table, std::span<const std::string> columns,
                       std::string_view id) {
    const bool scope = dialect.newId == Dialect::NewId::ScopeIdentity;
    std::string text = "INSERT INTO " + std::string(table);
    if (!columns.empty()) text += " (" + joined(columns, ", ") + ")";
    text += columns.empty() ? std::string(dialect.emptyRow) : " VALUES (" + marks(columns.size()) + ")";
    text += scope ? "; SELECT CAST(SCOPE_IDENTITY() AS int)" : " RETURNING " + std::string(id);
    return text;
}

std::string insertRowsText(const Dialect& dialect, std::string_view table, std::span<const std::string> columns,
                           std::size_t rows) {
    const std::string row = '(' + marks(columns.size()) + ')';
    std::string text = "INSERT INTO " + std::string(table) + " (" + joined(columns, ", ") + ") VALUES ";
    for (std::size_t i = 0; i < rows; ++i) {
        if (i > 0) text += ", ";
        text += row;
    }
    if (dialect.givenIds != Dialect::GivenIds::IdentityInsert) return text;
    const std::string switching = "SET IDENTITY_INSERT " + std::string(table);
    return switching + " ON; " + text + "; " + switching + " OFF";
}

std::string moveSequenceText(const Dialect& dialect, std::string_view table, std::string_view id) {
    if (dialect.givenIds != Dialect::GivenIds::MoveSequence) return {};
    const std::string quoted = quotedName(dialect, table);
    return "SELECT setval(pg_get_serial_sequence(" + textLiteral(quoted) + ", " + textLiteral(id) + "), max(" +
           quotedName(dialect, id) + ")) FROM " + quoted;
}

std::string updateText(std::string_view table, std::span<const std::string> columns, std::string_view id) {
    return "UPDATE " + std::string(table) + " SET " + joined(columns, " = ?, ") + " = ? WHERE " + std::string(id) +
           " = ?";
}

std::string deleteText(std::string_view table, std::string_view id) {
    return "DELETE FROM " + std::string(table) + " WHERE " + std::string(id) + " = ?";
}

}  // namespace kolmera
