#include "source/conversion/values.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <vector>

#include "platform/date.h"
#include "platform/digits.h"
#include "platform/lettercase.h"
#include "platform/locale.h"

namespace kolmera {
namespace {

using Meaning = ValueRule::Meaning;

constexpr std::string_view kBlanks[] = {" ", "\t", "\r", "\n", "\u00A0", "\u202F", "\u2007", "\u2009", "\uFEFF"};
constexpr std::string_view kMinuses[] = {"-", "\u2212"};
constexpr std::string_view kSymbols[] = {"€", "$", "£", "¥"};

bool dropFront(std::string_view& text, std::string_view part) {
    if (part.empty() || !text.starts_with(part)) return false;
    text.remove_prefix(part.size());
    return true;
}

bool dropBack(std::string_view& text, std::string_view part) {
    if (part.empty() || !text.ends_with(part)) return false;
    text.remove_suffix(part.size());
    return true;
}

template <class Parts>
bool dropFrontAny(std::string_view& text, const Parts& parts) {
    return std::ranges::any_of(parts, [&](std::string_view part) { return dropFront(text, part); });
}

template <class Parts>
bool dropBackAny(std::string_view& text, const Parts& parts) {
    return std::ranges::any_of(parts, [&](std::string_view part) { return dropBack(text, part); });
}

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// "SEK", and the Swedish words for it.
bool isCurrency(std::string_view word) {
    constexpr std::size_t kCode = 3;
    const bool capitals = std::ranges::all_of(word, [](char c) { return c >= 'A' && c <= 'Z'; });
    if (word.size() == kCode && capitals) return true;
    const std::string upper = upperCase(word);
    return upper == "KR" || upper == "SEK" || upper == "KRONOR" || upper == "EUR" || upper == "EURO";
}

void dropCurrencyInFront(std::string_view& text) {
    if (dropFrontAny(text, kSymbols)) return;
    const auto end = std::ranges::find_if_not(text, isLetter);
    const auto length = static_cast<std::size_t>(end - text.begin());
    if (!isCurrency(text.substr(0, length))) return;
    text.remove_prefix(length);
    dropFront(text, ".");
}

void dropCurrencyBehind(std::string_view& text) {
    if (dropBackAny(text, kSymbols)) return;
    std::string_view word = text;
    dropBack(word, ".");
    std::size_t begin = word.size();
    while (begin > 0 && isLetter(word[begin - 1])) --begin;
    if (isCurrency(word.substr(begin))) text = word.substr(0, begin);
}

/// Drops a thousands sign in front; a blank is always one.
bool dropThousandsSign(std::string_view& text, std::string_view sign) {
    constexpr std::array<std::string_view, 2> kApostrophes = {"'", "\u2019"};
    const bool apostrophe = std::ranges::find(kApostrophes, sign) != kApostrophes.end();
    if (apostrophe ? dropFrontAny(text, kApostrophes) : dropFront(text, sign)) return true;
    return dropFrontAny(text, kBlanks);
}

std::string_view takeDigits(std::string_view& text) {
    const auto end = std::ranges::find_if_not(text, isDigit);
    const std::string_view digits = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(digits.size());
    return digits;
}

/// The digits before the decimal sign, of which groups behind the first have three.
std::optional<std::string> takeWhole(std::string_view& text, std::string_view thousands) {
    constexpr std::size_t kGroup = 3;
    std::string digits(takeDigits(text));
    bool grouped = false;
    for (std::string_view rest = text; !digits.empty() && dropThousandsSign(rest, thousands); rest = text) {
        const std::string_view group = takeDigits(rest);
        if (group.size() != kGroup || (!grouped && digits.size() > kGroup)) return std::nullopt;
        digits += group;
        grouped = true;
        text = rest;
    }
    return digits;
}

std::optional<Date> civil(std::string_view year, std::string_view month, std::string_view day) {
    constexpr std::size_t kYear = 4, kShort = 2;
    constexpr int kPivot = 70;
    const auto number = [](std::string_view digits) {
        int value = 0;
        for (const char c : digits) value = value * 10 + (c - '0');
        return value;
    };
    if ((year.size() != kYear && year.size() != kShort) || month.size() > kShort || day.size() > kShort)
        return std::nullopt;
    int full = number(year);
    if (year.size() <= 2) full += full < kPivot ? 2000 : 1900;
    return Date::fromCivil(full, number(month), number(day));
}

std::optional<Date> ordered(const std::array<std::string_view, 3>& parts, DateOrder order) {
    constexpr std::size_t kFullYear = 4;
    if (parts[0].size() == kFullYear) return civil(parts[0], parts[1], parts[2]);
    switch (order) {
        case DateOrder::YearMonthDay:
            return civil(parts[0], parts[1], parts[2]);
        case DateOrder::DayMonthYear:
            return civil(parts[2], parts[1], parts[0]);
        case DateOrder::MonthDayYear:
            return civil(parts[2], parts[0], parts[1]);
        default:
            return std::nullopt;
    }
}

/// "20261123", "231126": where the parts end is known by their number of digits.
std::optional<Date> fromDigits(std::string_view digits, DateOrder order) {
    constexpr std::size_t kShort = 6, kLong = 8;
    if (digits.size() == kShort && order != DateOrder::Unknown)
        return ordered({digits.substr(0, 2), digits.substr(2, 2), digits.substr(4)}, order);
    if (digits.size() != kLong) return std::nullopt;
    if (order == DateOrder::YearMonthDay || order == DateOrder::Unknown)
        return civil(digits.substr(0, 4), digits.substr(4, 2), digits.substr(6));
    return ordered({digits.substr(0, 2), digits.substr(2, 2), digits.substr(4)}, order);
}

std::optional<Date> dateIn(std::string_view text, DateOrder order) {
    constexpr std::string_view kSeparators = "-./ ";
    std::array<std::string_view, 3> parts;
    std::string_view rest = text;
    for (std::size_t part = 0; part < parts.size(); ++part) {
        if (part > 0 && (rest.empty() || kSeparators.find(rest.front()) == std::string_view::npos)) {
            return part == 1 && rest.empty() ? fromDigits(text, order) : std::nullopt;
        }
        if (part > 0) rest.remove_prefix(1);
        parts[part] = takeDigits(rest);
        if (parts[part].empty()) return std::nullopt;
    }
    // A time of day, which no price list means.
    if (!rest.empty() && rest.front() != ' ' && rest.front() != 'T') return std::nullopt;
    if (!rest.empty() && (rest.find(':') == std::string_view::npos)) return std::nullopt;
    return ordered(parts, order);
}

/// What a number column would take for a number, whatever the decimal sign.
bool looksLikeNumber(const std::string& text) {
    return Locale(Locale::Kind::English).parseNumber(replaceAll(text, ",", ".")).has_value();
}

bool hasLetters(std::string_view text) {
    return std::ranges::any_of(text, [](char c) { return isLetter(c) || static_cast<unsigned char>(c) >= 0x80; });
}

Meaning meaningOf(Meaning wanted, ColumnUse use) {
    if (wanted != Meaning::Automatic) return wanted;
    if (use == ColumnUse::Number) return Meaning::Number;
    return use == ColumnUse::Date ? Meaning::Date : Meaning::Text;
}

std::string compact(std::string_view isoDate) { return replaceAll(isoDate, "-", ""); }

}  // namespace

std::string_view trimmedBlanks(std::string_view text) {
    while (dropFrontAny(text, kBlanks)) {
    }
    while (dropBackAny(text, kBlanks)) {
    }
    return text;
}

std::optional<std::string> numberText(std::string_view text, const NumberSigns& signs) {
    text = trimmedBlanks(text);
    dropCurrencyInFront(text);
    text = trimmedBlanks(text);
    dropCurrencyBehind(text);
    text = trimmedBlanks(text);
    bool negative = dropFrontAny(text, kMinuses);
    if (!negative) dropFront(text, "+");
    text = trimmedBlanks(text);
    dropCurrencyInFront(text);  // "-€ 12"
    text = trimmedBlanks(text);
    constexpr std::string_view kWholeCrowns[] = {":-", ",-", ".-", ",\u2013", ":\u2013"};
    if (!dropBackAny(text, kWholeCrowns) && !negative) negative = dropBackAny(text, kMinuses);
    text = trimmedBlanks(text);

    const auto whole = takeWhole(text, signs.thousands);
    if (!whole) return std::nullopt;
    std::string_view decimals;
    if (!text.empty() && text.front() == signs.decimal) {
        text.remove_prefix(1);
        decimals = takeDigits(text);
    }
    if (!text.empty() || (whole->empty() && decimals.empty())) return std::nullopt;
    std::string number(negative ? "-" : "");
    number += whole->empty() ? "0" : *whole;
    if (!decimals.empty()) number.append(".").append(decimals);
    return number;
}

std::optional<std::string> dateText(std::string_view text, DateOrder order) {
    text = trimmedBlanks(text);
    std::optional<Date> date = dateIn(text, order);
    // Names of months leave nothing open.
    if (!date && hasLetters(text)) date = Locale(Locale::Kind::Swedish).parseDate(text);
    if (!date) return std::nullopt;
    return compact(date->iso());
}

ValueReader::ValueReader(const ValueRule& rule, const SourceFormat& format, ColumnUse use, char decimalSign)
    : rule_(rule),
      signs_{rule.decimalSign.value_or(format.decimalSign), rule.thousandsSign.value_or(format.thousandsSign)},
      order_(rule.dateOrder.value_or(format.dateOrder)),
      meaning_(meaningOf(rule.meaning, use)),
      use_(use),
      decimalSign_(decimalSign) {}

void ValueReader::read(const Cell& cell, std::string_view joined, SourceValue& value) const {
    value.fits = true;
    Cell::Kind kind = rule_.fixed ? Cell::Kind::Text : cell.kind;
    value.before.assign(rule_.fixed ? std::string_view(*rule_.fixed) : cell.text);
    if (!joined.empty()) {
        if (!value.before.empty()) value.before += rule_.joinedBy;
        value.before += joined;
        kind = Cell::Kind::Text;
    }
    value.text.assign(rule_.trim ? trimmedBlanks(value.before) : std::string_view(value.before));
    for (const auto& [from, to] : rule_.replace) {
        if (value.text != from) continue;
        value.text = to;
        kind = Cell::Kind::Text;
        break;
    }
    if (value.text.empty()) return;
    std::string_view kept = value.text;
    const bool dropped =
        static_cast<int>(dropFront(kept, rule_.dropPrefix)) + static_cast<int>(dropBack(kept, rule_.dropSuffix)) > 0;
    if (dropped) value.text = std::string(kept);
    if (value.text.empty()) return;
    interpret(kind, value);
    if (!value.text.empty() && value.fits) affixAndFill(value.text);
}

void ValueReader::interpret(Cell::Kind kind, SourceValue& value) const {
    std::string& text = value.text;
    if (meaning_ == Meaning::Text) {
        if (kind == Cell::Kind::Number && decimalSign_ != '.') std::ranges::replace(text, '.', decimalSign_);
        return;
    }
    if (meaning_ == Meaning::Number) {
        if (kind == Cell::Kind::Number) return;
        const auto number = kind == Cell::Kind::Date ? std::nullopt : numberText(text, signs_);
        if (!number) return misfit(value);
        text = *number;
        return;
    }
    if (kind == Cell::Kind::Date) {
        text = compact(text);
        return;
    }
    if (auto date = dateText(text, order_)) {
        text = std::move(*date);
    } else if (use_ != ColumnUse::Date || order_ != DateOrder::Unknown) {
        misfit(value);
    }
}

void ValueReader::misfit(SourceValue& value) const {
    value.fits = false;
    if (use_ == ColumnUse::Date) value.text.clear();
    if (use_ == ColumnUse::Number && looksLikeNumber(value.text)) value.text.insert(value.text.begin(), '?');
}

void ValueReader::affixAndFill(std::string& text) const {
    if (rule_.zeros == ValueRule::Zeros::Dropped) {
        const std::size_t first = std::min(text.find_first_not_of('0'), text.size() - 1);
        text.erase(0, first);
    }
    if (rule_.zeros == ValueRule::Zeros::Filled) {
        const std::size_t length = characterCount(text);
        const auto width = static_cast<std::size_t>(rule_.width);
        if (length < width) text.insert(0, width - length, '0');
    }
    text.insert(0, rule_.addPrefix);
    text.append(rule_.addSuffix);
}

}  // namespace kolmera
