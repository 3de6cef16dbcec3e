#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "import/run/runsummary.h"
#include "lang/languagetexts.h"

namespace kolmera {

/// What a run has to tell when it is done, of each kind so many examples; empty when all records were used as they
/// stand.
std::string runMessage(LanguageTexts& texts, const RunSummary& summary, std::string_view priceFile,
                       std::size_t examples);

/// Why records were skipped, a line a reason, the codes that are not coupled by name.
std::vector<std::string> skipReasons(LanguageTexts& texts, const RunReport& report);

}  // namespace kolmera
