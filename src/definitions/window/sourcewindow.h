#pragma once

#include <QDialog>

#include "definitions/sourceeditor.h"
#include "ui/program.h"

class QCheckBox;
class QFormLayout;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QPushButton;
class QTableWidget;

namespace kolmera {

/// What the price file of a job is: what was found, in words and as properties that can be corrected, the first hundred
/// rows, and three readings side by side where the character set is not sure.
class SourceWindow final : public QDialog {
  public:
    /// `converts`: the job keeps such a format, and its file is converted before the mask reads it.
    SourceWindow(Program& program, SourceEditor& editor, bool converts, QWidget* parent);

    /// What was agreed to: convert the file, or let the mask read it as it is.
    [[nodiscard]] bool converts() const;

  private:
    void build();
    void layOut();
    void present();
    void presentProperties();
    void presentRows();
    void presentDecodings();
    QWidget* box(const SourceEditor::Property& property);
    void later(std::function<void()> change);

    Program& program_;
    SourceEditor& editor_;
    QLabel* ord_;
    QCheckBox* omvandla_;
    QWidget* egenskaper_;
    QTableWidget* rader_;
    QLabel* lblRader_;
    QGroupBox* tolkningar_;
    QPushButton *ok_, *avbryt_;
};

}  // namespace kolmera
