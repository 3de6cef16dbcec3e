#include "platform/engine/criteria.h"

#include <algorithm>
#include <charconv>

#include "platform/engine/fieldlookup.h"
#include "platform/engine/fieldvalue.h"
#include "platform/engine/statementtext.h"
#include "platform/error.h"

namespace kolmera {

namespace {

using Comparison = Criteria::Comparison;

constexpr struct {
    std::string_view symbol, text;
    Comparison comparison;
} kOperators[] = {
    {"=", " = ?", Comparison::Equal},       {"<>", " <> ?", Comparison::Unequal},
    {"<", " < ?", Comparison::Less},        {"<=", " <= ?", Comparison::LessOrEqual},
    {">", " > ?", Comparison::Greater},     {">=", " >= ?", Comparison::GreaterOrEqual},
    {"IS", " IS NULL", Comparison::IsNull}, {"", " IS NOT NULL", Comparison::IsNotNull},
};

class Parser {
  public:
    Parser(std::string_view text, const std::vector<FieldDef>& fields, const Locale& locale)
        : text_(text), tokens_(tokens(text)), fields_(fields), locale_(locale) {}

    std::vector<Criteria::Term> parse() {
        std::vector<Criteria::Term> terms;
        do {
            terms.push_back(term());
        } while (takeIf("AND"));
        if (at_ != tokens_.size()) refuse();
        return terms;
    }

  private:
    [[noreturn]] void refuse() const { throw PlatformError(errors::kInternal, "no criteria: " + std::string(text_)); }

    const Token& take() {
        if (at_ >= tokens_.size()) refuse();
        return tokens_[at_++];
    }

    bool takeIf(std::string_view word) {
        if (at_ >= tokens_.size() || !tokens_[at_].is(word)) return false;
        ++at_;
        return true;
    }

    Criteria::Term term() {
        Criteria::Term term{fieldNamed(), comparison(), Null{}};
        if (term.comparison == Comparison::IsNull || term.comparison == Comparison::IsNotNull) return term;
        term.value = literal();
        const FieldDef& field = fields_[static_cast<std::size_t>(term.field)];
        // Numbers compare as they are: 7.5 must not become 8 for a whole-number field.
        if (!isNumber(field.type) || !std::holds_alternative<double>(term.value)) {
            fitToKey(field, term.value, locale_);
        }
        return term;
    }

    static bool isNumber(FieldType type) { return type >= FieldType::Byte && type <= FieldType::Double; }

    int fieldNamed() {
        const Token& token = take();
        if (!token.isName()) refuse();
        return requiredOrdinal(fields_, token.text);
    }

    Comparison comparison() {
        const Token& token = take();
        const auto found = std::find_if(std::begin(kOperators), std::end(kOperators),
                                        [&](const auto& row) { return !row.symbol.empty() && token.is(row.symbol); });
        if (found == std::end(kOperators)) refuse();
        if (found->comparison != Comparison::IsNull) return found->comparison;
        const bool negated = takeIf("NOT");
        if (!takeIf("NULL")) refuse();
        return negated ? Comparison::IsNotNull : Comparison::IsNull;
    }

    Value literal() {
        const bool negative = takeIf("-");
        const Token& token = take();
        if (token.kind == Token::Kind::Number) return number(token.text, negative);
        if (negative) refuse();
        if (token.kind == Token::Kind::Text) return token.text;
        if (token.kind == Token::Kind::Date) return date(token.text);
        if (token.is("TRUE")) return true;
        if (token.is("FALSE")) return false;
        if (token.is("NULL")) return Null{};
        refuse();
    }

    Value number(const std::string& digits, bool negative) const {
        double parsed = 0;
        const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), parsed);
        if (result.ec != std::errc() || result.ptr != digits.data() + digits.size()) refuse();
        return negative ? -parsed : parsed;
    }

    Value date(const std::string& text) const {
        if (const auto parsed = Date::fromIso(text)) return *parsed;
        if (const auto parsed = locale_.parseDate(text)) return *parsed;
        refuse();
    }

    std::string_view text_;
    std::vector<Token> tokens_;
    const std::vector<FieldDef>& fields_;
    const Locale& locale_;
    std::size_t at_ = 0;
};

bool meets(int order, Comparison comparison) {
    switch (comparison) {
        case Comparison::Equal:
            return order == 0;
        case Comparison::Unequal:
            return order != 0;
        case Comparison::Less:
            return order < 0;
        case Comparison::LessOrEqual:
            return order <= 0;
        case Comparison::Greater:
            return order > 0;
        case Comparison::GreaterOrEqual:
            return order >= 0;
        default:
            return false;
    }
}

bool meets(const Value& value, const Criteria::Term& term) {
    if (term.comparison == Comparison::IsNull) return isNull(value);
    if (term.comparison == Comparison::IsNotNull) return !isNull(value);
    return !isNull(value) && !isNull(term.value) && meets(compareValues(value, term.value), term.comparison);
}

}  // namespace

Criteria Criteria::parse(std::string_view text, const std::vector<FieldDef>& fields, const Locale& locale) {
    Criteria criteria;
    criteria.terms_ = Parser(text, fields, locale).parse();
    return criteria;
}

bool Criteria::metBy(const std::vector<Value>& record) const {
    return std::all_of(terms_.begin(), terms_.end(),
                       [&](const Term& term) { return meets(record[static_cast<std::size_t>(term.field)], term); });
}

std::string_view operatorText(Criteria::Comparison comparison) {
    return std::find_if(std::begin(kOperators), std::end(kOperators),
                        [&](const auto& row) { return row.comparison == comparison; })
        ->text;
}

}  // namespace kolmera
