#pragma once

#include <string_view>

#include "lang/languagetexts.h"

class QString;
class QWidget;

namespace kolmera {

// Texts are found by object names: a form's "PrisMain", a control's "Ny", a member of a control array "Lbl_3" (index
// behind the last "_"). A form is the window (or child widget) whose object name is the form's.

/// Places the language's texts on a form; a form is designed in Swedish, so for "SE" nothing is done. Every form calls
/// it (by `loadForm`) when its controls are made.
void ÖversättFormulär(QWidget& form, LanguageTexts& texts);
/// The form's caption, then the captions and tool tips of its controls that have one. Text boxes are never touched, a
/// missing key leaves the designed text, and texts are placed as stored. Menus and what is in them count as controls.
void ÖversättFormulärAlltid(QWidget& form, LanguageTexts& texts);

/// Shows a text on a control that has a caption.
void setCaption(QWidget& control, const QString& text);

}  // namespace kolmera
