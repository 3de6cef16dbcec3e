#pragma once

#include <string>
#include <vector>

#include "lang/languagetexts.h"
#include "platform/engine/database.h"

namespace kolmera {

/// A line for everything that a repair has left out or changed, as far as it can be known.
std::vector<std::string> repairLosses(LanguageTexts& texts, const RepairReport& report);

/// What a message says after a repair.
std::string repairText(LanguageTexts& texts, const RepairReport& report);

}  // namespace kolmera
