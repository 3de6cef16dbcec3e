#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kolmera {

/// How the rows of a price file are found.
enum class SourceKind : std::uint8_t { Delimited, Fixed, Xlsx, Xls, Ods, Xml };

/// Of delimited and fixed texts. A workbook and an XML file tell theirs.
enum class CharacterSet : std::uint8_t { Utf8, Utf16Le, Utf16Be, Windows1252, Latin1, Latin9, Oem850 };

enum class DateOrder : std::uint8_t { Unknown, YearMonthDay, DayMonthYear, MonthDayYear };

/// What a price file is, as it was found or as the user has corrected it. A .gz file needs no member: it is unpacked
/// unasked.
struct SourceFormat {
    SourceKind kind = SourceKind::Delimited;
    std::string member;  ///< of a .zip file: its name or a pattern (*, ?); empty for the only one
    CharacterSet characters = CharacterSet::Utf8;
    char delimiter = ';';
    char quote = '"';                 ///< '\0': quotes are characters like any other
    std::vector<std::size_t> starts;  ///< of fixed columns, in characters from 0, ascending
    std::uint64_t length = 0;         ///< of fixed columns whose records no line end parts: characters; 0: lines
    std::string sheet;                ///< of a workbook; empty for the first one
    std::string record;  ///< of XML: the repeated element, with those above it as far as needed: "Articles/Article"
    std::vector<std::string> fields;  ///< of XML: elements and attributes in it: "Price/Net", "Price/@currency"
    std::uint64_t skip = 0;           ///< rows above the table, as the user counts them (see Row::number)
    bool headings = false;            ///< the first row of the table has the names of the columns; XML has them anyway
    char decimalSign = '.';           ///< of texts
    std::string thousandsSign;        ///< of texts: "", " ", ".", ",", "'", "\u00A0", "\u202F"
    DateOrder dateOrder = DateOrder::Unknown;  ///< of texts

    bool operator==(const SourceFormat&) const = default;
};

/// Names as they are stored and as the terminal takes them: "delimited", "windows-1252", "day-month-year".
std::string_view nameOf(SourceKind kind);
std::string_view nameOf(CharacterSet characters);
std::string_view nameOf(DateOrder order);

}  // namespace kolmera
