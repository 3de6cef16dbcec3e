#include "platform/engine/odbc/widetext.h"

#include <cstddef>

namespace kolmera {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool continues(std::string_view text, std::size_t at) {
    return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
}

/// Length of the sequence that a lead byte begins, 0 for a byte that begins none.
std::size_t sequenceLength(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead < 0xE0) return 2;
    if (lead >= 0xE0 && lead < 0xF0) return 3;
    return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

/// The character at a place, which moves behind it.
char32_t take(std::string_view text, std::size_t& at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    const std::size_t length = sequenceLength(lead);
    if (length == 1) return ++at, static_cast<char32_t>(lead);
    char32_t character = length == 0 ? 0 : lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (!continues(text, at + i)) return ++at, kReplacement;
        character = (character << 6U) | (static_cast<unsigned char>(text[at + i]) & 0x3FU);
    }
    at += length == 0 ? 1 : length;
    const bool surrogate = character >= 0xD800 && character < 0xE000;
    return length == 0 || surrogate || character > 0x10FFFF ? kReplacement : character;
}

void append(std::string& text, char32_t character) {
    const auto byte = [&](char32_t bits) { text += static_cast<char>(bits); };
    if (character < 0x80) return byte(character);
    if (character < 0x800) {
        byte(0xC0U | (character >> 6U));
    } else {
        if (character < 0x10000) {
            byte(0xE0U | (character >> 12U));
        } else {
            byte(0xF0U | (character >> 18U));
            byte(0x80U | ((character >> 12U) & 0x3FU));
        }
        byte(0x80U | ((character >> 6U) & 0x3FU));
    }
    byte(0x80U | (character & 0x3FU));
}

}  // namespace

std::u16string toWide(std::string_view text) {
    std::u16string wide;
    wide.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const char32_t character = take(text, at);
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
            append(narrow, unit);
            continue;
        }
        const bool pair = unit < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
        append(narrow, pair ? 0x10000U + ((unit - 0xD800U) << 10U) + (text[++i] - 0xDC00U) : kReplacement);
    }
    return narrow;
}

}  // namespace kolmera
