#include "wholeruns/run/compare.h"

#include <fmt/format.h>

#include "wholeruns/sqlite.h"

namespace kolmera::bench {

namespace {

std::vector<std::string> tablesOf(Connection& company) {
    std::vector<std::string> names;
    Statement tables(company, "SELECT name FROM sqlite_schema WHERE type = 'table' ORDER BY name");
    while (tables.step()) names.emplace_back(tables.text(0));
    return names;
}

std::string shown(const Statement& row, int column) {
    return row.isNull(column) ? "Null" : fmt::format("'{}'", row.text(column));
}

/// The columns in which two rows differ, as text; empty when they are equal.
std::string rowDifference(const Statement& a, const Statement& b) {
    std::string text;
    for (int column = 0; column < a.columns(); ++column) {
        if (a.type(column) == b.type(column) && a.text(column) == b.text(column)) continue;
        text += fmt::format(" {} {} <> {}", a.name(column), shown(a, column), shown(b, column));
    }
    return text;
}

}  // namespace

std::vector<std::string> differences(const std::filesystem::path& a, const std::filesystem::path& b, std::size_t most) {
    Connection first(a);
    Connection second(b);
    std::vector<std::string> found;
    const std::vector<std::string> tables = tablesOf(first);
    if (tables != tablesOf(second)) found.emplace_back("not the same tables");
    for (const std::string& table : tables) {
        const std::string select = fmt::format("SELECT * FROM \"{}\" ORDER BY 1", table);
        Statement rowA(first, select);
        Statement rowB(second, select);
        while (found.size() < most) {
            const bool moreA = rowA.step();
            const bool moreB = rowB.step();
            if (moreA != moreB) found.push_back(table + ": not the same number of rows");
            if (!moreA || !moreB) break;
            const std::string difference = rowDifference(rowA, rowB);
            if (!difference.empty()) found.push_back(fmt::format("{} {}:{}", table, rowA.text(0), difference));
        }
    }
    return found;
}

}  // namespace kolmera::bench
