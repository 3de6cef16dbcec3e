#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kolmera {

/// Right-aligns a number in a proportional font, where a digit is as wide as two blanks: two blanks behind the text for
/// every character that it is shorter than `width`, and one more behind a text that begins with "-".
std::string FyllUtText(std::string_view text, int width);

/// The code of a list row "text TAB code": what follows its first tab, trimmed. A row without a tab has none.
std::optional<std::string_view> codeAfterTab(std::string_view row);

/// The code that a row stands for. It is what follows the first tab, but in company lists a row "SQL;name TAB
/// description" is a company on a database server, and stands for the name in front of the tab. A row without a tab has
/// no code.
std::optional<std::string_view> codeOfRow(std::string_view row);
/// The first row of that code, letter case and blanks around it not counting; -1 when there is none.
int rowOfCode(const std::vector<std::string>& rows, std::string_view code);

}  // namespace kolmera
