#pragma once

#include <string>
#include <string_view>

#include "lang/languagetexts.h"
#include "platform/error.h"
#include "startup/messageboxes.h"

namespace kolmera {

/// Why a typed text cannot be stored in a field of that many characters, for the user; empty when it can.
std::string whyNotStored(std::string_view typed, int width, LanguageTexts& texts);

/// What a window says when its change is refused because another program has changed the same, or the name is taken:
/// numbers of texts of the program's own module, each with a <VAR1> for `name`.
struct RefusalTexts {
    int changedElsewhere = 0;
    int nameTaken = 0;
    std::string name;
};
/// Tells the user why a definition was not saved or removed.
void tellNotSaved(const PlatformError& error, const RefusalTexts& refusals, LanguageTexts& texts, MessageBoxes& boxes);

}  // namespace kolmera
