#pragma once

#include <string>
#include <string_view>

#include "import/run/filefact.h"
#include "import/run/runport.h"
#include "lang/languagetexts.h"
#include "platform/locale.h"

namespace kolmera {

/// What the user is told of a fact, in one sentence or two.
std::string factText(LanguageTexts& texts, const FileFact& fact, const Locale& locale);

/// What the user is told of a price file that is not what the run expects. `emptied` is the company whose products are
/// deleted first; empty when none are.
DoubtfulFile doubtfulFile(LanguageTexts& texts, const FileFacts& facts, std::string_view priceFile,
                          std::string_view emptied, const Locale& locale);

}  // namespace kolmera
