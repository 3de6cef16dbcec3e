#include "platform/spreadsheet/celltext.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdint>
#include <iterator>
#include <optional>

#include "platform/encodings.h"

namespace kolmera {

namespace {

constexpr std::size_t kEscapeLength = 7;

/// The UTF-16 number of an escape at the start of a text.
std::optional<char32_t> escapeAtStart(std::string_view text) {
    if (text.size() < kEscapeLength || !text.starts_with("_x") || text[6] != '_') return std::nullopt;
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data() + 2, text.data() + 6, number, 16);
    if (error != std::errc() || end != text.data() + 6) return std::nullopt;
    return number;
}

struct Escaped {
    char32_t character;
    std::size_t length;
};

/// The character of one escape, or of two that are the halves of one.
std::optional<Escaped> characterAtStart(std::string_view text) {
    const auto first = escapeAtStart(text);
    if (!first || *first == 0) return std::nullopt;
    if (*first < 0xD800 || *first > 0xDFFF) return Escaped{*first, kEscapeLength};
    const auto second = escapeAtStart(text.substr(kEscapeLength));
    if (*first > 0xDBFF || !second || *second < 0xDC00 || *second > 0xDFFF) return std::nullopt;
    return Escaped{0x10000 + ((*first - 0xD800) << 10) + (*second - 0xDC00), 2 * kEscapeLength};
}

bool needsEscape(char32_t c) { return (c < 0x20 && c != '\t' && c != '\n') || c == 0xFFFE || c == 0xFFFF; }

}  // namespace

std::string unescapedCellText(std::string_view text) {
    std::string result;
    for (;;) {
        const std::size_t at = text.find("_x");
        result += text.substr(0, at);
        if (at == std::string_view::npos) return result;
        text.remove_prefix(at);
        const auto escaped = characterAtStart(text);
        if (escaped) {
            appendUtf8(escaped->character, result);
        } else {
            result += text.substr(0, 2);
        }
        text.remove_prefix(escaped ? escaped->length : 2);
    }
}

void appendCellText(std::string_view utf8, std::string& xml) {
    while (!utf8.empty()) {
        const FirstCharacter first = firstCharacter(utf8);
        const char32_t c = first.character.value_or(0xFFFD);
        if (c == '&') {
            xml += "&amp;";
        } else if (c == '<') {
            xml += "&lt;";
        } else if (c == '>') {
            xml += "&gt;";
        } else if (needsEscape(c)) {
            fmt::format_to(std::back_inserter(xml), "_x{:04X}_", static_cast<std::uint32_t>(c));
        } else if (c == '_' && escapeAtStart(utf8)) {
            xml += "_x005F_";
        } else {
            appendUtf8(c, xml);
        }
        utf8.remove_prefix(first.length);
    }
}

}  // namespace kolmera
