#pragma once

#include "import/window/confirmationform.h"

namespace kolmera {

/// Confirms the run of a trade-format job; shows the suppliers that its price file is coupled to.
class PrisUtFa final : public ConfirmationForm {
  public:
    PrisUtFa(Program& program, const Confirmation& confirmation, QWidget* parent);
};

}  // namespace kolmera
