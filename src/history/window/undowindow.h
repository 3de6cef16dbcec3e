#pragma once

#include <QDialog>
#include <string>

#include "ui/program.h"

namespace kolmera {

/// What has been taken back, and what stays.
class UndoWindow final : public QDialog {
  public:
    /// `kept` has a line or more for each row that stays; empty where none does.
    UndoWindow(Program& program, const std::string& outcome, const std::string& kept, QWidget* parent);
};

/// Asks, and takes a run of the record folder back; tells what was done and what stays. False when nothing was done.
bool takeBack(Program& program, QWidget* parent, const std::string& run);

}  // namespace kolmera
