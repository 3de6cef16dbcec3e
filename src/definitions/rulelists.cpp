#include "definitions/rulelists.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace kolmera {
namespace {

constexpr std::string_view kForm = "PrisMTyp";

constexpr int kNoDivision = 11, kDivideBy = 12, kNotImported = 15, kSearchKey = 20, kNoSearchKey = 21,
              kNoDiscountCode = 25, kDiscountCode = 26, kAlways = 31, kIfZero = 32, kIfEmpty = 33, kNever = 34,
              kWithVat = 35;

/// Collects entries. Their letters are those of the file in every language, whatever letter the text begins with.
class Entries {
  public:
    explicit Entries(LanguageTexts& texts) : texts_(texts) {}

    void add(char letter, int number) { entries_.push_back({letter, texts_.FormulärSträng(kForm, number)}); }
    /// "2 - text 2": a numbered entry.
    void addNumbered(char letter, int number, std::string_view end) {
        entries_.push_back({letter, fmt::format("{} - {}{}", letter, texts_.FormulärSträng(kForm, number), end)});
    }
    RuleEntries take() { return std::move(entries_); }

  private:
    LanguageTexts& texts_;
    RuleEntries entries_;
};

}  // namespace

RuleEntries updateRules(const Target& target, LanguageTexts& texts) {
    Entries entries(texts);
    if (target.code > 0) {
        entries.add('U', kAlways);
        if (target.numeric() && target.priceLevel()) {
            entries.addNumbered('1', kWithVat, " 1");
            entries.addNumbered('2', kWithVat, " 2");
            entries.addNumbered('3', kWithVat, " 3");
        }
        entries.add('S', target.numeric() ? kIfZero : kIfEmpty);
    }
    entries.add('I', kNever);
    return entries.take();
}

RuleEntries divisions(const Target& target, LanguageTexts& texts) {
    Entries entries(texts);
    if (target.code == 0) {
        entries.add('I', kNotImported);
    } else if (target.keyCapable()) {
        entries.add('S', kSearchKey);
        entries.add('I', kNoSearchKey);
    } else if (target.floating()) {
        entries.add('I', kNoDivision);
        entries.addNumbered('1', kDivideBy, "10");
        entries.addNumbered('2', kDivideBy, "100");
        entries.addNumbered('3', kDivideBy, "1000");
    } else {
        entries.add('I', kNoDiscountCode);
        entries.add('R', kDiscountCode);
    }
    return entries.take();
}

int placeOf(const RuleEntries& entries, char letter) {
    const auto found = std::ranges::find(entries, letter, &RuleEntry::letter);
    return found == entries.end() ? -1 : static_cast<int>(found - entries.begin());
}

}  // namespace kolmera
