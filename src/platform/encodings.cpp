#include "platform/encodings.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>

namespace kolmera {

namespace {

// The characters of the bytes 0x80 to 0xFF, a row of 16 each.
using HighHalf = char16_t[129];

constexpr HighHalf kWindows1252 =
    u"€\u0081‚ƒ„…†‡ˆ‰Š‹Œ\u008dŽ\u008f"
    u"\u0090‘’“”•–—˜™š›œ\u009džŸ"
    u"\u00a0¡¢£¤¥¦§¨©ª«¬\u00ad®¯"
    u"°±²³´µ¶·¸¹º»¼½¾¿"
    u"ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏ"
    u"ÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞß"
    u"àáâãäåæçèéêëìíîï"
    u"ðñòóôõö÷øùúûüýþÿ";

constexpr HighHalf kOem850 =
    u"ÇüéâäàåçêëèïîìÄÅ"
    u"ÉæÆôöòûùÿÖÜø£Ø×ƒ"
    u"áíóúñÑªº¿®¬½¼¡«»"
    u"░▒▓│┤ÁÂÀ©╣║╗╝¢¥┐"
    u"└┴┬├─┼ãÃ╚╔╩╦╠═╬¤"
    u"ðÐÊËÈıÍÎÏ┘┌█▄¦Ì▀"
    u"ÓßÔÒõÕµþÞÚÛÙýÝ¯´"
    u"\u00ad±‗¾¶§÷¸°¨·¹³²■\u00a0";

constexpr HighHalf kOem437 =
    u"ÇüéâäàåçêëèïîìÄÅ"
    u"ÉæÆôöòûùÿÖÜ¢£¥₧ƒ"
    u"áíóúñÑªº¿⌐¬½¼¡«»"
    u"░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
    u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧"
    u"╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
    u"αßΓπΣσµτΦΘΩδ∞φε∩"
    u"≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00a0";

constexpr HighHalf kLatin1 =
    u"\u0080\u0081\u0082\u0083\u0084\u0085\u0086\u0087\u0088\u0089\u008a\u008b\u008c\u008d\u008e\u008f"
    u"\u0090\u0091\u0092\u0093\u0094\u0095\u0096\u0097\u0098\u0099\u009a\u009b\u009c\u009d\u009e\u009f"
    u"\u00a0¡¢£¤¥¦§¨©ª«¬\u00ad®¯"
    u"°±²³´µ¶·¸¹º»¼½¾¿"
    u"ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏ"
    u"ÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞß"
    u"àáâãäåæçèéêëìíîï"
    u"ðñòóôõö÷øùúûüýþÿ";

constexpr HighHalf kLatin9 =
    u"\u0080\u0081\u0082\u0083\u0084\u0085\u0086\u0087\u0088\u0089\u008a\u008b\u008c\u008d\u008e\u008f"
    u"\u0090\u0091\u0092\u0093\u0094\u0095\u0096\u0097\u0098\u0099\u009a\u009b\u009c\u009d\u009e\u009f"
    u"\u00a0¡¢£€¥Š§š©ª«¬\u00ad®¯"
    u"°±²³Žµ¶·ž¹º»ŒœŸ¿"
    u"ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏ"
    u"ÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞß"
    u"àáâãäåæçèéêëìíîï"
    u"ðñòóôõö÷øùúûüýþÿ";

/// One high byte in both directions.
struct Utf8Character {
    std::array<char, 3> bytes;
    std::uint8_t length;
};
struct Reverse {
    char16_t character;
    char byte;
};
struct Table {
    std::array<Utf8Character, 128> toUtf8;
    std::array<Reverse, 128> fromUnicode;  ///< by character
};

constexpr Utf8Character encoded(char16_t c) {
    if (c < 0x800) return {{static_cast<char>(0xC0 | c >> 6), static_cast<char>(0x80 | (c & 0x3F)), '\0'}, 2};
    return {{static_cast<char>(0xE0 | c >> 12), static_cast<char>(0x80 | (c >> 6 & 0x3F)),
             static_cast<char>(0x80 | (c & 0x3F))},
            3};
}

consteval Table tableOf(const HighHalf& characters) {
    Table table{};
    for (std::size_t i = 0; i < 128; ++i) {
        table.toUtf8[i] = encoded(characters[i]);
        table.fromUnicode[i] = {characters[i], static_cast<char>(0x80 + i)};
    }
    std::ranges::sort(table.fromUnicode, {}, &Reverse::character);
    return table;
}

constexpr Table kTables[] = {tableOf(kWindows1252), tableOf(kOem850), tableOf(kOem437), tableOf(kLatin1),
                             tableOf(kLatin9)};

const Table& tableFor(CodePage page) { return kTables[static_cast<std::size_t>(page)]; }

char byteOf(std::optional<char32_t> character, const Table& table) {
    if (!character) return '?';
    const auto* found = std::ranges::lower_bound(table.fromUnicode, *character, {}, &Reverse::character);
    return found != table.fromUnicode.end() && found->character == *character ? found->byte : '?';
}

}  // namespace

std::size_t asciiRun(std::string_view text) {
    constexpr std::size_t kBlock = sizeof(std::uint64_t);
    const auto isAscii = [](const char* block) {
        constexpr std::uint64_t kHighBits = 0x8080808080808080;
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, block, kBlock);
        return (bytes & kHighBits) == 0;
    };
    std::size_t at = 0;
    while (at + kBlock <= text.size() && isAscii(text.data() + at)) at += kBlock;
    // What is left is looked at with some of what was.
    if (at > 0 && at + kBlock > text.size() && isAscii(text.data() + text.size() - kBlock)) return text.size();
    while (at < text.size() && static_cast<std::uint8_t>(text[at]) < 0x80) ++at;
    return at;
}

