#pragma once

#include <string>
#include <string_view>

namespace kolmera {

/// Sheets write a character that XML cannot carry as "_x000D_": its UTF-16 number in four hexadecimal digits; a text
/// that looks like this has its first "_" written as "_x005F_".

/// The text that a sheet's text stands for. Escapes of NUL and of half characters stay as they are.
std::string unescapedCellText(std::string_view text);

/// Adds a text to XML, escaped for a sheet. A malformed byte becomes U+FFFD.
void appendCellText(std::string_view utf8, std::string& xml);

}  // namespace kolmera
