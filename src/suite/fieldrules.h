#pragma once

#include <string>
#include <string_view>

namespace kolmera {

/// Enter, Esc and the apostrophe become 0; other keys pass.
int SpärraTangent(int key);

/// Right-aligns a number in a proportional font, where a digit is as wide as two blanks: two blanks behind the text for
/// every character that it is shorter than `width`, and one more behind a text that begins with "-".
std::string FyllUtText(std::string_view text, int width);

}  // namespace kolmera
