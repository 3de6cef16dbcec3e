#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/jobfile.h"
#include "definitions/maskfile.h"

namespace kolmera {

/// "NAME (WORD)", or "NAME (WORD 2)" and so on: the first that is not taken, letter case not counting. Within `length`
/// characters.
std::string nameOfCopy(std::string_view name, std::string_view word, const std::vector<std::string>& taken, int length);

/// Makes another mask like that one under a name of its own, and returns its number. Throws PlatformError.
int copyMask(const std::filesystem::path& dataFolder, const WholeMask& mask, std::string_view word);

/// Makes another job like the one that was shown, with its source and its limits, under a name of its own; with
/// `withMask` it gets a copy of the mask, too, so that changing it leaves the other job alone. `word` stands behind the
/// names ("kopia"). Returns the number of the new job. Throws PlatformError.
int copyJob(const std::filesystem::path& dataFolder, const Job& shown, bool withMask, std::string_view word);

}  // namespace kolmera
