#pragma once

#include <string>
#include <vector>

#include "definitions/targetlist.h"
#include "lang/languagetexts.h"

namespace kolmera {

/// One choice of a rule: what is shown, and the letter that the file holds for it. The Swedish text begins with that
/// letter; in other languages it begins with another, and the file's letter stays.
struct RuleEntry {
    char letter;
    std::string text;
};

using RuleEntries = std::vector<RuleEntry>;

/// The update rules (`TypKod`) that a target can have.
RuleEntries updateRules(const Target& target, LanguageTexts& texts);
/// The second rules (`Division`): search key, discount code or implied decimals, as the target asks for.
RuleEntries divisions(const Target& target, LanguageTexts& texts);

/// Place of the entry with that letter, -1 when it is not offered.
int placeOf(const RuleEntries& entries, char letter);

}  // namespace kolmera
