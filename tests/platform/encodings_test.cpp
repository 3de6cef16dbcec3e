#include "platform/encodings.h"

#include <gtest/gtest.h>

namespace kolmera {
namespace {

std::string allBytes() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) bytes.push_back(static_cast<char>(byte));
    return bytes;
}

TEST(Encodings, EveryByteComesBack) {
    for (const CodePage page : {CodePage::Windows1252, CodePage::Oem850, CodePage::Oem437}) {
        EXPECT_EQ(fromUtf8(toUtf8(allBytes(), page), page), allBytes());
    }
}

TEST(Encodings, CharactersWhereThePagesDiffer) {
    const struct {
        const char* fault;
        CodePage page;
        std::string_view bytes, text;
    } cases[] = {
        {"1252 read as Latin-1", CodePage::Windows1252, "\x80 \x96 \x99", "€ – ™"},
        {"an open byte lost", CodePage::Windows1252, "a\x81", "a\u0081"},
        {"850 taken for 437", CodePage::Oem850, "\x9B\xF8\xAB", "ø°½"},
        {"437 taken for 850", CodePage::Oem437, "\x9B\xE1\xFD", "¢ß²"},
        {"control characters drawn", CodePage::Oem850, std::string_view("\0\x1A\t", 3),
         std::string_view("\0\x1A\t", 3)},
        {"a high byte in the second block of eight", CodePage::Oem850, "12345678\x86", "12345678å"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(toUtf8(c.bytes, c.page), c.text);
        EXPECT_EQ(fromUtf8(c.text, c.page), c.bytes);
    }
}

TEST(Encodings, LackingAndMalformedBecomeQuestionMarks) {
    EXPECT_EQ(fromUtf8("a€b", CodePage::Oem850), "a?b");
    EXPECT_EQ(fromUtf8("日😀", CodePage::Windows1252), "??");
    EXPECT_EQ(fromUtf8(std::string_view("å").substr(0, 1), CodePage::Windows1252), "?") << "cut in the middle";
    EXPECT_EQ(fromUtf8("\xC1\x81", CodePage::Windows1252), "??") << "an overlong A";
    EXPECT_EQ(fromUtf8("\xED\xA0\x80", CodePage::Windows1252), "???") << "half of a surrogate pair";
}

TEST(Encodings, ReusedTextIsNotAllocatedAgain) {
    std::string out;
    out.reserve(64);
    const char* const data = out.data();
    toUtf8("a longer text with \xE5\xE4\xF6, then a shorter one", CodePage::Windows1252, out);
    toUtf8("\x80", CodePage::Windows1252, out);
    EXPECT_EQ(out, "€");
    EXPECT_EQ(out.data(), data);
}

TEST(Encodings, CountsCharactersNotBytes) {
    const struct {
        const char* fault;
        std::string_view text;
        std::size_t count;
        std::string_view firstTwo;
    } cases[] = {
        {"four bytes", "a😀b", 3, "a😀"},
        {"malformed bytes count one each",
         "\xE5\xE4"
         "abc",
         5, "\xE5\xE4"},
        {"a character cut off at the end", "aå\xC3", 3, "aå"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(characterCount(c.text), c.count);
        EXPECT_EQ(firstCharacters(c.text, 2), c.firstTwo);
    }
}

}  // namespace
}  // namespace kolmera
