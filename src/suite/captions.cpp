#include "suite/captions.h"

#include <QWidget>

#include "ui/qttext.h"
#include "ui/translation.h"

namespace kolmera {

void SättFormulärRubrik(QWidget& form, LanguageTexts& texts, std::string_view suffix) {
    form.setWindowTitle(toQt(texts.FormulärText(fromQt(form.objectName())).append(suffix)));
}

void SättKontrollText(QWidget& control, LanguageTexts& texts) { SättKontrollTextMed(control, texts, {}); }

void SättKontrollTextMed(QWidget& control, LanguageTexts& texts, std::string_view suffix) {
    const std::string key = "SP_FRM_" + fromQt(control.window()->objectName()) + "_" + fromQt(control.objectName());
    setCaption(control, toQt(texts.SpråkText(key).append(suffix)));
}

}  // namespace kolmera