std::string toUtf8(std::string_view bytes, CodePage page) {
    std::string result;
    toUtf8(bytes, page, result);
    return result;
}

void toUtf8(std::string_view bytes, CodePage page, std::string& out) {
    const Table& table = tableFor(page);
    out.clear();
    for (;;) {
        const std::size_t run = asciiRun(bytes);
        out.append(bytes.substr(0, run));
        if (run == bytes.size()) return;
        const Utf8Character& character = table.toUtf8[static_cast<std::uint8_t>(bytes[run]) - 0x80u];
        out.append(character.bytes.data(), character.length);
        bytes.remove_prefix(run + 1);
    }
}

std::string fromUtf8(std::string_view text, CodePage page) {
    const Table& table = tableFor(page);
    std::string result;
    for (;;) {
        const std::size_t run = asciiRun(text);
        result.append(text.substr(0, run));
        text.remove_prefix(run);
        if (text.empty()) return result;
        const FirstCharacter decoded = firstCharacter(text);
        result.push_back(byteOf(decoded.character, table));
        text.remove_prefix(decoded.length);
    }
}

std::string lackingCharacters(std::string_view text, CodePage page) {
    std::string lacking;
    while (!text.empty()) {
        const FirstCharacter decoded = firstCharacter(text);
        const std::string_view character = text.substr(0, decoded.length);
        const bool lacks = character != "?" && byteOf(decoded.character, tableFor(page)) == '?' &&
                           static_cast<std::uint8_t>(text[0]) >= 0x80;
        if (lacks && lacking.find(character) == std::string::npos) lacking += character;
        text.remove_prefix(decoded.length);
    }
    return lacking;
}

namespace {

/// The combining marks with the letters that they stand on, and what the two are together.
struct Mark {
    std::string_view mark, letters;
    std::u32string_view together;
};
constexpr Mark kMarks[] = {
    {"\u0300", "AEIOUaeiou", U"ÀÈÌÒÙàèìòù"},
    {"\u0301", "AEIOUYaeiouy", U"ÁÉÍÓÚÝáéíóúý"},
    {"\u0302", "AEIOUaeiou", U"ÂÊÎÔÛâêîôû"},
    {"\u0303", "ANOano", U"ÃÑÕãñõ"},
    {"\u0308", "AEIOUYaeiouy", U"ÄËÏÖÜŸäëïöüÿ"},
    {"\u030A", "Aa", U"Åå"},
    {"\u030C", "SZsz", U"ŠŽšž"},
    {"\u0327", "Cc", U"Çç"},
};

/// The letter and the mark behind it as one letter.
std::optional<char32_t> together(char letter, std::string_view mark) {
    for (const Mark& row : kMarks) {
        const std::size_t place = mark.starts_with(row.mark) ? row.letters.find(letter) : std::string_view::npos;
        if (place != std::string_view::npos) return row.together[place];
    }
    return std::nullopt;
}

}  // namespace

std::string composed(std::string_view text) {
    constexpr std::size_t kMarkLength = 2;
    std::string result;
    while (!text.empty()) {
        const auto letter = together(text.front(), text.substr(1));
        if (letter) {
            appendUtf8(*letter, result);
        } else {
            result += text.front();
        }
        text.remove_prefix(letter ? 1 + kMarkLength : 1);
    }
    return result;
}

FirstCharacter firstCharacter(std::string_view text) {
    constexpr char32_t kLowest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto first = static_cast<std::uint8_t>(text[0]);
    if (first < 0x80) return {first, 1};
    const auto length = static_cast<std::size_t>(std::countl_one(first));
    if (length < 2 || length > 4 || text.size() < length) return {};
    char32_t character = first & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<std::uint8_t>(text[i]);
        if ((next & 0xC0) != 0x80) return {};
        character = character << 6 | (next & 0x3F);
    }
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < kLowest[length] || character > 0x10FFFF || surrogate) return {};
    return {character, length};
}

void appendUtf8(char32_t character, std::string& text) {
    const auto add = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80) return add(character);
    if (character < 0x800) {
        add(0xC0 | character >> 6);
    } else if (character < 0x10000) {
        add(0xE0 | character >> 12);
        add(0x80 | (character >> 6 & 0x3F));
    } else {
        add(0xF0 | character >> 18);
        add(0x80 | (character >> 12 & 0x3F));
        add(0x80 | (character >> 6 & 0x3F));
    }
    add(0x80 | (character & 0x3F));
}

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    for (;;) {
        const std::size_t run = asciiRun(text);
        count += run;
        text.remove_prefix(run);
        if (text.empty()) return count;
        text.remove_prefix(firstCharacter(text).length);
        ++count;
    }
}

std::string_view firstCharacters(std::string_view text, std::size_t count) {
    if (text.size() <= count) return text;
    std::size_t at = 0;
    for (; count > 0 && at < text.size(); --count) at += firstCharacter(text.substr(at)).length;
    return text.substr(0, at);
}

}  // namespace kolmera
