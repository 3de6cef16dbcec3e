#include "db/conversions.h"

#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>

#include "platform/lettercase.h"

namespace kolmera {

namespace {

/// The number that a value is, or nothing: dates are none.
std::optional<double> numeric(const Value& value, const Locale& locale) {
    if (const auto* flag = std::get_if<bool>(&value)) return *flag ? 1.0 : 0.0;
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return static_cast<double>(*whole);
    if (const auto* number = std::get_if<double>(&value)) return *number;
    if (const auto* text = std::get_if<std::string>(&value)) return locale.parseNumber(*text);
    return std::nullopt;
}

}  // namespace

std::int32_t TillLng(const Value& value, const Locale& locale) {
    const double rounded = roundHalfEven(leadingNumber(TillText(value, locale)));
    constexpr std::numeric_limits<std::int32_t> range;
    const bool fits = rounded >= range.min() && rounded <= range.max();
    return fits ? static_cast<std::int32_t>(rounded) : 0;
}

double TillDbl(const Value& value, const Locale& locale) { return numeric(value, locale).value_or(0); }

float TillSng(const Value& value, const Locale& locale) {
    const double number = TillDbl(value, locale);
    const bool fits = std::abs(number) <= std::numeric_limits<float>::max();
    return fits ? static_cast<float>(number) : 0.0F;
}

std::string TillText(const Value& value, const Locale& locale) {
    struct {
        const Locale& locale;
        std::string operator()(Null /*null*/) const { return {}; }
        std::string operator()(bool flag) const { return flag ? "True" : "False"; }
        std::string operator()(std::int64_t whole) const { return std::to_string(whole); }
        std::string operator()(double number) const { return locale.formatNumber(number); }
        std::string operator()(Date date) const { return locale.formatDate(date); }
        std::string operator()(const std::string& text) const { return text; }
    } const asText{locale};
    return std::visit(asText, value);
}

std::string TillText(const Value& value, FieldType type, const Locale& locale) {
    const auto* number = std::get_if<double>(&value);
    if (number && type == FieldType::Single) return locale.formatSingle(static_cast<float>(*number));
    return TillText(value, locale);
}

bool TillBool(const Value& value, const Locale& locale) {
    if (equalNoCase(trimmed(textOf(value)), "true")) return true;
    return TillDbl(value, locale) != 0;
}

}  // namespace kolmera
