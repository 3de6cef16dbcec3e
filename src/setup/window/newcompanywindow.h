#pragma once

#include <QDialog>
#include <filesystem>

#include "ui/program.h"

class QLineEdit;
class QPushButton;

namespace kolmera {

/// Asks for the name of a new company and for the data folder that is made for it.
class NewCompanyWindow final : public QDialog {
  public:
    NewCompanyWindow(Program& program, QWidget* parent);

    /// The data folder; empty when none was made.
    [[nodiscard]] const std::filesystem::path& made() const { return made_; }

  private:
    void layOut();
    void present();
    void proposeFolder();
    void chooseFolder();
    void make();

    Program& program_;
    std::filesystem::path made_;
    bool folderTyped_ = false;  ///< the folder no longer follows the name
    QLineEdit *name_, *folder_;
    QPushButton *browse_, *create_, *cancel_;
};

}  // namespace kolmera
