#include "platform/engine/odbc/widetext.h"

#include "platform/encodings.h"

namespace kolmera {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

}  // namespace

std::u16string toWide(std::string_view text) {
    std::u16string wide;
    wide.reserve(text.size());
    while (!text.empty()) {
        const FirstCharacter first = firstCharacter(text);
        const char32_t character = first.character.value_or(kReplacement);
        text.remove_prefix(first.length);
        if (character < 0x10000) {
            wide += static_cast<char16_t>(character);
        } else {
            wide += static_cast<char16_t>(0xD800U + ((character - 0x10000U) >> 10U));
            wide += static_cast<char16_t>(0xDC00U + ((character - 0x10000U) & 0x3FFU));
        }
    }
    return wide;
}

std::string fromWide(std::u16string_view text) {
    std::string narrow;
    narrow.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        if (unit < 0xD800 || unit >= 0xE000) {
            appendUtf8(unit, narrow);
            continue;
        }
        const bool pair = unit < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
        appendUtf8(pair ? 0x10000U + ((unit - 0xD800U) << 10U) + (text[++i] - 0xDC00U) : kReplacement, narrow);
    }
    return narrow;
}

}  // namespace kolmera
