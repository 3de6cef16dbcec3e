#include "platform/lettercase.h"

#include <algorithm>
#include <cstdint>

namespace kolmera {

namespace {

enum class Case { Upper, Lower };

bool isUpperOfPair(char32_t c) {
    if (c < 0x100) return c >= 0xC0 && c <= 0xDE && c != 0xD7;
    // Latin Extended-A: pairs of an upper and a lower letter, the upper one even, but odd in two stretches.
    const bool odd = (c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E);
    return ((c & 1) == 1) == odd;
}

/// The other letter of the pair; c itself for what has no pair within U+0080-U+017F.
char32_t otherCase(char32_t c) {
    if (c == 0xFF) return 0x178;
    if (c == 0x178) return 0xFF;
    if (c < 0x100) {
        const char32_t folded = c & ~char32_t{0x20};
        return folded >= 0xC0 && folded <= 0xDE && folded != 0xD7 ? c ^ 0x20 : c;
    }
    if (c == 0x130 || c == 0x131 || c == 0x138 || c == 0x149 || c > 0x17E) return c;
    return isUpperOfPair(c) ? c + 1 : c - 1;
}

char32_t inCase(char32_t c, Case wanted) {
    const bool upper = c == 0x178 || (c != 0xFF && isUpperOfPair(c));
    return upper == (wanted == Case::Upper) ? c : otherCase(c);
}

char asciiInCase(char c, Case wanted) {
    if (wanted == Case::Upper) return c >= 'a' && c <= 'z' ? static_cast<char>(c - 0x20) : c;
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 0x20) : c;
}

std::uint8_t byteAt(std::string_view text, std::size_t at) {
    return at < text.size() ? static_cast<std::uint8_t>(text[at]) : std::uint8_t{0};
}

/// The character of a two-byte sequence at a position, 0 when there is none. Every letter with a case known here is
/// ASCII or two bytes long, and so is its other case.
char32_t twoByteCharacter(std::string_view text, std::size_t at) {
    const std::uint8_t first = byteAt(text, at);
    const std::uint8_t second = byteAt(text, at + 1);
    if (first < 0xC2 || first > 0xDF || (second & 0xC0) != 0x80) return 0;
    return static_cast<char32_t>((first & 0x1F) << 6 | (second & 0x3F));
}

/// Changes the character at a position and returns its length in bytes.
std::size_t changeCase(std::string& text, std::size_t at, Case wanted) {
    const char32_t c = twoByteCharacter(text, at);
    if (c == 0) {
        text[at] = asciiInCase(text[at], wanted);
        return 1;
    }
    if (c <= 0x17F) {
        const char32_t changed = inCase(c, wanted);
        text[at] = static_cast<char>(0xC0 | changed >> 6);
        text[at + 1] = static_cast<char>(0x80 | (changed & 0x3F));
    }
    return 2;
}

bool isLetterOrDigit(std::string_view text, std::size_t at) {
    const char c = text[at];
    if ((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) return true;
    const char32_t wide = twoByteCharacter(text, at);
    return (wide >= 0xC0 && wide < 0x250 && wide != 0xD7 && wide != 0xF7) || wide == 0xAA || wide == 0xBA;
}

std::string converted(std::string_view text, Case wanted) {
    std::string result(text);
    for (std::size_t at = 0; at < result.size();) at += changeCase(result, at, wanted);
    return result;
}

bool isBlank(char c) { return c == ' ' || c == '\0'; }

}  // namespace

std::string upperCase(std::string_view text) { return converted(text, Case::Upper); }

std::string lowerCase(std::string_view text) { return converted(text, Case::Lower); }

std::string properCase(std::string_view text) {
    std::string result(text);
    bool wordStart = true;
    for (std::size_t at = 0; at < result.size();) {
        const bool inWord = isLetterOrDigit(result, at);
        at += changeCase(result, at, wordStart ? Case::Upper : Case::Lower);
        wordStart = !inWord;
    }
    return result;
}

bool equalNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && (a == b || lowerCase(a) == lowerCase(b));
}

bool startsWithNoCase(std::string_view text, std::string_view beginning) {
    return text.size() >= beginning.size() && equalNoCase(text.substr(0, beginning.size()), beginning);
}

std::string_view trimmed(std::string_view text) {
    text = trimmedRight(text);
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    return text;
}

std::string_view trimmedRight(std::string_view text) {
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::string replaceAll(std::string_view text, std::string_view from, std::string_view to) {
    if (from.empty()) return std::string(text);
    std::string result;
    std::size_t begin = 0;
    for (std::size_t at; (at = text.find(from, begin)) != std::string_view::npos; begin = at + from.size()) {
        result.append(text.substr(begin, at - begin)).append(to);
    }
    return result.append(text.substr(begin));
}

std::vector<std::string> split(std::string_view text, std::string_view separator) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    while (!separator.empty()) {
        const std::size_t at = text.find(separator, begin);
        if (at == std::string_view::npos) break;
        parts.emplace_back(text.substr(begin, at - begin));
        begin = at + separator.size();
    }
    parts.emplace_back(text.substr(begin));
    return parts;
}

}  // namespace kolmera
