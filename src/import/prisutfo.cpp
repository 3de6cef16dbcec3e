#include "import/prisutfo.h"

namespace kolmera {

PrisUtfö::PrisUtfö(Program& program, const Confirmation& confirmation, QWidget* parent)
    : ConfirmationForm(program, "PrisUtfö", confirmation, parent) {
    load(confirmation);
}

}  // namespace kolmera
