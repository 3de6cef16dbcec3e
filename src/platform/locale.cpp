#include "platform/locale.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "platform/digits.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

std::string_view withoutBlanks(std::string_view text) {
    const auto blank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && blank(text.back())) text.remove_suffix(1);
    return text;
}

/// Length of the digit group sign at the start of a text, 0 when there is none.
std::size_t groupSignLength(std::string_view text, Locale::Kind kind) {
    if (kind == Locale::Kind::English) return text.starts_with(',') ? 1 : 0;
    if (text.starts_with(' ')) return 1;
    return text.starts_with("\u00a0") ? 2 : 0;
}

/// Reads the digits of a number one after the other. As long as they are few, value and scale are exact and the number
/// needs no conversion of its text (and nothing is allocated).
class Mantissa {
  public:
    void add(char digit, bool decimal) {
        any_ = true;
        if (value_ < kLimit) {
            value_ = value_ * 10 + static_cast<unsigned>(digit - '0');
            if (decimal) --scale_;
        } else {
            exact_ = false;
        }
    }
    [[nodiscard]] bool any() const { return any_; }
    /// The number, when one rounding is enough to get it: below 2^53 times or by an exact power of ten.
    [[nodiscard]] std::optional<double> scaled(int exponent) const {
        const int power = scale_ + exponent;
        if (!exact_ || power < -22 || power > 22) return std::nullopt;
        const auto value = static_cast<double>(value_);
        return power < 0 ? value / kPowersOfTen[-power] : value * kPowersOfTen[power];
    }

  private:
    static constexpr std::uint64_t kLimit = 100'000'000'000'000;  // one digit more still fits 53 bits
    std::uint64_t value_ = 0;
    int scale_ = 0;
    bool any_ = false;
    bool exact_ = true;
};

/// Reads the whole part of a number with its digit groups; false when a group is not of three digits.
bool readWholePart(std::string_view& text, Locale::Kind kind, Mantissa& mantissa) {
    bool grouped = false;
    for (int digits = 0;;) {
        if (!text.empty() && isDigit(text.front())) {
            mantissa.add(text.front(), false);
            text.remove_prefix(1);
            ++digits;
            continue;
        }
        if (grouped && digits != 3) return false;
        const std::size_t sign = groupSignLength(text, kind);
        if (sign == 0) return true;
        if (digits < 1 || digits > 3) return false;
        grouped = true;
        digits = 0;
        text.remove_prefix(sign);
    }
}

void readDecimals(std::string_view& text, Mantissa& mantissa) {
    for (; !text.empty() && isDigit(text.front()); text.remove_prefix(1)) mantissa.add(text.front(), true);
}

/// Reads "E+12" when it stands there; its digits beyond the range of a double count as out of that range.
std::optional<int> readExponent(std::string_view& text) {
    if (text.empty() || (text.front() != 'E' && text.front() != 'e')) return 0;
    std::string_view rest = text.substr(1);
    const bool negative = rest.starts_with('-');
    if (negative || rest.starts_with('+')) rest.remove_prefix(1);
    if (rest.empty() || !isDigit(rest.front())) return std::nullopt;
    int exponent = 0;
    for (; !rest.empty() && isDigit(rest.front()); rest.remove_prefix(1)) {
        exponent = std::min(exponent * 10 + (rest.front() - '0'), 100'000);
    }
    text = rest;
    return negative ? -exponent : exponent;
}

/// The long way for a text that is already known to be a number, without its sign.
std::optional<double> convertedText(std::string_view number, char decimalSign) {
    std::string plain;
    for (const char c : number) {
        if (c == decimalSign) plain.push_back('.');
        if (isDigit(c) || c == 'e' || c == 'E' || c == '+' || c == '-') plain.push_back(c);
    }
    double value = 0;
    const auto result = std::from_chars(plain.data(), plain.data() + plain.size(), value);
    if (result.ec != std::errc{}) return std::nullopt;
    return value;
}

/// The text of a number as printf writes it in the C locale, with another decimal sign. The program's C locale does
/// not matter, which a window toolkit may set.
template <typename... Format>
std::string written(double value, char decimalSign, Format... format) {
    std::array<char, 512> text;
    char* const end = std::to_chars(text.data(), text.data() + text.size(), value, format...).ptr;
    std::replace(text.data(), end, '.', decimalSign);
    std::replace(text.data(), end, 'e', 'E');
    const bool isZero = std::none_of(text.data(), end, [](char c) { return c >= '1' && c <= '9'; });
    const bool signedZero = text[0] == '-' && isZero;  // "-0,00" would puzzle
    return {text.data() + (signedZero ? 1 : 0), end};
}

}  // namespace

Locale Locale::ofUser() {
    for (const char* name : {"LC_ALL", "LC_NUMERIC", "LANG"}) {
        const char* value = std::getenv(name);
        if (value == nullptr || *value == '\0') continue;
        const std::string_view locale = value;
        if (locale == "C" || locale.starts_with("C.") || locale == "POSIX") continue;
        return Locale(locale.starts_with("en") ? Kind::English : Kind::Swedish);
    }
    return Locale(Kind::Swedish);
}

std::optional<double> Locale::parseNumber(std::string_view text) const {
    text = withoutBlanks(text);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    const std::string_view number = text;
    Mantissa mantissa;
    if (!readWholePart(text, kind_, mantissa)) return std::nullopt;
    if (text.starts_with(decimalSign())) {
        text.remove_prefix(1);
        readDecimals(text, mantissa);
    }
    if (!mantissa.any()) return std::nullopt;
    const std::optional<int> exponent = readExponent(text);
    if (!exponent || !text.empty()) return std::nullopt;
    std::optional<double> value = mantissa.scaled(*exponent);
    if (!value) value = convertedText(number, decimalSign());
    if (value && negative && *value != 0) return -*value;
    return value;
}

std::string Locale::formatNumber(double value) const {
    return written(value, decimalSign(), std::chars_format::general, 15);
}

std::string Locale::formatSingle(float value) const {
    return written(static_cast<double>(value), decimalSign(), std::chars_format::general, 7);
}

std::string Locale::formatFixed(double value, int decimals) const {
    return written(value, decimalSign(), std::chars_format::fixed, std::clamp(decimals, 0, 15));
}

std::string Locale::formatDate(Date date) const {
    std::string iso = date.iso();
    if (kind_ == Kind::Swedish) return iso;
    const auto number = [&iso](std::size_t at) { return std::to_string((iso[at] - '0') * 10 + (iso[at + 1] - '0')); };
    return number(iso.size() - 5) + "/" + number(iso.size() - 2) + "/" + iso.substr(0, iso.size() - 6);
}

double leadingNumber(std::string_view text) {
    constexpr std::string_view kInNumbers = "0123456789.-+eE";
    std::string plain;
    for (const char c : text) {
        if (c == ' ' || c == '\t' || c == '\n') continue;
        if (kInNumbers.find(c) == std::string_view::npos) break;
        plain.push_back(c);
    }
    // from_chars stops where the number ends. It knows no plus sign.
    const char* begin = plain.data();
    if (plain.starts_with('+') && !plain.starts_with("+-")) ++begin;
    double value = 0;
    std::from_chars(begin, plain.data() + plain.size(), value);
    return value;
}

double roundHalfEven(double value) { return std::nearbyint(value); }

double roundDecimals(double value, int decimals) {
    const double power = kPowersOfTen[std::clamp(decimals, 0, 15)];
    const double scaled = value * power;
    return std::isfinite(scaled) ? std::nearbyint(scaled) / power : value;
}

}  // namespace kolmera
