#include "platform/engine/selectstatement.h"

#include <algorithm>

#include "platform/engine/statementtext.h"

namespace kolmera {

namespace {

/// Words behind the table's name that make rows of the result something else than rows of the table.
constexpr std::string_view kForbidden[] = {"GROUP",  "HAVING",    "LIMIT", "OFFSET", "UNION",
                                           "EXCEPT", "INTERSECT", "JOIN",  "WINDOW"};

/// Reads "A, T.B, [C]" up to FROM. Returns the place of FROM, or nothing.
std::optional<std::size_t> readColumns(const std::vector<Token>& all, std::vector<std::string>& columns) {
    std::size_t at = 1;
    while (at + 1 < all.size()) {
        if (at + 2 < all.size() && all[at + 1].is(".")) at += 2;  // the table's name before the column's
        if (!all[at].isName()) return std::nullopt;
        columns.push_back(all[at++].text);
        if (at >= all.size()) return std::nullopt;
        if (all[at].is("FROM")) return at;
        if (!all[at++].is(",")) return std::nullopt;
    }
    return std::nullopt;
}

bool mayFollow(const std::vector<Token>& all, std::size_t at) {
    if (at == all.size() || all[at].is(";")) return true;
    if (!all[at].is("WHERE") && !all[at].is("ORDER")) return false;
    return std::none_of(all.begin() + static_cast<std::ptrdiff_t>(at), all.end(), [](const Token& token) {
        return std::any_of(std::begin(kForbidden), std::end(kForbidden),
                           [&](std::string_view word) { return token.is(word); });
    });
}

}  // namespace

bool isSelect(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string_view::npos) return false;
    const std::vector<Token> all = tokens(text);
    return all.size() > 1 && (all.front().is("SELECT") || all.front().is("WITH") || all.front().is("VALUES"));
}

std::optional<SingleTableSelect> parseSingleTableSelect(std::string_view statement) {
    const std::vector<Token> all = tokens(statement);
    if (all.size() < 4 || !all.front().is("SELECT")) return std::nullopt;
    SingleTableSelect select;
    std::size_t from = 2;
    if (!all[1].is("*")) {
        const auto found = readColumns(all, select.columns);
        if (!found) return std::nullopt;
        from = *found;
    }
    if (!all[from].is("FROM") || from + 1 >= all.size() || !all[from + 1].isName()) return std::nullopt;
    if (!mayFollow(all, from + 2)) return std::nullopt;
    select.table = all[from + 1].text;
    select.rest = statement.substr(all[from + 1].end);
    return select;
}

}  // namespace kolmera
