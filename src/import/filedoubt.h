#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/maskfile.h"
#include "import/filefact.h"
#include "import/runport.h"
#include "lang/languagetexts.h"
#include "platform/locale.h"

namespace kolmera {

/// What the user is told of a fact, in one sentence or two.
std::string factText(LanguageTexts& texts, const FileFact& fact, const Locale& locale);

/// What the user is told of a price file that is not what the run expects. `emptied` is the company whose products are
/// deleted first; empty when none are.
DoubtfulFile doubtfulFile(LanguageTexts& texts, const FileFacts& facts, std::string_view priceFile,
                          std::string_view emptied, const Locale& locale);

/// What a run through a mask would read wrongly of a sample file, each in a sentence or two; nothing of a sample that
/// cannot be read.
std::vector<std::string> misreadSample(LanguageTexts& texts, const Mask& mask, const std::vector<Relation>& relations,
                                       const std::filesystem::path& sample);

}  // namespace kolmera
