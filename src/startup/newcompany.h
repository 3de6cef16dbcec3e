#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace kolmera {

/// The company file that a new data folder's settings and jobs name.
inline constexpr std::string_view kFirstCompany = "FTG1.mdb";

/// What stands in a new company: its settings alone, or what a Swedish company's prices begin with, too.
enum class FirstRows { Settings, Filled };

/// Makes the database of a new company in the data folder: all tables, and one row of settings with the company's name
/// and prices of two decimals. `password` (up to 10 characters) also goes into DVDefLog.bin. Throws PlatformError, also
/// when the file exists; nothing is left behind then.
void createCompany(const std::filesystem::path& folder, std::string_view fileName, std::string_view companyName,
                   const std::string& password = {}, FirstRows firstRows = FirstRows::Settings);

}  // namespace kolmera
