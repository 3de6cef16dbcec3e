#include "startup/companylist.h"

#include <algorithm>
#include <iterator>

#include "platform/lettercase.h"
#include "ui/rules/listrows.h"

namespace kolmera {
namespace {

std::string databaseOf(std::string_view row) { return std::string(codeOfRow(row).value_or("")); }

}  // namespace

std::vector<std::string> companyRows(CompanyRegister& companies, const std::filesystem::path& dataFolder) {
    std::vector<std::string> rows = companies.FyllFöretagsLista();
    std::ranges::move(SqlLayer::SQLServerLista(dataFolder), std::back_inserter(rows));
    return rows;
}

std::vector<std::string> databasesOf(const std::vector<std::string>& rows) {
    std::vector<std::string> databases(rows.size());
    std::ranges::transform(rows, databases.begin(), databaseOf);
    return databases;
}

std::optional<std::string> databaseNamed(const std::vector<std::string>& rows, std::string_view name) {
    if (trimmed(name).empty()) return std::nullopt;
    if (const int row = rowOfCode(rows, name); row >= 0) return databaseOf(rows[static_cast<std::size_t>(row)]);
    const auto found = std::ranges::find_if(
        rows, [name](std::string_view row) { return equalNoCase(trimmed(row.substr(0, row.find('\t'))), name); });
    return found == rows.end() ? std::nullopt : std::optional(databaseOf(*found));
}

}  // namespace kolmera
