#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "startup/company.h"

namespace kolmera {

/// A company of a company list: what it is called, and the database that it is opened by ("FTG1.MDB", "SQL;NAME").
struct Company {
    std::string name;
    std::string database;
};

/// The companies of the data folder, then those on database servers.
std::vector<Company> companyList(CompanyRegister& companies, const std::filesystem::path& dataFolder);

/// A company of a list row "name TAB database". On a server the row is "SQL;NAME TAB description", and the name in
/// front of the tab is the database.
Company companyOfRow(std::string_view row);
/// The row that a list shows of a company.
std::string rowOf(const Company& company);

/// The first company of that database, letter case and blanks around it not counting; -1 when there is none.
int placeOfDatabase(const std::vector<Company>& companies, std::string_view database);
/// The database that a user means who names a company by its database, or else by the name of a company in a file;
/// letter case does not count.
std::optional<std::string> databaseNamed(const std::vector<Company>& companies, std::string_view name);

}  // namespace kolmera
