#include "definitions/targetsuggestion.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "definitions/targetcodes.h"
#include "platform/date.h"
#include "platform/lettercase.h"
#include "platform/locale.h"

namespace kolmera {
namespace {

using Reason = TargetSuggestion::Reason;

constexpr int kNummer = target("Nummer");
constexpr int kLevartikelnr = target("Levartikelnr");
constexpr int kPrisgrupp = target("Prisgrupp");

bool isDigit(char letter) { return letter >= '0' && letter <= '9'; }
bool allDigits(std::string_view text) { return !text.empty() && std::ranges::all_of(text, isDigit); }
int digitsOf(std::string_view text) {
    int number = 0;
    for (const char digit : text) number = number * 10 + (digit - '0');
    return number;
}

/// Eight digits or three numbers with a sign between; six digits may be anything.
bool isDate(std::string_view text) {
    constexpr int kFirstYear = 1990, kLastYear = 2079;
    if (text.size() == 8 && allDigits(text)) {
        const auto date =
            Date::fromCivil(digitsOf(text.substr(0, 4)), digitsOf(text.substr(4, 2)), digitsOf(text.substr(6)));
        return date && date->year() >= kFirstYear && date->year() <= kLastYear;
    }
    const bool separated = std::ranges::count_if(text, [](char sign) { return sign == '-' || sign == '/'; }) == 2 ||
                           std::ranges::count(text, '.') == 2;
    const bool others = std::ranges::any_of(text, [](char sign) {
        return !isDigit(sign) && std::string_view("-/. ").find(sign) == std::string_view::npos;
    });
    if (!separated || others) return false;
    constexpr std::array kBoth{Locale::Kind::Swedish, Locale::Kind::English};
    return std::ranges::any_of(kBoth, [&](Locale::Kind kind) {
        return Locale(kind).parseDate(text).has_value() ||
               Locale(kind).parseDate(replaceAll(text, ".", "/")).has_value();
    });
}

/// A number with two decimals, in whichever way.
bool isPrice(std::string_view text) {
    const std::size_t sign = text.find_last_of(",.");
    if (sign == std::string_view::npos || sign == 0) return false;
    const std::string_view decimals = text.substr(sign + 1);
    const std::string_view whole = text.substr(0, sign);
    return decimals.size() == 2 && allDigits(decimals) &&
           std::ranges::all_of(whole, [](char letter) { return isDigit(letter) || letter == ' ' || letter == '.'; });
}

class Suggesting {
  public:
    Suggesting(const std::vector<FieldSample>& fields, const SuggestionSurroundings& around)
        : fields_(fields), around_(around), taken_(around.taken), hasKey_(around.hasKey) {}

    std::vector<TargetSuggestion> all() {
        eachField([this](int source, const FieldSample& field) { byHeading(source, field.heading); });
        eachField([this](int source, const FieldSample& field) {
            if (!suggestedFor(source)) byContents(source, field.values);
        });
        giveKey();
        std::ranges::stable_sort(suggestions_, {}, [](const TargetSuggestion& each) {
            return std::pair(each.Division != 'S', each.source);
        });
        return std::move(suggestions_);
    }

  private:
    template <typename Act>
    void eachField(Act act) {
        for (int source = 1; source <= static_cast<int>(fields_.size()); ++source) {
            if (!contains(around_.joined, source)) act(source, fields_[static_cast<std::size_t>(source - 1)]);
        }
    }
    static bool contains(const std::vector<int>& numbers, int number) {
        return std::ranges::find(numbers, number) != numbers.end();
    }
    [[nodiscard]] bool suggestedFor(int source) const {
        return std::ranges::find(suggestions_, source, &TargetSuggestion::source) != suggestions_.end();
    }

    bool add(int source, int code, Reason reason) {
        if (code <= 0 || contains(taken_, code) || around_.targets.row(code) < 0) return false;
        taken_.push_back(code);
        const bool discountCode = code == kPrisgrupp && reason == Reason::Heading;
        suggestions_.push_back({.source = source,
                                .target = code,
                                .TypKod = discountCode ? 'I' : 'U',
                                .Division = discountCode ? 'R' : 'I',
                                .reason = reason});
        return true;
    }

