#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/value.h"
#include "platform/spreadsheet/archive.h"

namespace kolmera {

/// Whether a number format shows a day, a month or a year ("yyyy-mm-dd", "[$-41D]d mmm"); a time of day alone does not
/// count, and neither do letters in quotes.
bool isDateFormat(std::string_view format);

/// A number as the date that a sheet shows for it. The day numbers count from 1899-12-30 or from 1904-01-01. Stays a
/// number where there is no such day (below 1, after the year 9999).
Value dateOfSerial(double serial, bool startsIn1904);

/// Which formats of a workbook's cells show dates.
class CellFormats {
  public:
    /// An empty part name gives formats without dates.
    static CellFormats of(const Archive& archive, const std::string& part);

    /// Of the format with this number ("s" of a cell); a number that no format has is no date.
    [[nodiscard]] bool isDate(std::size_t number) const { return number < dates_.size() && dates_[number]; }

    /// How many digits a format of zeros alone ("00000") shows at least; 0 for every other format.
    [[nodiscard]] std::size_t zeros(std::size_t number) const { return number < zeros_.size() ? zeros_[number] : 0U; }

    /// What a sheet shows for a number: a date, the text of a whole number with its leading zeros (where they are asked
    /// for), Null for what is not finite, or the number.
    [[nodiscard]] Value valueOf(double number, std::size_t format, bool startsIn1904, bool leadingZeros) const;

    /// Gives a number format its text. The formats below 164 have one without it.
    void define(int numberFormat, std::string_view text);
    /// Adds the next format of cells.
    void add(int numberFormat);

  private:
    std::vector<bool> dates_;
    std::vector<std::uint8_t> zeros_;
    struct Format {
        bool isDate;
        std::uint8_t zeros;
    };
    std::map<int, Format> defined_;
};

}  // namespace kolmera
