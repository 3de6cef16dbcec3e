#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kolmera {

/// Right-aligns a number in a proportional font, where a digit is as wide as two blanks: two blanks behind the text for
/// every character that it is shorter than `width`, and one more behind a text that begins with "-".
std::string FyllUtText(std::string_view text, int width);

/// The code of a list row "text TAB code": what follows its first tab, trimmed. A row without a tab has none.
std::optional<std::string_view> codeAfterTab(std::string_view row);

}  // namespace kolmera
