#include "definitions/rulelists.h"

#include <algorithm>
#include <span>
#include <utility>

namespace kolmera {
namespace {

constexpr std::string_view kForm = "PrisMTyp";

enum RuleText {
    kNoDivision = 11,
    kDivideBy = 12,
    kNotImported = 15,
    kSearchKey = 20,
    kNoSearchKey = 21,
    kNoDiscountCode = 25,
    kDiscountCode = 26,
    kAlways = 31,
    kIfZero = 32,
    kIfEmpty = 33,
    kNever = 34,
    kWithVat = 35
};

/// Shown letter and stored letter.
using Letters = std::pair<char, char>;
constexpr Letters kTypKodLetters[] = {{'N', 'I'}, {'A', 'U'}, {'W', 'S'}};
constexpr Letters kDivisionLetters[] = {{'N', 'I'}, {'D', 'R'}};

char stored(char shown, std::string_view language, std::span<const Letters> letters) {
    if (language == "SE") return shown;
    const auto found = std::ranges::find(letters, shown, &Letters::first);
    return found == letters.end() ? shown : found->second;
}

/// Collects entries; an entry's letter is read from its text.
class Entries {
  public:
    Entries(LanguageTexts& texts, std::span<const Letters> letters) : texts_(texts), letters_(letters) {}

    void add(int number) { addText(text(number)); }
    void addText(std::string text) {
        const char letter = text.empty() ? ' ' : stored(text.front(), texts_.language(), letters_);
        entries_.push_back({letter, std::move(text)});
    }
    [[nodiscard]] std::string text(int number) { return texts_.FormulärSträng(kForm, number); }
    RuleEntries take() { return std::move(entries_); }

  private:
    LanguageTexts& texts_;
    std::span<const Letters> letters_;
    RuleEntries entries_;
};

}  // namespace

RuleEntries updateRules(const Target& target, LanguageTexts& texts) {
    Entries entries(texts, kTypKodLetters);
    if (target.code > 0) {
        entries.add(kAlways);
        if (target.numeric() && target.priceLevel()) {
            for (const char* rate : {"1", "2", "3"}) {
                entries.addText(std::string(rate) + " - " + entries.text(kWithVat) + " " + rate);
            }
        }
        entries.add(target.numeric() ? kIfZero : kIfEmpty);
    }
    entries.add(kNever);
    return entries.take();
}

RuleEntries divisions(const Target& target, LanguageTexts& texts) {
    Entries entries(texts, kDivisionLetters);
    if (target.code == 0) {
        entries.add(kNotImported);
    } else if (target.keyCapable()) {
        entries.add(kSearchKey);
        entries.add(kNoSearchKey);
    } else if (target.floating()) {
        entries.add(kNoDivision);
        std::string divisor = "1";
        for (const char* letter : {"1", "2", "3"}) {
            divisor += '0';
            entries.addText(std::string(letter) + " - " + entries.text(kDivideBy) + divisor);
        }
    } else {
        entries.add(kNoDiscountCode);
        entries.add(kDiscountCode);
    }
    return entries.take();
}

int placeOf(const RuleEntries& entries, char letter) {
    const auto found = std::ranges::find(entries, letter, &RuleEntry::letter);
    return found == entries.end() ? -1 : static_cast<int>(found - entries.begin());
}

}  // namespace kolmera
