#pragma once

#include <QDialog>
#include <vector>

#include "definitions/limitseditor.h"
#include "ui/program.h"

class QLineEdit;

namespace kolmera {

/// What a run of a job may change without asking: a field a limit, empty where there is none.
class LimitsWindow final : public QDialog {
  public:
    LimitsWindow(Program& program, const Limits& limits, QWidget* parent);

    /// What was agreed to.
    [[nodiscard]] Limits limits() const { return editor_.limits(); }

  private:
    void reject() override;
    void agree();

    Program& program_;
    LimitsEditor editor_;
    std::vector<LimitsEditor::Row> asItCame_;
    std::vector<QLineEdit*> fields_;
};

}  // namespace kolmera
