#include "history/blockbytes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <optional>
#include <utility>

#include "platform/error.h"

namespace kolmera {

namespace {

enum class Stored : std::uint8_t { Null, No, Yes, Whole, Number, Date, Text, Decimals };

/// A Decimals value is this many times the number: prices have up to four decimals.
constexpr double kDecimals = 10000;

[[noreturn]] void throwDamaged() { throw PlatformError(errors::kDamaged, "the record of the run is damaged"); }

/// The number as a whole one of ten-thousandths, where that gives back the very same bits.
std::optional<std::int64_t> decimalsOf(double number) {
    constexpr double kMost = 1e15;
    const double scaled = std::nearbyint(number * kDecimals);
    if (!(std::fabs(scaled) < kMost)) return std::nullopt;
    const auto whole = static_cast<std::int64_t>(scaled);
    const double back = static_cast<double>(whole) / kDecimals;
    if (std::bit_cast<std::uint64_t>(back) != std::bit_cast<std::uint64_t>(number)) return std::nullopt;
    return whole;
}

}  // namespace

void BlockWriter::number(std::uint64_t number) {
    std::array<char, 10> digits;
    std::size_t count = 0;
    for (; number >= 0x80; number >>= 7) digits[count++] = static_cast<char>(number | 0x80);
    digits[count++] = static_cast<char>(number);
    bytes_.append(digits.data(), count);
}

void BlockWriter::signedNumber(std::int64_t value) {
    const auto bits = static_cast<std::uint64_t>(value);
    number(value < 0 ? ~bits << 1 | 1 : bits << 1);
}

void BlockWriter::text(std::string_view text) {
    number(text.size());
    bytes_ += text;
}

void BlockWriter::word(std::string_view word) {
    const auto found = std::ranges::find(words_, word);
    number(static_cast<std::uint64_t>(found - words_.begin()));
    if (found != words_.end()) return;
    words_.emplace_back(word);
    text(word);
}

void BlockWriter::value(const Value& value) {
    const auto kind = [&](Stored stored) { byte(static_cast<std::uint8_t>(stored)); };
    if (const auto* yes = std::get_if<bool>(&value)) {
        kind(*yes ? Stored::Yes : Stored::No);
    } else if (const auto* whole = std::get_if<std::int64_t>(&value)) {
        kind(Stored::Whole);
        signedNumber(*whole);
    } else if (const auto* real = std::get_if<double>(&value)) {
        if (const auto decimals = decimalsOf(*real)) {
            kind(Stored::Decimals);
            return signedNumber(*decimals);
        }
        kind(Stored::Number);
        const auto bits = std::bit_cast<std::uint64_t>(*real);
        for (int shift = 0; shift < 64; shift += 8) byte(static_cast<std::uint8_t>(bits >> shift));
    } else if (const auto* date = std::get_if<Date>(&value)) {
        kind(Stored::Date);
        signedNumber(date->day);
    } else if (const auto* held = std::get_if<std::string>(&value)) {
        kind(Stored::Text);
        text(*held);
    } else {
        kind(Stored::Null);
    }
}

void BlockWriter::clear() {
    bytes_.clear();
    words_.clear();
}

void BlockWriter::back(const Mark& mark) {
    bytes_.resize(std::min(bytes_.size(), mark.bytes));
    words_ = mark.words;
}

void BlockWriter::backInto(std::string written, const Mark& mark) {
    bytes_ = std::move(written);
    back(mark);
}

std::string_view BlockReader::take(std::uint64_t count) {
    if (count > rest_.size()) throwDamaged();
    const std::string_view taken = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return taken;
}

std::uint8_t BlockReader::byte() { return static_cast<std::uint8_t>(take(1).front()); }

std::uint64_t BlockReader::number() {
    std::uint64_t number = 0;
    for (int shift = 0; shift < 64; shift += 7) {
        const std::uint8_t next = byte();
        number |= static_cast<std::uint64_t>(next & 0x7F) << shift;
        if (next < 0x80) return number;
    }
    throwDamaged();
}

std::int64_t BlockReader::signedNumber() {
    const std::uint64_t bits = number();
    return static_cast<std::int64_t>((bits & 1) != 0 ? ~(bits >> 1) : bits >> 1);
}

std::string_view BlockReader::text() { return take(number()); }

const std::string& BlockReader::word() {
    const std::uint64_t place = number();
    if (place > words_.size()) throwDamaged();
    if (place == words_.size()) words_.emplace_back(text());
    return words_[place];
}

Value BlockReader::value() {
    switch (static_cast<Stored>(byte())) {
        case Stored::Null:
            return Null{};
        case Stored::No:
            return false;
        case Stored::Yes:
            return true;
        case Stored::Whole:
            return signedNumber();
        case Stored::Number: {
            std::uint64_t bits = 0;
            for (int shift = 0; shift < 64; shift += 8) bits |= static_cast<std::uint64_t>(byte()) << shift;
            return std::bit_cast<double>(bits);
        }
        case Stored::Decimals:
            return static_cast<double>(signedNumber()) / kDecimals;
        case Stored::Date:
            return Date{static_cast<std::int32_t>(signedNumber())};
        case Stored::Text:
            return std::string(text());
    }
    throwDamaged();
}

void BlockReader::skipValue() {
    constexpr std::uint64_t kNumberBytes = 8;
    switch (static_cast<Stored>(byte())) {
        case Stored::Null:
        case Stored::No:
        case Stored::Yes:
            return;
        case Stored::Whole:
        case Stored::Decimals:
        case Stored::Date:
            (void)number();
            return;
        case Stored::Number:
            (void)take(kNumberBytes);
            return;
        case Stored::Text:
            (void)text();
            return;
    }
    throwDamaged();
}

}  // namespace kolmera
