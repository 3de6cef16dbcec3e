#include "definitions/signnames.h"

#include "lang/keys/source.h"
#include "lang/keys/sourceeditor.h"

namespace kolmera {

std::string signName(LanguageTexts& texts, const std::string& sign) {
    if (sign.empty() || sign == std::string(1, '\0')) return texts.ModulText(text::source::kNone);
    if (sign == "\t") return texts.ModulText(text::source::kTab);
    if (sign == " ") return texts.ModulText(text::source::kBlank);
    if (sign == "\u00A0") return texts.ModulText(text::source::kHardBlank);
    if (sign == "\u202F") return texts.ModulText(text::sourceeditor::kNarrowBlank);
    return sign;
}

}  // namespace kolmera
