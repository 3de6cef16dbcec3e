#pragma once

#include <string>
#include <string_view>

namespace kolmera {

/// The single-byte character sets of the suite's files. Positions and widths are counted in their bytes.
enum class CodePage { Windows1252, Oem850, Oem437 };

/// Bytes of a code page as UTF-8. Never fails: bytes without a character become U+FFFD.
std::string toUtf8(std::string_view bytes, CodePage page);
/// The same into a text that is reused; for loops over many records.
void toUtf8(std::string_view bytes, CodePage page, std::string& out);
/// UTF-8 as bytes of a code page; characters that it lacks become "?".
std::string fromUtf8(std::string_view text, CodePage page);

/// Number of characters (code points) of a UTF-8 text; malformed bytes count one each.
std::size_t characterCount(std::string_view text);
/// The first `count` characters of a UTF-8 text.
std::string_view firstCharacters(std::string_view text, std::size_t count);

}  // namespace kolmera
