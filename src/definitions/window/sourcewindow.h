#pragma once

#include <QDialog>
#include <functional>

#include "definitions/columneditor.h"
#include "definitions/sourceeditor.h"
#include "ui/program.h"

class QCheckBox;
class QGroupBox;
class QLabel;
class QPushButton;
class QTableWidget;

namespace kolmera {

class PropertyGrid;

/// What the price file of a job is: what was found, in words and as properties that can be corrected, the first hundred
/// rows, and three readings side by side where the character set is not sure.
class SourceWindow final : public QDialog {
  public:
    /// `converts`: the job keeps such a format, and its file is converted before the mask reads it.
    /// `target` is what is read of so many columns.
    SourceWindow(Program& program, SourceEditor& editor, bool converts,
                 std::function<TargetLayout(std::size_t columns)> target, QWidget* parent);

    /// What was agreed to: convert the file, or let the mask read it as it is.
    [[nodiscard]] bool converts() const;

  private:
    void reject() override;
    void build();
    void layOut();
    void present();
    void presentRows();
    void presentDecodings();
    void change(const std::function<void()>& change);
    void editColumns();
    void editLeftOut();

    Program& program_;
    SourceEditor& editor_;
    SourceSettings before_;
    bool convertedBefore_;
    std::function<TargetLayout(std::size_t columns)> target_;
    QLabel* ord_;
    QCheckBox* omvandla_;
    PropertyGrid* egenskaper_;
    QTableWidget* rader_;
    QLabel* lblRader_;
    QGroupBox* tolkningar_;
    QPushButton *kolumner_, *utelämnade_, *ok_, *avbryt_;
};

}  // namespace kolmera
