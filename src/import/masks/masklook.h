#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "definitions/maskfile.h"
#include "import/masks/loadedmask.h"
#include "import/run/filelook.h"
#include "lang/languagetexts.h"
#include "platform/engine/recordset.h"
#include "platform/locale.h"

namespace kolmera {

/// The entries that a mask reads into number columns of the product table, search key apart.
std::vector<Source> numberSources(const LoadedMask& mask, const std::vector<FieldDef>& columns);

/// Looks at a file that is going to be read through a mask. Nothing is read of pipes and devices. Throws PlatformError.
FileFacts lookThroughMask(const std::filesystem::path& file, const LoadedMask& mask, const std::vector<Source>& numbers,
                          const Locale& locale);

/// What a run through a mask would read wrongly of a sample file, each in a sentence or two; nothing of a sample that
/// cannot be read.
std::vector<std::string> misreadSample(LanguageTexts& texts, const Mask& mask, const std::vector<Relation>& relations,
                                       const std::filesystem::path& sample);

}  // namespace kolmera
