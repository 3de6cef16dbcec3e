#pragma once

#include <QDialog>
#include <span>

#include "signin/userfile.h"
#include "ui/program.h"

class QLineEdit;
class QPushButton;

namespace kolmera {

/// The sign-in form. Accepted, it has set `Signatur`; rejected, the user wants to end the program.
class Loggain final : public QDialog {
  public:
    Loggain(Program& program, std::span<const User> users, QWidget* parent = nullptr);

  private:
    void buildControls();
    void layOut();
    void tryTyped();
    void warn(const std::string& text, QLineEdit& field);

    Program& program_;
    std::span<const User> users_;
    QLineEdit *namn_, *lösen_;
    QPushButton *cmdOk_, *cmdAvbryt_;
};

}  // namespace kolmera
