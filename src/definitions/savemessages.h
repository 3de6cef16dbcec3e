#pragma once

#include <string>
#include <string_view>

#include "lang/languagetexts.h"
#include "platform/error.h"
#include "startup/messageboxes.h"

namespace kolmera {

/// Why a typed text cannot be stored in a field of that many characters, for the user; empty when it can.
std::string whyNotStored(std::string_view typed, int width, LanguageTexts& texts);

/// What a window says when its change is refused because another program has changed the same, or the name is taken;
/// each text has a <VAR1> for `name`.
struct RefusalTexts {
    ModuleKey changedElsewhere;
    ModuleKey nameTaken{};
    std::string name;
};
/// Tells the user why a definition was not saved or removed.
void tellNotSaved(const PlatformError& error, const RefusalTexts& refusals, LanguageTexts& texts, MessageBoxes& boxes);

}  // namespace kolmera
