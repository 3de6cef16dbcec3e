#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "source/sourceformat.h"

namespace kolmera {

/// A column of the source: by its heading where it has one, else by its number. A heading is looked for as it reads,
/// letter case and blanks apart.
struct ColumnName {
    std::string heading;
    int number = 0;  ///< from 1; 0: none. Beside a heading it only says where that stood.

    [[nodiscard]] bool none() const { return heading.empty() && number == 0; }
    bool operator==(const ColumnName&) const = default;
};

/// How a value is read from a cell. In this order: the fixed text in place of the cell; another column's text behind
/// it; trimming; the replacement of a whole text; prefix and suffix taken away; the number or date; leading zeros;
/// prefix and suffix added. What is empty before the last step stays so.
struct ValueRule {
    /// What the text means. Automatic: what the mask reads from it; where it reads a text, the text itself.
    enum class Meaning : std::uint8_t { Automatic, Text, Number, Date };
    enum class Zeros : std::uint8_t { Kept, Dropped, Filled };

    Meaning meaning = Meaning::Automatic;
    std::optional<char> decimalSign = {};  ///< where it is not the format's, as are the next two
    std::optional<std::string> thousandsSign = {};
    std::optional<DateOrder> dateOrder = {};
    bool trim = true;
    Zeros zeros = Zeros::Kept;
    int width = 0;  ///< Zeros::Filled: at least so many characters
    std::string dropPrefix = {}, dropSuffix = {};
    std::string addPrefix = {}, addSuffix = {};
    std::optional<std::string> fixed = {};
    std::vector<std::pair<std::string, std::string>> replace = {};  ///< from, to
    ColumnName join = {};
    std::string joinedBy = {};

    bool operator==(const ValueRule&) const = default;
};

/// Where a column of the mask comes from.
struct SourceColumn {
    int column = 0;  ///< of the mask, from 1: a tab column, a line, a piece
    ColumnName from = {};
    ValueRule rule = {};

    bool operator==(const SourceColumn&) const = default;
};

/// Rows that are no records: a cell of the column, of any column where none is named, is what the pattern says (with *
/// and ?, letter case and blanks around it apart).
struct LeftOutRows {
    ColumnName column = {};
    std::string pattern;

    bool operator==(const LeftOutRows&) const = default;
};

/// How the price file of a job is turned into what its mask reads.
struct SourceSettings {
    SourceFormat format = {};
    std::vector<std::string> headings = {};  ///< as they were when the columns were named; to show what has changed
    std::vector<SourceColumn> columns = {};  ///< columns of the mask that are not named come from the same number
    std::vector<LeftOutRows> leaveOut = {};  ///< beside empty rows

    bool operator==(const SourceSettings&) const = default;
};

}  // namespace kolmera
