#pragma once

#include <QDialog>
#include <map>
#include <string>

#include "registers/registereditor.h"
#include "registers/window/rowfield.h"
#include "ui/program.h"

class QPushButton;
class QScrollArea;

namespace kolmera {

/// The fields of one row of a register; what is wrong stands at its field. Closes when the row has been saved.
class RowWindow final : public QDialog {
  public:
    RowWindow(Program& program, RegisterEditor& editor, RegisterRow row, bool isNew, QWidget* parent);

    void reject() override;

  private:
    void buildFields();
    void check(int column);
    void save();
    void tell(const std::vector<RegisterEditor::Fault>& faults);
    [[nodiscard]] bool isChanged() const;
    [[nodiscard]] std::map<int, std::string> texts() const;

    Program& program_;
    RegisterEditor& editor_;
    RegisterRow row_;
    bool new_;
    std::map<int, RowField*> fields_;
    std::map<int, std::string> before_;
    QScrollArea* area_ = nullptr;
    QPushButton *save_, *cancel_;
};

}  // namespace kolmera
