#include "platform/engine/fieldvalue.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

constexpr double kLargestCurrency = 922337203685477.5807;
constexpr int kCurrencyDecimals = 4;

[[noreturn]] void refuse(const FieldDef& field) {
    throw PlatformError(errors::kWrongType, "the value does not fit the type of the field").about(field.name);
}

/// Smallest and largest whole number of a type.
struct Range {
    std::int64_t low, high;
};
Range rangeOf(FieldType type) {
    switch (type) {
        case FieldType::Byte:
            return {0, 255};
        case FieldType::Integer:
            return {-32768, 32767};
        default:
            return {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
    }
}

double toNumber(const FieldDef& field, const Value& value, const Locale& locale) {
    if (const auto* number = std::get_if<double>(&value)) return *number;
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return static_cast<double>(*whole);
    if (const auto* yes = std::get_if<bool>(&value)) return *yes ? 1.0 : 0.0;
    if (const auto* text = std::get_if<std::string>(&value)) {
        if (const auto number = locale.parseNumber(*text)) return *number;
    }
    refuse(field);
}

void fitWhole(const FieldDef& field, Value& value, const Locale& locale) {
    const Range range = rangeOf(field.type);
    auto* whole = std::get_if<std::int64_t>(&value);
    if (whole == nullptr) {
        const double number = roundHalfEven(toNumber(field, value, locale));
        const bool fits = number >= static_cast<double>(range.low) && number <= static_cast<double>(range.high);
        if (!fits) refuse(field);
        value = static_cast<std::int64_t>(number);
        return;
    }
    if (*whole < range.low || *whole > range.high) refuse(field);
}

void fitNumber(const FieldDef& field, Value& value, const Locale& locale) {
    double number = toNumber(field, value, locale);
    if (!std::isfinite(number)) refuse(field);
    if (field.type == FieldType::Single) {
        if (std::fabs(number) > static_cast<double>(std::numeric_limits<float>::max())) refuse(field);
        number = static_cast<double>(static_cast<float>(number));
    } else if (field.type == FieldType::Currency) {
        if (std::fabs(number) > kLargestCurrency) refuse(field);
        number = roundDecimals(number, kCurrencyDecimals);
    }
    value = number;
}

void fitBoolean(const FieldDef& field, Value& value, const Locale& locale) {
    if (std::holds_alternative<bool>(value)) return;
    value = toNumber(field, value, locale) != 0;
}

/// Day numbers of the years 100 to 9999, which dates can be written for.
constexpr std::int64_t kFirstDay = -657434;
constexpr std::int64_t kLastDay = 2958465;

std::optional<Date> toDate(const Value& value, const Locale& locale) {
    if (const auto* date = std::get_if<Date>(&value)) return *date;
    if (const auto* day = std::get_if<std::int64_t>(&value)) {
        if (*day < kFirstDay || *day > kLastDay) return std::nullopt;
        return Date{static_cast<std::int32_t>(*day)};
    }
    const auto* text = std::get_if<std::string>(&value);
    if (text == nullptr) return std::nullopt;
    if (const auto date = Date::fromIso(*text)) return date;
    return locale.parseDate(*text);
}

void fitDate(const FieldDef& field, Value& value, const Locale& locale) {
    const auto date = toDate(value, locale);
    if (!date || date->day < kFirstDay || date->day > kLastDay) refuse(field);
    value = *date;
}

std::string toText(const Value& value, const Locale& locale) {
    if (const auto* yes = std::get_if<bool>(&value)) return *yes ? "1" : "0";
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return std::to_string(*whole);
    if (const auto* number = std::get_if<double>(&value)) return locale.formatNumber(*number);
    if (const auto* date = std::get_if<Date>(&value)) return locale.formatDate(*date);
    return std::string(textOf(value));
}

std::size_t characters(std::string_view text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

bool fitsSize(std::string_view text, int size) {
    const auto limit = static_cast<std::size_t>(size);
    return size == 0 || text.size() <= limit || characters(text) <= limit;
}

void fitText(const FieldDef& field, Value& value, const Locale& locale) {
    if (!std::holds_alternative<std::string>(value)) value = toText(value, locale);
    if (!fitsSize(textOf(value), field.size)) {
        throw PlatformError(errors::kTextTooLong, "the text is too long for the field").about(field.name);
    }
}

template <typename Number>
int order(Number a, Number b) {
    return a < b ? -1 : a > b ? 1 : 0;
}

std::optional<double> numberOf(const Value& value) {
    if (const auto* yes = std::get_if<bool>(&value)) return *yes ? 1.0 : 0.0;
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return static_cast<double>(*whole);
    if (const auto* number = std::get_if<double>(&value)) return *number;
    return std::nullopt;
}

/// Null before numbers before texts, as SQLite orders what is stored.
int rank(const Value& value) {
    if (isNull(value)) return 0;
    return numberOf(value) ? 1 : 2;
}

}  // namespace

void fitToField(const FieldDef& field, Value& value, const Locale& locale) {
    if (isNull(value)) return;
    switch (field.type) {
        case FieldType::Boolean:
            fitBoolean(field, value, locale);
            return;
        case FieldType::Byte:
        case FieldType::Integer:
        case FieldType::Long:
            fitWhole(field, value, locale);
            return;
        case FieldType::Currency:
        case FieldType::Single:
        case FieldType::Double:
            fitNumber(field, value, locale);
            return;
        case FieldType::Date:
            fitDate(field, value, locale);
            return;
        case FieldType::Text:
        case FieldType::Memo:
            fitText(field, value, locale);
    }
}

void fitToKey(const FieldDef& field, Value& value, const Locale& locale) {
    const bool text = field.type == FieldType::Text || field.type == FieldType::Memo;
    if (!text) return fitToField(field, value, locale);
    if (!isNull(value) && !std::holds_alternative<std::string>(value)) value = toText(value, locale);
}

Value defaultOf(const FieldDef& field) {
    if (field.defaultNull || field.counter) return Null{};
    switch (field.type) {
        case FieldType::Boolean:
            return false;
        case FieldType::Byte:
        case FieldType::Integer:
        case FieldType::Long:
            return std::int64_t{0};
        case FieldType::Currency:
        case FieldType::Single:
        case FieldType::Double:
            return 0.0;
        default:
            return Null{};
    }
}

int compareValues(const Value& a, const Value& b) {
    if (const int ranks = order(rank(a), rank(b)); ranks != 0) return ranks;
    const auto x = numberOf(a);
    const auto y = numberOf(b);
    if (x && y) return order(*x, *y);
    const auto* first = std::get_if<Date>(&a);
    const auto* second = std::get_if<Date>(&b);
    if (first != nullptr && second != nullptr) return order(first->day, second->day);
    return compareSwedish(textOf(a), textOf(b));
}

}  // namespace kolmera
