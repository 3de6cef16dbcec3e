#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace kolmera {

/// A cell, as UTF-8 text without malformed bytes. Of texts and XML it is what stands in the file (Kind::Text), of fixed
/// columns without the blanks at both ends. A workbook knows what its cells are, and they come in one spelling,
/// whatever the format or the language of the sheet shows:
///   Number  "-1234.5": decimal point, no thousands sign, no exponent, the 15 digits that a sheet shows at most;
///           (a whole number whose format is only zeros, "00000", is the Text "00123")
///   Date    "2026-11-23", without the time of day
///   Truth   "1" or "0"
/// An empty cell is an empty text; so is an error value ("#N/A"), which is counted.
struct Cell {
    enum class Kind : std::uint8_t { Text, Number, Date, Truth };
    std::string_view text;  ///< valid until the next row is read
    Kind kind = Kind::Text;
};

struct Row {
    /// From 1: the line of a text at which it begins, the row of a sheet, the record of XML. 0: the names of XML's
    /// fields, which come first.
    std::uint64_t number = 0;
    std::vector<Cell> cells;  ///< none in an empty line; trailing empty cells of sheets are left out
};

/// What was not taken as it stands.
struct SourceRemarks {
    struct Remark {
        std::uint64_t count = 0;
        std::uint64_t firstRow = 0;  ///< Row::number
        void note(std::uint64_t row) {
            if (count++ == 0) firstRow = row;
        }
    };
    Remark malformed;    ///< bytes or halves that are no character; U+FFFD stands for each
    Remark strayQuotes;  ///< quotes in a quoted cell that should have been doubled; taken as they stand
    Remark lineBreaks;   ///< cells with line breaks in them
    Remark errorValues;  ///< cells with "#N/A" and its like; taken as empty
};

/// Gives the rows of a price file one after the other, the headings and what stands above them too, in memory that does
/// not grow with the file. Rows of a sheet without a value are passed over.
class RowReader {
  public:
    virtual ~RowReader() = default;
    /// False at the end, `row` is then of no use. Throws PlatformError: a file that cannot be read on; about: the row.
    virtual bool next(Row& row) = 0;
    /// How far it has come in the file, from 0 to 1.
    [[nodiscard]] virtual double progress() const = 0;
    [[nodiscard]] virtual SourceRemarks remarks() const = 0;
};

/// What a reader takes at most; a file beyond it ends with an error. Tests set them lower.
struct SourceLimits {
    std::size_t rowBytes = std::size_t{16} << 20;
    std::size_t columns = 16384;
    std::size_t quotedLines = 1000;  ///< of one cell, before its quote counts as never closed
    std::uint64_t unpackedBytes = std::uint64_t{16} << 30;
    std::function<bool()> cancelled;  ///< asked while reading; ReadingCancelled is thrown when it answers true
};

}  // namespace kolmera
