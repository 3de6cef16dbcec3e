#include "import/window/prisutfo.h"

#include "lang/keys/prisutfo.h"

namespace kolmera {

PrisUtfö::PrisUtfö(Program& program, const Confirmation& confirmation, QWidget* parent)
    : ConfirmationForm(program, "PrisUtfö", {text::prisutfo::kAskToEmpty, text::prisutfo::kEmptyTitle}, confirmation,
                       parent) {
    load(confirmation);
}

}  // namespace kolmera
