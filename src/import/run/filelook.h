#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "import/run/filefact.h"
#include "platform/encodings.h"
#include "platform/filesample.h"
#include "platform/locale.h"

namespace kolmera {

/// A file is looked at record by record for so many bytes.
inline constexpr std::uint64_t kLookedAt = 4'194'304;

/// Empty, or no text at all: then nothing else needs to be seen.
std::optional<FileFact> factOfBeginning(const FileSample& sample, CodePage page);
Utf8Count allLetters(const FileSample& sample);
/// UTF-8 is garbage when it stands in what the run reads; how often it does is in `read`.
void addUtf8Facts(const FileSample& sample, const Utf8Count& read, bool readsFirstBytes, CodePage page,
                  FileFacts& facts);
/// Of a file that is read by lines. `isRecord` as in LineEnds.
void addLineEndFacts(const FileSample& sample, const std::function<bool(std::string_view)>& isRecord, FileFacts& facts);
[[nodiscard]] bool has(const FileFacts& facts, FileLook look);

/// The other of the two locales.
Locale otherLocale(const Locale& locale);
/// How a locale writes twelve and a half.
std::string numberForm(const Locale& locale);

}  // namespace kolmera
