#include "source/detection/charactersets.h"

#include <algorithm>
#include <array>

#include "platform/encodings.h"
#include "platform/filesample.h"
#include "source/characters.h"
#include "source/detection/detection.h"

namespace kolmera {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kUtf16LeMark = "\xFF\xFE"sv;
constexpr std::string_view kUtf16BeMark = "\xFE\xFF"sv;

bool isLetter(char byte) { return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z'); }
bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }
bool isHigh(char byte) { return static_cast<std::uint8_t>(byte) >= 0x80; }

/// Lines and corners that DOS programs drew tables with.
bool isDrawing(char32_t character) { return character >= 0x2500 && character <= 0x259F; }

/// How well a character stands between its neighbours in a price list.
double fitOf(char32_t character, char before, char behind) {
    const auto isWord = [](char byte) { return isLetter(byte) || isDigit(byte); };
    if (isDrawing(character)) return isWord(before) || isWord(behind) ? -2 : 1;
    constexpr std::u32string_view kSwedish = U"åäöÅÄÖ";
    constexpr std::u32string_view kLetters = U"éÉüÜøØæÆèÈáÁíóúñçëêâôß";
    constexpr std::u32string_view kSigns = U"½¼¾°±²³µ×§®™€£–—…“”‘’•\u00A0«»´·¨";
    const bool small = (before >= 'a' && before <= 'z') || (behind >= 'a' && behind <= 'z');
    const bool capital = !small && ((before >= 'A' && before <= 'Z') || (behind >= 'A' && behind <= 'Z'));
    const auto caseFits = [&](bool isSmall) {
        // "öVERSIKT" and "vÄg" are other letters, read in the wrong set.
        if (isSmall) return !capital;
        return !(before >= 'a' && before <= 'z');
    };
    const bool inWord = (isLetter(before) || isHigh(before)) && (isLetter(behind) || isHigh(behind));
    if (const std::size_t at = kSwedish.find(character); at != kSwedish.npos) return caseFits(at < 3) ? 3 : 0.5;
    if (kLetters.find(character) != kLetters.npos) return isLetter(before) || isLetter(behind) ? 1 : 0.3;
    if (kSigns.find(character) == kSigns.npos) return -2;
    if (inWord) return -1.5;
    // A half is a sign of sizes, the sign of a currency stands at numbers.
    return isDigit(before) || isDigit(behind) ? 1 : 0.3;
}

struct PageFit {
    CharacterSet characters;
    CodePage page;
    double fit = 0;
};

/// Of each byte above ASCII the fit of what it stands for, in every page; the best first.
std::vector<PageFit> fitsOf(std::string_view bytes) {
    std::vector<PageFit> pages = {{CharacterSet::Windows1252, CodePage::Windows1252},
                                  {CharacterSet::Oem850, CodePage::Oem850},
                                  {CharacterSet::Latin9, CodePage::Latin9}};
    constexpr std::size_t kLooked = 20'000;
    std::size_t looked = 0;
    for (std::size_t at = asciiRun(bytes); at < bytes.size() && looked < kLooked; ++looked) {
        const char before = at > 0 ? bytes[at - 1] : ' ';
        const char behind = at + 1 < bytes.size() ? bytes[at + 1] : ' ';
        const bool isRepeated = before == bytes[at] && behind == bytes[at];  // no word has that
        for (PageFit& page : pages) {
            const std::string text = toUtf8(bytes.substr(at, 1), page.page);
            const char32_t character = firstCharacter(text).character.value_or(0);
            page.fit += isRepeated && !isDrawing(character) ? -1 : fitOf(character, before, behind);
        }
        ++at;
        at += asciiRun(bytes.substr(at));
    }
    std::ranges::stable_sort(pages, [](const PageFit& a, const PageFit& b) { return a.fit > b.fit; });
    return pages;
}

bool decodeAlike(std::string_view bytes, CodePage a, CodePage b) { return toUtf8(bytes, a) == toUtf8(bytes, b); }

CharacterGuess guessPage(std::string_view bytes) {
    const std::vector<PageFit> pages = fitsOf(bytes);
    CharacterGuess guess{.characters = pages[0].characters, .confidence = 1, .candidates = {}};
    for (const PageFit& page : pages) {
        // Sets that say the same of this text are no alternatives.
        if (&page == &pages[0] || !decodeAlike(bytes, pages[0].page, page.page))
            guess.candidates.push_back(page.characters);
    }
    if (guess.candidates.size() > 1) {
        const auto second = std::ranges::find(pages, guess.candidates[1], &PageFit::characters);
        const double lead = std::max(0.0, pages[0].fit - second->fit);
        guess.confidence = lead / (lead + 0.5) * (pages[0].fit > 0 ? 1 : 0.5);
    }
    if (guess.confidence >= kSureEnough) guess.candidates.resize(1);
    return guess;
}

CharacterGuess sure(CharacterSet characters, double confidence = 1) {
    return {.characters = characters, .confidence = confidence, .candidates = {characters}};
}

/// In UTF-16 of western texts the upper half of nearly every character is zero.
CharacterSet byteOrder(std::string_view bytes) {
    constexpr std::size_t kLooked = 4096;
    std::array<std::size_t, 2> zeros{};
    for (std::size_t at = 0; at < std::min(bytes.size(), kLooked); ++at) zeros[at % 2] += bytes[at] == '\0' ? 1U : 0U;
    return zeros[0] > zeros[1] ? CharacterSet::Utf16Be : CharacterSet::Utf16Le;
}

}  // namespace

CharacterGuess guessCharacters(std::string_view bytes, bool isCut) {
    if (bytes.starts_with(kUtf8Mark)) return sure(CharacterSet::Utf8);
    if (bytes.starts_with(kUtf16LeMark)) return sure(CharacterSet::Utf16Le);
    if (bytes.starts_with(kUtf16BeMark)) return sure(CharacterSet::Utf16Be);
    if (signatureOf(bytes) == Signature::Utf16) return sure(byteOrder(bytes), 0.95);
    if (asciiRun(bytes) == bytes.size()) return sure(CharacterSet::Utf8);
    Decoder decoder(CharacterSet::Utf8);
    std::string text;
    decoder.decode(bytes, !isCut, text);
    if (decoder.malformed() == 0) return sure(CharacterSet::Utf8, 0.99);
    // A few damaged bytes in a text that is UTF-8 otherwise.
    const auto high = static_cast<std::uint64_t>(std::ranges::count_if(text, isHigh));
    if (decoder.malformed() * 20 < high) {
        return {.characters = CharacterSet::Utf8,
                .confidence = 0.7,
                .candidates = {CharacterSet::Utf8, CharacterSet::Windows1252, CharacterSet::Oem850}};
    }
    return guessPage(bytes);
}

}  // namespace kolmera
