#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kolmera {

/// The single-byte character sets of the suite's files, and those of other systems (ISO 8859-1 and -15). Positions and
/// widths are counted in their bytes.
enum class CodePage { Windows1252, Oem850, Oem437, Latin1, Latin9 };

/// Bytes of a code page as UTF-8. Never fails: the five bytes that Windows-1252 leaves open (81, 8D, 8F, 90, 9D) become
/// the control characters of the same number, so that every text comes back from `fromUtf8` as the bytes it was.
std::string toUtf8(std::string_view bytes, CodePage page);
/// The same into a text that is reused, without an allocation when it is large enough; for loops over many records.
/// `bytes` must not be part of `out`.
void toUtf8(std::string_view bytes, CodePage page, std::string& out);
/// UTF-8 as bytes of a code page; a character that it lacks and a malformed byte become "?".
std::string fromUtf8(std::string_view text, CodePage page);

/// The different characters of a UTF-8 text that a code page lacks, malformed bytes among them; empty when it has all.
std::string lackingCharacters(std::string_view text, CodePage page);
/// The text with letters of Windows-1252 that are written as a letter and a combining mark as the one letter: files of
/// some systems have names of that kind.
std::string composed(std::string_view text);

/// The first character of a UTF-8 text that is not empty: nothing for a malformed byte, which counts as one.
struct FirstCharacter {
    std::optional<char32_t> character;
    std::size_t length = 1;  ///< in bytes
};
FirstCharacter firstCharacter(std::string_view text);
/// Adds a character, which is no half of a pair, to a UTF-8 text.
void appendUtf8(char32_t character, std::string& text);

/// Length of the run of ASCII at the start of a text, in bytes.
std::size_t asciiRun(std::string_view text);

/// Number of characters (code points) of a UTF-8 text; malformed bytes count one each.
std::size_t characterCount(std::string_view text);
/// The first `count` characters of a UTF-8 text.
std::string_view firstCharacters(std::string_view text, std::size_t count);

}  // namespace kolmera
