#include "platform/engine/statementtext.h"

#include <algorithm>

#include "platform/digits.h"
#include "platform/engine/sqlitenames.h"
#include "platform/error.h"
#include "platform/lettercase.h"

namespace kolmera {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

/// Letters (every byte above ASCII belongs to one), digits and "_".
bool isWordCharacter(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

class Cutter {
  public:
    explicit Cutter(std::string_view source) : source_(source) {}

    std::vector<Token> cut() {
        while (skipBlanks()) cutOne();
        return std::move(found_);
    }

  private:
    bool skipBlanks() {
        while (at_ < source_.size() && isBlank(source_[at_])) ++at_;
        return at_ < source_.size();
    }

    char peek(std::size_t ahead = 0) const { return at_ + ahead < source_.size() ? source_[at_ + ahead] : '\0'; }

    void cutOne() {
        const std::size_t begin = at_;
        Token token{Token::Kind::Symbol, std::string(), begin, begin};
        const char c = peek();
        if (c == '\'' || c == '"') {
            token.kind = Token::Kind::Text;
            token.text = enclosed(c);
        } else if (c == '[') {
            token.kind = Token::Kind::Name;
            token.text = enclosed(']');
        } else if (c == '#') {
            token.kind = Token::Kind::Date;
            token.text = enclosed('#');
        } else if (isWordCharacter(c) || (c == '.' && isDigit(peek(1)))) {
            token.kind = cutWordOrNumber();
            token.text = std::string(source_.substr(begin, at_ - begin));
        } else {
            at_ += symbolLength();
            token.text = std::string(source_.substr(begin, at_ - begin));
        }
        token.end = at_;
        found_.push_back(std::move(token));
    }

    /// The text up to a closing character, which doubled stands for itself; to the end when it is missing.
    std::string enclosed(char close) {
        std::string text;
        for (++at_; at_ < source_.size(); ++at_) {
            if (source_[at_] != close) {
                text += source_[at_];
            } else if (peek(1) == close && close != '#') {
                text += source_[at_++];
            } else {
                ++at_;
                break;
            }
        }
        return text;
    }

    Token::Kind cutWordOrNumber() {
        const std::size_t begin = at_;
        while (isWordCharacter(peek())) ++at_;
        const std::string_view word = source_.substr(begin, at_ - begin);
        const bool digits = std::all_of(word.begin(), word.end(), isDigit);
        const bool power = !word.empty() && isDigit(word.front()) && (word.back() == 'e' || word.back() == 'E') &&
                           std::all_of(word.begin(), word.end() - 1, isDigit);
        if (!digits && !power) return isNumberWithPower(word) ? Token::Kind::Number : Token::Kind::Word;
        if (digits && peek() == '.') {
            ++at_;
            while (isDigit(peek()) || peek() == 'e' || peek() == 'E') ++at_;
        }
        const char last = source_[at_ - 1];
        if ((last == 'e' || last == 'E') && (peek() == '+' || peek() == '-')) {
            ++at_;
            while (isDigit(peek())) ++at_;
        }
        return Token::Kind::Number;
    }

    /// "1e5".
    static bool isNumberWithPower(std::string_view word) {
        const std::size_t power = word.find_first_not_of("0123456789");
        if (power == 0 || power == std::string_view::npos || (word[power] | 0x20) != 'e') return false;
        return std::all_of(word.begin() + static_cast<std::ptrdiff_t>(power) + 1, word.end(), isDigit);
    }

    std::size_t symbolLength() const {
        static constexpr std::string_view kPairs[] = {"<=", ">=", "<>", "!=", "==", "||"};
        const std::string_view two = source_.substr(at_, 2);
        return std::find(std::begin(kPairs), std::end(kPairs), two) != std::end(kPairs) ? 2 : 1;
    }

    std::string_view source_;
    std::size_t at_ = 0;
    std::vector<Token> found_;
};

std::string dateLiteral(const std::string& text, const Locale& locale) {
    auto date = Date::fromIso(text);
    if (!date) date = locale.parseDate(text);
    if (!date) throw PlatformError(errors::kWrongType, "#" + text + "# is no date");
    return textLiteral(date->iso());
}

/// Words of plain ASCII letters are left to SQLite, which compares them without regard to case itself; quoting them
/// could turn a keyword into a name.
bool needsLookup(const Token& token) {
    const std::string& text = token.text;
    return token.kind == Token::Kind::Name || isDigit(text.front()) ||
           std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

std::string nameText(const Token& token, const NameLookup& exactName) {
    if (token.text.empty() || !needsLookup(token)) return token.text;
    if (const auto exact = exactName(token.text)) return identifier(*exact);
    return identifier(token.text);
}

}  // namespace

bool Token::is(std::string_view word) const {
    return (kind == Kind::Word || kind == Kind::Symbol) && equalNoCase(text, word);
}

std::vector<Token> tokens(std::string_view statement) { return Cutter(statement).cut(); }

std::string textLiteral(std::string_view text) {
    std::string result = "'";
    for (const char c : text) {
        if (c == '\'') result += c;
        result += c;
    }
    return result += '\'';
}

std::string translated(std::string_view statement, const Locale& locale, const NameLookup& exactName) {
    std::string result;
    std::size_t copied = 0;
    for (const Token& token : tokens(statement)) {
        result += statement.substr(copied, token.begin - copied);
        copied = token.end;
        if (token.kind == Token::Kind::Text) {
            result += textLiteral(token.text);
        } else if (token.kind == Token::Kind::Date) {
            result += dateLiteral(token.text, locale);
        } else if (token.isName()) {
            result += nameText(token, exactName);
        } else {
            result += token.text;
        }
    }
    return result += statement.substr(copied);
}

}  // namespace kolmera
