#include "ui/spinsteps.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "db/conversions.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

constexpr int kMinutesADay = 24 * 60;

std::optional<int> wholeNumber(std::string_view text, int below) {
    int number = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 0 || number >= below) return std::nullopt;
    return number;
}

/// The minute of the day that "h:mm" or "hh:mm" writes.
std::optional<int> minuteOfDay(std::string_view text) {
    text = trimmed(text);
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || text.size() - colon != 3) return std::nullopt;
    const auto hour = wholeNumber(text.substr(0, colon), 24);
    const auto minute = wholeNumber(text.substr(colon + 1), 60);
    if (!hour || !minute) return std::nullopt;
    return *hour * 60 + *minute;
}

/// The code of a text's first letter (two-byte letters such as å included), or nothing for an empty text.
std::optional<int> letterCode(std::string_view text) {
    if (text.empty()) return std::nullopt;
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80 || text.size() < 2) return first;
    return ((first & 0x1F) << 6) | (static_cast<unsigned char>(text[1]) & 0x3F);
}

std::string letter(int code) {
    if (code < 0x80) return {static_cast<char>(code)};
    return {static_cast<char>(0xC0 | (code >> 6)), static_cast<char>(0x80 | (code & 0x3F))};
}

}  // namespace

void SpinSteps::setTyp(std::int16_t typ) {
    typ_ = typ;
    if (typ == kTimeOfDay) Mask = "hh:mm";
}

std::string SpinSteps::stepped(std::string_view text, bool up, const Locale& locale) const {
    const double step = up ? Increment : -Increment;
    if (typ_ == kTimeOfDay) {
        const int minimum = static_cast<int>(std::lround(Min * kMinutesADay)) % kMinutesADay;
        const int minute = minuteOfDay(text).value_or(minimum) + static_cast<int>(std::lround(step));
        const int kept = std::clamp(minute, 0, kMinutesADay - 1);
        return fmt::format("{:02}:{:02}", kept / 60, kept % 60);
    }
    if (typ_ == kLetter) {
        const double code = letterCode(upperCase(text)).value_or(static_cast<int>(Min)) + step;
        return letter(static_cast<int>(std::clamp<double>(code, Min, Max)));
    }
    return number(std::clamp<double>(TillDbl(std::string(text), locale) + step, Min, Max), locale);
}

std::string SpinSteps::number(double value, const Locale& locale) const {
    if (Mask.empty()) return locale.formatNumber(value);
    const std::string_view mask = Mask;
    const std::string_view whole = mask.substr(0, mask.find('.'));
    const int decimals = static_cast<int>(mask.size() - whole.size()) - (whole.size() < mask.size() ? 1 : 0);
    std::string digits = locale.formatFixed(std::abs(value), decimals);
    const auto least = static_cast<std::size_t>(std::count(mask.begin(), mask.end(), '0')) + (decimals > 0 ? 1 : 0);
    if (digits.size() < least) digits.insert(0, least - digits.size(), '0');
    return (value < 0 ? "-" : "") + digits;
}

}  // namespace kolmera
