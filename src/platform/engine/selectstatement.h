#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kolmera {

/// A SELECT statement on one table, whose rows can be read and written by their IDs.
struct SingleTableSelect {
    std::string table;                 ///< name as written
    std::vector<std::string> columns;  ///< names as written; empty for "*"
    std::string rest;                  ///< what follows the table's name: WHERE ..., ORDER BY ...
};

/// Takes a SELECT statement apart; nothing for a statement whose rows are not rows of one table (several tables,
/// DISTINCT, GROUP BY, expressions, LIMIT ...).
std::optional<SingleTableSelect> parseSingleTableSelect(std::string_view statement);

/// Whether the text is a SELECT statement rather than the name of a table.
bool isSelect(std::string_view text);

}  // namespace kolmera
