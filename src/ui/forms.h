#pragma once

#include "platform/messages.h"
#include "ui/program.h"

class QWidget;

namespace kolmera {

/// What every form does when its controls are made: translates the form, gives lists their label and controls without a
/// label their tool tip as the name that screen readers say, applies the font option, lets F1 open the guide, and
/// Ctrl+C copy the rows of lists.
void loadForm(Program& program, QWidget& form);

/// Shows a form as the user left it, with the hourglass until it stands. A modal one (a QDialog) is closed when this
/// returns; what it answered is asked of the form. False when memory does not suffice, which the user is then told.
bool VisaFormulär(Program& program, QWidget& form, bool modal);

/// With the font option on, the form's controls are written in Tahoma (where it is installed).
void SättTypsnitt(QWidget& form, bool TypsnittTahoma);
void SättTypsnittKontroll(QWidget& control, bool TypsnittTahoma);

/// Asks whether a window may be closed though its changes are not saved.
bool leaveUnsaved(Program& program);

void centreOnScreen(QWidget& form);

}  // namespace kolmera
