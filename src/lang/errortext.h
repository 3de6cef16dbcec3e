#pragma once

#include <string>

#include "lang/languagetexts.h"
#include "platform/error.h"

namespace kolmera {

/// What an error is, in the user's language: the sentence of its number (of errno, for an error of the system), what it
/// is about behind a colon, a full stop, and the words of a driver or server between parentheses. An error that has no
/// sentence is told in the words it came with. `texts.originalWords()` hears of it.
[[nodiscard]] std::string errorText(LanguageTexts& texts, const PlatformError& error);

/// For whoever looks into it: the number of an error, errno, and the words that it came with.
[[nodiscard]] std::string originalText(const PlatformError& error);

}  // namespace kolmera
