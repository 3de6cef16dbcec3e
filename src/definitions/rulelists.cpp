#include "definitions/rulelists.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "lang/keys/prismtyp.h"

namespace kolmera {
namespace {

/// Collects entries. Their letters are those of the file in every language, whatever letter the text begins with.
class Entries {
  public:
    explicit Entries(LanguageTexts& texts) : texts_(texts) {}

    void add(char letter, FormKey text) { entries_.push_back({letter, texts_.FormulärSträng(text)}); }
    /// "2 - text 2": a numbered entry.
    void addNumbered(char letter, FormKey text, std::string_view end) {
        entries_.push_back({letter, fmt::format("{} - {}{}", letter, texts_.FormulärSträng(text), end)});
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
        entries.add('U', text::prismtyp::kAlways);
        if (target.numeric() && target.priceLevel()) {
            entries.addNumbered('1', text::prismtyp::kWithVat, " 1");
            entries.addNumbered('2', text::prismtyp::kWithVat, " 2");
            entries.addNumbered('3', text::prismtyp::kWithVat, " 3");
        }
        entries.add('S', target.numeric() ? text::prismtyp::kIfZero : text::prismtyp::kIfEmpty);
    }
    entries.add('I', text::prismtyp::kNever);
    return entries.take();
}

RuleEntries divisions(const Target& target, LanguageTexts& texts) {
    Entries entries(texts);
    if (target.code == 0) {
        entries.add('I', text::prismtyp::kNotImported);
    } else if (target.keyCapable()) {
        entries.add('S', text::prismtyp::kSearchKey);
        entries.add('I', text::prismtyp::kNoSearchKey);
    } else if (target.floating()) {
        entries.add('I', text::prismtyp::kNoDivision);
        entries.addNumbered('1', text::prismtyp::kDivideBy, "10");
        entries.addNumbered('2', text::prismtyp::kDivideBy, "100");
        entries.addNumbered('3', text::prismtyp::kDivideBy, "1000");
    } else {
        entries.add('I', text::prismtyp::kNoDiscountCode);
        entries.add('R', text::prismtyp::kDiscountCode);
    }
    return entries.take();
}

int placeOf(const RuleEntries& entries, char letter) {
    const auto found = std::ranges::find(entries, letter, &RuleEntry::letter);
    return found == entries.end() ? -1 : static_cast<int>(found - entries.begin());
}

}  // namespace kolmera
