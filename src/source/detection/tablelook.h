#pragma once

#include <string>
#include <vector>

#include "source/detection/detection.h"
#include "source/rowreader.h"

namespace kolmera {

/// Looks at the rows of a table as they come and tells what they are.
class TableLook {
  public:
    void add(const Row& row);

    /// Where the table begins and whether its first row names the columns; not for XML.
    void detectHeadings(Detection& detection) const;
    /// How numbers and dates in texts are written. After `detectHeadings`.
    void detectSigns(Detection& detection) const;

  private:
    struct KeptRow {
        std::uint64_t number;
        std::vector<std::string> cells;
    };
    struct Column {
        std::size_t filled = 0;       ///< cells with something in them, among the first rows left out
        std::size_t numbers = 0;      ///< numbers and dates, of workbooks and of texts
        std::size_t dates = 0;        ///< texts that are dates
        double comma = 0, point = 0;  ///< evidence that it is the decimal sign
        double groups[6] = {};        ///< evidence of each thousands sign
        double yearFirst = 0, dayFirst = 0, monthFirst = 0;
    };

    [[nodiscard]] std::size_t usualCells() const;
    [[nodiscard]] std::size_t headingAmong(std::size_t usual, double& confidence) const;
    void look(std::string_view text, Column& column) const;

    std::vector<KeptRow> first_;  ///< the first rows that are not empty
    std::vector<Column> columns_;
    std::vector<std::size_t> rowsByCells_;
};

}  // namespace kolmera