    void byHeading(int source, std::string_view heading) {
        for (const std::string& name : around_.words.targets(heading)) {
            const int code = codeOf(name);
            const bool added = add(source, code, Reason::Heading);
            if (code == kLevartikelnr && around_.makesProducts) add(source, kNummer, Reason::Heading);
            if (added) return;
        }
    }

    [[nodiscard]] int codeOf(std::string_view name) const {
        const bool alternative = name.starts_with(kAlternative);
        if (alternative) name.remove_prefix(kAlternative.size());
        const auto found = std::ranges::find_if(around_.targets.targets, [&](const Target& each) {
            return (headingOf(each.code) != 0) == alternative && equalNoCase(each.name, name);
        });
        return found == around_.targets.targets.end() ? 0 : found->code;
    }

    void byContents(int source, const std::vector<std::string>& values) {
        if (nearlyAll(values, isEan)) {
            add(source, codeOf("alt:EAN"), Reason::CheckDigits);
        } else if (nearlyAll(values, [this](const std::string& value) { return isSupplier(value); })) {
            add(source, target("Leverantör"), Reason::Suppliers);
        } else if (nearlyAll(values, isDate)) {
            add(source, target("Prisändrdat"), Reason::Dates);
        } else if (nearlyAll(values, isPrice)) {
            add(source, target("Inpris"), Reason::Prices);
        }
    }

    /// Of at least three texts nine of ten; a heading and a few slips do not count.
    template <typename Test>
    [[nodiscard]] static bool nearlyAll(const std::vector<std::string>& values, Test test) {
        constexpr std::ptrdiff_t kEnough = 3;
        std::ptrdiff_t texts = 0, good = 0;
        for (const std::string& value : values) {
            const std::string_view text = trimmed(value);
            if (text.empty()) continue;
            ++texts;
            if (test(std::string(text))) ++good;
        }
        return good >= kEnough && good * 10 >= texts * 9;
    }

    /// Short numbers of suppliers are quantities, too.
    [[nodiscard]] bool isSupplier(const std::string& value) const {
        constexpr std::size_t kShortest = 3;
        return value.size() >= kShortest && rowOfSupplier(around_.suppliers, value) >= 0;
    }

    /// The number that products are found by: their own, the supplier's, else an alternative one.
    void giveKey() {
        if (hasKey_) return;
        const auto rank = [](const TargetSuggestion& each) {
            return each.target == kNummer ? 0 : each.target == kLevartikelnr ? 1 : headingOf(each.target) != 0 ? 2 : 3;
        };
        const auto first = std::ranges::min_element(suggestions_, {}, rank);
        if (first != suggestions_.end() && rank(*first) < 3) first->Division = 'S';
    }

    const std::vector<FieldSample>& fields_;
    const SuggestionSurroundings& around_;
    std::vector<int> taken_;
    bool hasKey_;
    std::vector<TargetSuggestion> suggestions_;
};

}  // namespace

bool isEan(std::string_view text) {
    constexpr std::size_t kDigits = 13;
    if (text.size() != kDigits || !allDigits(text)) return false;
    int sum = 0;
    for (std::size_t place = 0; place < kDigits; ++place) sum += (text[place] - '0') * (place % 2 == 0 ? 1 : 3);
    return sum % 10 == 0 && sum != 0;
}

std::vector<TargetSuggestion> suggestTargets(const std::vector<FieldSample>& fields,
                                             const SuggestionSurroundings& around) {
    return Suggesting(fields, around).all();
}

bool areHeadings(const std::vector<std::string>& record, const HeadingWords& words) {
    const auto known = std::ranges::count_if(record, [&](const auto& text) { return !words.targets(text).empty(); });
    return known >= 2 && std::ranges::none_of(record, [](const auto& text) {
               const std::string_view number = trimmed(text);
               return !number.empty() && isDigit(number.front()) && isDigit(number.back());
           });
}

}  // namespace kolmera
