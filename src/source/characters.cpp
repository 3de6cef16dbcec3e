#include "source/characters.h"

#include <bit>

#include "platform/encodings.h"
#include "platform/error.h"
#include "platform/filesample.h"

namespace kolmera {
namespace {

CodePage pageOf(CharacterSet characters) {
    switch (characters) {
        case CharacterSet::Windows1252:
            return CodePage::Windows1252;
        case CharacterSet::Latin1:
            return CodePage::Latin1;
        case CharacterSet::Latin9:
            return CodePage::Latin9;
        case CharacterSet::Oem850:
            return CodePage::Oem850;
        case CharacterSet::Utf8:
        case CharacterSet::Utf16Le:
        case CharacterSet::Utf16Be:
            break;
    }
    throw PlatformError(errors::kInternal, "not a code page");
}

/// Whether bytes may be the beginning of a character of UTF-8 that needs more of them.
bool maybeCut(std::string_view bytes) {
    const auto length = static_cast<std::size_t>(std::countl_one(static_cast<std::uint8_t>(bytes.front())));
    if (length < 2 || length > 4 || bytes.size() >= length) return false;
    for (const char byte : bytes.substr(1)) {
        if ((static_cast<std::uint8_t>(byte) & 0xC0) != 0x80) return false;
    }
    return true;
}

}  // namespace

void Decoder::addMalformed(std::string& out) {
    appendUtf8(0xFFFD, out);
    ++malformed_;
}

void Decoder::decode(std::string_view piece, bool last, std::string& out) {
    std::string joined;
    if (!held_.empty()) {
        joined = held_.append(piece);
        piece = joined;
        held_.clear();
    }
    switch (characters_) {
        case CharacterSet::Utf8:
            return decodeUtf8(piece, last, out);
        case CharacterSet::Utf16Le:
        case CharacterSet::Utf16Be:
            return decodeUtf16(piece, last, out);
        case CharacterSet::Windows1252:
        case CharacterSet::Latin1:
        case CharacterSet::Latin9:
        case CharacterSet::Oem850:
            toUtf8(piece, pageOf(characters_), page_);
            out += page_;
            return;
    }
}

void Decoder::decodeUtf8(std::string_view bytes, bool last, std::string& out) {
    if (!begun_) {
        if (!last && bytes.size() < kUtf8Mark.size()) {
            held_ = bytes;
            return;
        }
        begun_ = true;
        if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
    }
    while (!bytes.empty()) {
        const std::size_t run = asciiRun(bytes);
        out += bytes.substr(0, run);
        bytes.remove_prefix(run);
        if (bytes.empty()) return;
        const FirstCharacter first = firstCharacter(bytes);
        if (first.character) {
            out += bytes.substr(0, first.length);
        } else if (!last && maybeCut(bytes)) {
            held_ = bytes;
            return;
        } else {
            addMalformed(out);
        }
        bytes.remove_prefix(first.length);
    }
}

void Decoder::decodeUtf16(std::string_view bytes, bool last, std::string& out) {
    constexpr char32_t kMark = 0xFEFF;
    const auto unitAt = [&](std::size_t at) {
        const auto first = static_cast<std::uint8_t>(bytes[at]);
        const auto second = static_cast<std::uint8_t>(bytes[at + 1]);
        return static_cast<char32_t>(characters_ == CharacterSet::Utf16Le ? second << 8 | first : first << 8 | second);
    };
    const auto isHigh = [](char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; };
    const auto isLow = [](char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; };
    std::size_t at = 0;
    for (; at + 2 <= bytes.size(); at += 2) {
        const char32_t unit = unitAt(at);
        const bool first = !begun_;
        begun_ = true;
        if (first && unit == kMark) continue;
        if (isHigh(unit)) {
            if (at + 4 > bytes.size() && !last) break;
            if (at + 4 <= bytes.size() && isLow(unitAt(at + 2))) {
                appendUtf8(0x10000 + ((unit - 0xD800) << 10) + (unitAt(at + 2) - 0xDC00), out);
                at += 2;
                continue;
            }
        }
        if (isHigh(unit) || isLow(unit)) {
            addMalformed(out);
        } else {
            appendUtf8(unit, out);
        }
    }
    if (at == bytes.size()) return;
    if (last) {
        addMalformed(out);
    } else {
        held_ = bytes.substr(at);
    }
}

}  // namespace kolmera
