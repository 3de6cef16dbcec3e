#include "platform/engine/pages/utf8text.h"

#include <cstdint>

namespace kolmera {

namespace {

/// Bytes of a character by its first one, 0 when none begins with it.
std::size_t lengthOfCharacter(std::uint8_t first) {
    if (first == 0 || first > 0xF4) return 0;
    if (first < 0x80) return 1;
    if (first >= 0xF0) return 4;
    if (first >= 0xE0) return 3;
    return first >= 0xC2 ? 2 : 0;
}

}  // namespace

std::size_t readableLength(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t length = lengthOfCharacter(static_cast<std::uint8_t>(text[at]));
        if (length == 0 || at + length > text.size()) return at;
        for (std::size_t k = 1; k < length; ++k) {
            if ((static_cast<std::uint8_t>(text[at + k]) & 0xC0) != 0x80) return at;
        }
        at += length;
    }
    return at;
}

}  // namespace kolmera
