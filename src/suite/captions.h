#pragma once

#include <string_view>

#include "lang/languagetexts.h"

class QWidget;

namespace kolmera {

/// The form's caption from the language texts, with `suffix` behind it.
void SättFormulärRubrik(QWidget& form, LanguageTexts& texts, std::string_view suffix);
/// The control's caption from the language texts.
void SättKontrollText(QWidget& control, LanguageTexts& texts);
/// The same with `suffix` behind it.
void SättKontrollTextMed(QWidget& control, LanguageTexts& texts, std::string_view suffix);

}  // namespace kolmera
