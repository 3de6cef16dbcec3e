#include "definitions/savemessages.h"

#include <fmt/format.h>

#include "lang/errortext.h"
#include "lang/keys/definitions.h"
#include "lang/keys/files.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

std::string apart(std::string_view characters) {
    std::string text;
    while (!characters.empty()) {
        const std::string_view first = firstCharacters(characters, 1);
        text.append(text.empty() ? "" : " ").append(first);
        characters.remove_prefix(first.size());
    }
    return text;
}

}  // namespace

std::string whyNotStored(std::string_view typed, int width, LanguageTexts& texts) {
    const std::string text = composed(trimmed(typed));
    const std::string lacking = lackingCharacters(text, CodePage::Windows1252);
    if (!lacking.empty()) return texts.ModulTextMed(text::definitions::kUnsavableCharacters, apart(lacking));
    if (characterCount(text) <= static_cast<std::size_t>(width)) return {};
    return texts.ModulTextMed(text::files::kTextTooLong, std::to_string(width));
}

void tellNotSaved(const PlatformError& error, const RefusalTexts& refusals, LanguageTexts& texts, MessageBoxes& boxes) {
    const std::string title = texts.ModulText(text::files::kCannotSave);
    const auto tell = [&](const std::string& text) { boxes.MeddelandeVarning(text, title); };
    switch (error.number()) {
        case errors::kChangedElsewhere:
            return tell(texts.ModulTextMed(refusals.changedElsewhere, refusals.name));
        case errors::kDuplicateKey:
            return tell(texts.ModulTextMed(refusals.nameTaken, refusals.name));
        case errors::kLocked:
            return tell(texts.ModulText(text::definitions::kBeingChanged));
        default:
            return tell(fmt::format("{}.\r\n\r\n{}", title, errorText(texts, error)));
    }
}

}  // namespace kolmera
