#pragma once

#include <string>
#include <string_view>

#include "platform/engine/database.h"

namespace kolmera::test {

/// All rows of a company, every table and column, one line a row; numbers with all their digits. Without IDs: a new row
/// that is refused takes one with it on servers, and none in a file.
std::string companyRows(Database& database);
/// The same with IDs.
std::string companyRowsWithIds(Database& database);

/// The first line that two texts do not share, "" when they are the same; for texts too long to be shown.
std::string firstDifference(std::string_view a, std::string_view b);

}  // namespace kolmera::test
