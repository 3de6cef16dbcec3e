#include "platform/spreadsheet/biffrecords.h"

#include <algorithm>
#include <bit>

#include "platform/encodings.h"
#include "platform/error.h"

namespace kolmera {

namespace {

constexpr std::size_t kHeaderSize = 4;
constexpr int kContinue = 0x3C;
constexpr std::size_t kWindow = std::size_t{1} << 17;  // more than the largest record

[[noreturn]] void refuse() { throw PlatformError(errors::kUnreadableSpreadsheet, "The workbook is damaged."); }

bool isHigh(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLow(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

}  // namespace

std::string_view BiffRecords::peek(std::uint64_t position, std::size_t count) {
    if (position < windowStart_ || position + count > windowStart_ + window_.size()) {
        windowStart_ = position;
        stream_.readAt(position, kWindow, window_);
    }
    const std::string_view rest = std::string_view(window_).substr(static_cast<std::size_t>(position - windowStart_));
    return rest.substr(0, count);
}

bool BiffRecords::next() {
    // What is left at the end of some streams is filled with zeros.
    const std::string_view header = peek(nextPosition_, kHeaderSize);
    if (header.size() < kHeaderSize || littleEndian(header, 0, kHeaderSize) == 0) return false;
    readRecord();
    return true;
}

void BiffRecords::readRecord() {
    const std::string_view header = peek(nextPosition_, kHeaderSize);
    kind_ = static_cast<int>(littleEndian(header, 0, 2));
    const auto length = static_cast<std::size_t>(littleEndian(header, 2, 2));
    bytes_ = peek(nextPosition_ + kHeaderSize, length);
    if (bytes_.size() != length) refuse();
    nextPosition_ += kHeaderSize + length;
    at_ = 0;
}

void BiffRecords::seek(std::uint64_t position) {
    if (position >= stream_.size()) refuse();
    nextPosition_ = position;
}

void BiffRecords::continued() {
    const int kind = kind_;
    if (peek(nextPosition_, kHeaderSize).size() < kHeaderSize) refuse();
    readRecord();
    if (kind_ != kContinue) refuse();
    kind_ = kind;
}

std::uint64_t BiffRecords::number(std::size_t width) {
    if (left() == 0) continued();
    const std::uint64_t number = littleEndian(bytes_, at_, width);
    at_ += width;
    return number;
}

double BiffRecords::real() { return std::bit_cast<double>(number(8)); }

void BiffRecords::skip(std::size_t bytes) {
    while (bytes > left()) {
        bytes -= left();
        continued();
    }
    at_ += bytes;
}

std::string BiffRecords::text() {
    constexpr int kIsWide = 1;
    constexpr int kHasExtension = 4;
    constexpr int kIsRich = 8;
    const std::size_t count = word();
    const int flags = byte();
    const std::size_t runs = (flags & kIsRich) != 0 ? word() : 0;
    const std::size_t extension = (flags & kHasExtension) != 0 ? doubleWord() : 0;
    std::string text;
    appendCharacters(count, (flags & kIsWide) != 0, text);
    skip(4 * runs + extension);
    return text;
}

std::string BiffRecords::shortText() {
    const std::size_t count = byte();
    const bool isWide = (byte() & 1) != 0;
    std::string text;
    appendCharacters(count, isWide, text);
    return text;
}

void BiffRecords::appendCharacters(std::size_t count, bool isWide, std::string& text) {
    char32_t high = 0;
    for (; count > 0; --count) {
        // The rest of a text that goes on in another record starts with flags of its own.
        if (left() == 0) {
            continued();
            isWide = (byte() & 1) != 0;
        }
        const char32_t unit = isWide ? word() : byte();
        if (high != 0 && isLow(unit)) {
            appendUtf8(0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00), text);
            high = 0;
            continue;
        }
        if (high != 0) appendUtf8(0xFFFD, text);
        high = isHigh(unit) ? unit : 0;
        if (high == 0) appendUtf8(isLow(unit) ? 0xFFFD : unit, text);
    }
    if (high != 0) appendUtf8(0xFFFD, text);
}

}  // namespace kolmera
