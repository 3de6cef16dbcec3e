#pragma once

#include <QDialog>
#include <map>
#include <string>

#include "registers/registereditor.h"
#include "ui/program.h"

class QLineEdit;
class QPushButton;

namespace kolmera {

/// The fields of one row of a register. Closes when the row has been saved.
class RowWindow final : public QDialog {
  public:
    RowWindow(Program& program, RegisterEditor& editor, RegisterRow row, bool isNew, QWidget* parent);

    void reject() override;

  private:
    void buildFields();
    void save();
    [[nodiscard]] bool isChanged() const;
    [[nodiscard]] std::map<int, std::string> texts() const;

    Program& program_;
    RegisterEditor& editor_;
    RegisterRow row_;
    bool new_;
    std::map<int, QLineEdit*> fields_;
    std::map<int, std::string> before_;
    QPushButton *save_, *cancel_;
};

}  // namespace kolmera
