#pragma once

#include "import/window/confirmationform.h"

namespace kolmera {

/// Confirms the run of a mask job.
class PrisUtfö final : public ConfirmationForm {
  public:
    PrisUtfö(Program& program, const Confirmation& confirmation, QWidget* parent);
};

}  // namespace kolmera
