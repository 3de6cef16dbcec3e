#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "source/conversion/headings.h"
#include "source/conversion/targetlayout.h"
#include "source/conversion/values.h"
#include "source/rowreader.h"
#include "source/sourcesettings.h"

namespace kolmera {

/// Makes rows of a source into the values of records. Nothing may be read while `fault` has something.
class RowConversion {
  public:
    /// `headings` of the file at hand, none where it has none. Settings and layout have to stay.
    RowConversion(const SourceSettings& settings, const TargetLayout& layout, const std::vector<std::string>& headings);
    RowConversion(const RowConversion&) = delete;
    RowConversion& operator=(const RowConversion&) = delete;

    [[nodiscard]] const HeadingFault& fault() const { return fault_; }

    enum class Use { Record, Empty, LeftOut };
    /// A record, and its values, one a column of the layout; of lines that are taken as they are (`asItIs`), empty ones
    /// too, one value.
    Use read(const Row& row, std::vector<SourceValue>& values) const;
    /// The lines of the source are those of the target: the layout says so, or a text without columns.
    [[nodiscard]] bool asItIs() const { return asItIs_; }
    /// A column of the layout, from 0, as the user knows it: its heading, or "3" for the third of the source.
    [[nodiscard]] std::string label(std::size_t column) const;
    /// Of the last row that a pattern left out.
    [[nodiscard]] const std::string& leftOutBy() const { return leftOutBy_; }
    /// The row ends before a column that is read. Sheets leave out what is empty behind their last cell.
    [[nodiscard]] bool isShort(const Row& row) const;

  private:
    struct Column {
        std::optional<std::size_t> place;  ///< in the row, from 0
        std::optional<std::size_t> joined;
        ValueReader reader;
    };
    struct Pattern {
        std::optional<std::size_t> place;  ///< nothing: any column
        std::string pattern;
    };

    [[nodiscard]] bool isLeftOut(const Row& row) const;
    void readWhole(const Row& row, std::vector<SourceValue>& values) const;

    const SourceSettings& settings_;
    const std::vector<std::string> headings_;
    std::vector<SourceColumn> plain_;  ///< of columns that the settings do not name
    std::vector<Column> columns_;
    std::vector<Pattern> patterns_;
    std::size_t needed_ = 0;  ///< cells of a row
    bool asItIs_;
    HeadingFault fault_;
    mutable std::string leftOutBy_;
};

/// Whether a text is what a pattern says: * stands for any characters, ? for one; letter case does not count.
bool matchesPattern(std::string_view pattern, std::string_view text);

}  // namespace kolmera
