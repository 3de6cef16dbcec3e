#include "registers/registervalues.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

using What = RegisterProblem::What;

constexpr std::string_view kTrue[] = {"1", "ja", "yes", "true", "sant", "x", "j", "y"};
constexpr std::string_view kFalse[] = {"0", "nej", "no", "false", "falskt", "n"};

bool isOneOf(std::string_view text, std::span<const std::string_view> words) {
    return std::ranges::any_of(words, [&](std::string_view word) { return equalNoCase(word, text); });
}

std::optional<double> numberIn(std::string_view text, const Spelling& spelling) {
    if (spelling.locale) return spelling.locale->parseNumber(text);
    const std::optional<std::string> plain = numberText(text, spelling.signs);
    return plain ? Locale(Locale::Kind::English).parseNumber(*plain) : std::nullopt;
}

std::optional<Date> dateIn(std::string_view text, const Spelling& spelling) {
    if (spelling.locale) return spelling.locale->parseDate(text);
    std::optional<std::string> plain = dateText(text, spelling.order);
    if (!plain || plain->size() != 8) return std::nullopt;
    return Date::fromIso(plain->insert(6, 1, '-').insert(4, 1, '-'));
}

bool isWhole(FieldType type) {
    return type == FieldType::Byte || type == FieldType::Integer || type == FieldType::Long;
}

/// One reading of one text.
class Reading {
  public:
    Reading(const RegisterColumn& cell, int column, std::string_view text, Value& value)
        : cell_(cell), column_(column), text_(text), value_(value) {}

    std::optional<RegisterProblem> asText() {
        if (cell_.size > 0 && characterCount(text_) > static_cast<std::size_t>(cell_.size))
            return problem(What::TooLong, fmt::format("{}", cell_.size));
        if (!cell_.choices.empty() && cell_.choices.find(upperCase(text_)) == std::string::npos) {
            std::string choices;
            for (const char choice : cell_.choices) choices.append(choices.empty() ? "" : ", ").append(1, choice);
            return problem(What::NoChoice, choices);
        }
        value_ = cell_.choices.empty() ? std::string(text_) : upperCase(text_);
        return std::nullopt;
    }
    std::optional<RegisterProblem> asTruth() {
        const bool truth = isOneOf(text_, kTrue);
        if (!truth && !isOneOf(text_, kFalse)) return problem(What::NoTruth);
        value_ = truth;
        return std::nullopt;
    }
    std::optional<RegisterProblem> asDate(const Spelling& spelling) {
        const std::optional<Date> date = dateIn(text_, spelling);
        if (!date) return problem(What::NoDate);
        value_ = *date;
        return std::nullopt;
    }
    std::optional<RegisterProblem> asNumber(const Spelling& spelling) {
        const std::optional<double> number = numberIn(text_, spelling);
        if (!number) return problem(What::NoNumber);
        if (isWhole(cell_.type) && std::trunc(*number) != *number) return problem(What::NoWholeNumber);
        if (cell_.low != cell_.high && (*number < cell_.low || *number > cell_.high))
            return problem(What::OutOfRange, fmt::format("{:.0f}-{:.0f}", cell_.low, cell_.high));
        if (isWhole(cell_.type)) {
            value_ = static_cast<std::int64_t>(*number);
        } else {
            // As it will be stored, so that the same number is no change.
            value_ = cell_.type == FieldType::Single     ? static_cast<double>(static_cast<float>(*number))
                     : cell_.type == FieldType::Currency ? roundDecimals(*number, 4)
                                                         : *number;
        }
        return std::nullopt;
    }

  private:
    [[nodiscard]] RegisterProblem problem(What what, std::string about = {}) const {
        return {what, column_, std::string(text_), std::move(about)};
    }

    const RegisterColumn& cell_;
    int column_;
    std::string_view text_;
    Value& value_;
};

}  // namespace

Value emptyValue(const RegisterColumn& cell) {
    switch (cell.type) {
        case FieldType::Text:
        case FieldType::Memo:
            return std::string();
        case FieldType::Date:
            return Null{};
        case FieldType::Boolean:
            return false;
        default:
            break;
    }
    if (cell.mayBeNull) return Null{};
    return isWhole(cell.type) ? Value(std::int64_t{0}) : Value(0.0);
}

std::optional<RegisterProblem> readValue(const RegisterColumn& cell, int column, std::string_view text,
                                         const Spelling& spelling, Value& value) {
    text = trimmedBlanks(text);
    if (text.empty()) {
        value = cell.key ? Value(Null{}) : emptyValue(cell);
        return std::nullopt;
    }
    Reading reading(cell, column, text, value);
    switch (cell.type) {
        case FieldType::Text:
        case FieldType::Memo:
            return reading.asText();
        case FieldType::Boolean:
            return reading.asTruth();
        case FieldType::Date:
            return reading.asDate(spelling);
        default:
            return reading.asNumber(spelling);
    }
}

}  // namespace kolmera
