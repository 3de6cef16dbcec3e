#include "history/valuecode.h"

#include <bit>

#include "platform/error.h"

namespace kolmera {
namespace {

enum class Tag : char { Null = 'n', False = 'f', True = 't', Whole = 'w', Number = 'd', Date = 'D', Text = 's' };

}  // namespace

/// Seven bits a byte, the sign in the lowest: small numbers of either sign take one byte.
void appendWhole(std::string& bytes, std::int64_t number) {
    auto rest = (static_cast<std::uint64_t>(number) << 1U) ^ static_cast<std::uint64_t>(number >> 63);
    for (; rest > 0x7F; rest >>= 7U) bytes += static_cast<char>((rest & 0x7F) | 0x80);
    bytes += static_cast<char>(rest);
}

void appendValue(std::string& bytes, const Value& value) {
    const auto tag = [&](Tag kind) { bytes += static_cast<char>(kind); };
    if (isNull(value)) return tag(Tag::Null);
    if (const auto* yes = std::get_if<bool>(&value)) return tag(*yes ? Tag::True : Tag::False);
    if (const auto* whole = std::get_if<std::int64_t>(&value)) {
        tag(Tag::Whole);
        return appendWhole(bytes, *whole);
    }
    if (const auto* number = std::get_if<double>(&value)) {
        tag(Tag::Number);
        auto bits = std::bit_cast<std::uint64_t>(*number);
        for (int i = 0; i < 8; ++i, bits >>= 8U) bytes += static_cast<char>(bits & 0xFF);
        return;
    }
    if (const auto* date = std::get_if<Date>(&value)) {
        tag(Tag::Date);
        return appendWhole(bytes, date->day);
    }
    tag(Tag::Text);
    appendWhole(bytes, static_cast<std::int64_t>(textOf(value).size()));
    bytes += textOf(value);
}

std::string_view ValueBytes::take(std::size_t length) {
    if (length > rest_.size()) throw PlatformError(errors::kDamaged, "stored values are cut short");
    const std::string_view taken = rest_.substr(0, length);
    rest_.remove_prefix(length);
    return taken;
}

std::int64_t ValueBytes::whole() {
    std::uint64_t number = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
        const auto byte = static_cast<unsigned char>(take(1).front());
        number |= static_cast<std::uint64_t>(byte & 0x7FU) << shift;
        if (byte < 0x80) break;
    }
    return static_cast<std::int64_t>(number >> 1U) ^ -static_cast<std::int64_t>(number & 1U);
}

Value ValueBytes::value() {
    switch (static_cast<Tag>(take(1).front())) {
        case Tag::Null:
            return Null{};
        case Tag::False:
            return false;
        case Tag::True:
            return true;
        case Tag::Whole:
            return whole();
        case Tag::Number: {
            std::uint64_t bits = 0;
            const std::string_view bytes = take(8);
            for (unsigned i = 0; i < 8; ++i) {
                bits |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[i])) << (8 * i);
            }
            return std::bit_cast<double>(bits);
        }
        case Tag::Date:
            return Date{static_cast<std::int32_t>(whole())};
        case Tag::Text: {
            const auto length = static_cast<std::size_t>(whole());
            return std::string(take(length));
        }
    }
    throw PlatformError(errors::kDamaged, "stored values have an unknown kind");
}

}  // namespace kolmera
