#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/lettercase.h"

namespace kolmera {

namespace {

/// Weight of a character: `primary` decides first, over the whole text; `secondary` tells accents apart (é from e).
struct Weight {
    std::uint32_t primary = 0;
    std::uint8_t secondary = 0;
};

/// Letters that sort as another one, in the order among themselves; lower case stands for both cases.
struct Variants {
    char32_t base;
    std::u32string_view letters;
};
constexpr Variants kVariants[] = {
    {U'a', U"àáâãāăą"},  {U'c', U"çćĉċč"},       {U'd', U"ďđð"},   {U'e', U"èéêëēĕėęě"}, {U'g', U"ĝğġģ"},
    {U'h', U"ĥħ"},       {U'i', U"ìíîïĩīĭįıİĳ"}, {U'j', U"ĵ"},     {U'k', U"ķĸ"},        {U'l', U"ĺļľŀł"},
    {U'n', U"ñńņňŉŋ"},   {U'o', U"òóôõōŏ"},      {U'r', U"ŕŗř"},   {U's', U"śŝşšßſ"},    {U't', U"ţťŧþ"},
    {U'u', U"ùúûũūŭůų"}, {U'w', U"ŵ"},           {U'y', U"ýÿŷüű"}, {U'z', U"źżž"},       {U'ä', U"æ"},
    {U'ö', U"øőœ"},
};

constexpr std::size_t kTableSize = 0x180;        // ASCII, Latin-1, Latin Extended-A: every letter with a known case
constexpr std::uint32_t kLetters = 0x100;        // above all other characters of ASCII
constexpr std::uint32_t kBehindLetters = 0x200;  // what is neither ASCII nor a letter of the table
constexpr std::uint32_t kMalformed = 0x110000;   // bytes that are not UTF-8

constexpr std::uint32_t letterWeight(char32_t lower) {
    constexpr std::u32string_view alphabet = U"abcdefghijklmnopqrstuvwxyzåäö";
    return kLetters + static_cast<std::uint32_t>(alphabet.find(lower));
}

/// The upper letter of a lower one of the table, 0 when it has none.
constexpr char32_t upperOf(char32_t lower) {
    if (lower == 0xFF) return 0x178;
    if (lower < 0x80) return lower - 0x20;
    if (lower < 0x100) return lower == 0xDF ? 0 : lower - 0x20;
    const bool alone = lower == 0x130 || lower == 0x131 || lower == 0x138 || lower == 0x149 || lower == 0x17F;
    return alone ? 0 : lower - 1;
}

using WeightTable = std::array<Weight, kTableSize>;

constexpr void setBothCases(WeightTable& table, char32_t lower, Weight weight) {
    table[lower] = weight;
    if (const char32_t upper = upperOf(lower); upper != 0) table[upper] = weight;
}

constexpr WeightTable makeWeights() {
    WeightTable table;
    for (std::uint32_t c = 0; c < kTableSize; ++c) table[c].primary = c < 0x80 ? c : kBehindLetters + c;
    for (const char32_t letter : std::u32string_view(U"abcdefghijklmnopqrstuvwxyzåäö")) {
        setBothCases(table, letter, {letterWeight(letter), 0});
    }
    for (const Variants& variants : kVariants) {
        std::uint8_t secondary = 0;
        for (const char32_t letter : variants.letters) {
            setBothCases(table, letter, {letterWeight(variants.base), ++secondary});
        }
    }
    return table;
}

constexpr WeightTable kWeights = makeWeights();

std::uint8_t byteAt(std::string_view text, std::size_t at) {
    return at < text.size() ? static_cast<std::uint8_t>(text[at]) : std::uint8_t{0};
}

/// Takes one character from a text and moves `at` behind it. A byte that is not part of well-formed UTF-8 is a
/// character of its own, above all others.
char32_t takeCharacter(std::string_view text, std::size_t& at) {
    static constexpr struct {
        std::uint8_t mask, mark;
        char32_t lowest;
    } kForms[] = {{0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}};
    const std::uint8_t first = byteAt(text, at++);
    if (first < 0x80) return first;
    for (std::size_t length = 2; length <= 4; ++length) {
        const auto& form = kForms[length - 2];
        if ((first & form.mask) != form.mark) continue;
        char32_t c = first & static_cast<std::uint8_t>(~form.mask);
        for (std::size_t i = 0; i + 1 < length; ++i) {
            const std::uint8_t next = byteAt(text, at + i);
            if ((next & 0xC0) != 0x80) return kMalformed + first;
            c = c << 6 | (next & 0x3F);
        }
        if (c < form.lowest || c >= kMalformed) break;
        at += length - 1;
        return c;
    }
    return kMalformed + first;
}

Weight weightOf(char32_t c) { return c < kTableSize ? kWeights[c] : Weight{kBehindLetters + c, 0}; }

int order(std::uint32_t a, std::uint32_t b) { return a < b ? -1 : a > b ? 1 : 0; }

}  // namespace

int compareSwedish(std::string_view a, std::string_view b) {
    std::size_t i = 0;
    std::size_t j = 0;
    int accents = 0;  // the first difference of accents counts when nothing else differs
    while (i < a.size() && j < b.size()) {
        const auto x = static_cast<std::uint8_t>(a[i]);
        const auto y = static_cast<std::uint8_t>(b[j]);
        if ((x | y) < 0x80) {
            const std::uint32_t p = kWeights[x].primary;
            const std::uint32_t q = kWeights[y].primary;
            if (p != q) return p < q ? -1 : 1;
            ++i;
            ++j;
            continue;
        }
        const Weight p = weightOf(takeCharacter(a, i));
        const Weight q = weightOf(takeCharacter(b, j));
        if (const int first = order(p.primary, q.primary); first != 0) return first;
        if (accents == 0) accents = order(p.secondary, q.secondary);
    }
    if (i < a.size()) return 1;
    if (j < b.size()) return -1;
    return accents;
}

}  // namespace kolmera
