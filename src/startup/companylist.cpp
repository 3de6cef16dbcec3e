#include "startup/companylist.h"

#include <algorithm>
#include <iterator>

#include "platform/lettercase.h"

namespace kolmera {
namespace {

bool onServer(std::string_view database) { return SqlLayer::ÄrSQLDatabas(upperCase(database)); }

}  // namespace

std::vector<Company> companyList(CompanyRegister& companies, const std::filesystem::path& dataFolder) {
    std::vector<std::string> rows = companies.FyllFöretagsLista();
    std::ranges::move(SqlLayer::SQLServerLista(dataFolder), std::back_inserter(rows));
    std::vector<Company> list;
    std::ranges::transform(rows, std::back_inserter(list), companyOfRow);
    return list;
}

Company companyOfRow(std::string_view row) {
    const std::size_t tab = std::min(row.find('\t'), row.size());
    const std::string front(trimmed(row.substr(0, tab)));
    const std::string behind(trimmed(row.substr(std::min(tab + 1, row.size()))));
    return onServer(front) ? Company{behind, front} : Company{front, behind};
}

std::string rowOf(const Company& company) {
    return onServer(company.database) ? company.database + '\t' + company.name : company.name + '\t' + company.database;
}

int placeOfDatabase(const std::vector<Company>& companies, std::string_view database) {
    const auto found = std::ranges::find_if(companies, [database = trimmed(database)](const Company& company) {
        return equalNoCase(company.database, database);
    });
    return found == companies.end() ? -1 : static_cast<int>(found - companies.begin());
}

std::optional<std::string> databaseNamed(const std::vector<Company>& companies, std::string_view name) {
    if (trimmed(name).empty()) return std::nullopt;
    if (const int place = placeOfDatabase(companies, name); place >= 0) {
        return companies[static_cast<std::size_t>(place)].database;
    }
    const auto found = std::ranges::find_if(companies, [name](const Company& company) {
        return equalNoCase(company.name, name) && !onServer(company.database);
    });
    return found == companies.end() ? std::nullopt : std::optional(found->database);
}

}  // namespace kolmera
