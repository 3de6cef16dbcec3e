#pragma once

#include <QDialog>
#include <filesystem>
#include <vector>

#include "registers/registereditor.h"
#include "ui/program.h"

class QComboBox;
class QLabel;
class QPushButton;
class QTreeWidget;

namespace kolmera {

/// A file and the register that it is read into: which of its columns is which, what would be written, and why rows are
/// refused. Only what has been looked at is written. Closes when the file has been read.
class ImportWindow final : public QDialog {
  public:
    ImportWindow(Program& program, RegisterEditor& editor, std::filesystem::path file, FileColumns columns,
                 QWidget* parent);

  private:
    void buildControls();
    void layOut();
    void fillColumns(const FileColumns& columns);
    void present();
    void tryOut();
    void write();
    bool read(bool tryOut);
    void showTold();
    [[nodiscard]] std::vector<int> bound() const;

    Program& program_;
    RegisterEditor& editor_;
    std::filesystem::path file_;
    RegisterEditor::Told told_;
    std::vector<QComboBox*> choices_;
    QTreeWidget *columns_, *refused_;
    QLabel *result_, *refusedLabel_;
    QPushButton *try_, *write_, *cancel_;
};

}  // namespace kolmera
