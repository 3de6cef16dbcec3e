#include "suite/fieldrules.h"

#include "platform/encodings.h"

namespace kolmera {

int SpärraTangent(int key) {
    constexpr int kEnter = 13, kEscape = 27;
    return key == kEnter || key == kEscape || key == '\'' ? 0 : key;
}

std::string FyllUtText(std::string_view text, int width) {
    std::string filled(text);
    const int missing = width - static_cast<int>(characterCount(text));
    if (missing > 0) filled.append(2 * static_cast<std::size_t>(missing), ' ');
    if (text.starts_with('-')) filled += ' ';
    return filled;
}

}  // namespace kolmera
