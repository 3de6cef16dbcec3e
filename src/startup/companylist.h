#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "startup/company.h"

namespace kolmera {

/// The rows of a company list: the companies of the data folder, then those on database servers.
std::vector<std::string> companyRows(CompanyRegister& companies, const std::filesystem::path& dataFolder);

/// The database names of company rows.
std::vector<std::string> databasesOf(const std::vector<std::string>& rows);

/// The database that a user means who names a company by its database, or else by the text in front of it; letter case
/// does not count.
std::optional<std::string> databaseNamed(const std::vector<std::string>& rows, std::string_view name);

}  // namespace kolmera
