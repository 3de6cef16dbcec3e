#pragma once

#include <QFrame>
#include <functional>

#include "import/run/runresult.h"
#include "ui/program.h"

class QLabel;
class QPushButton;
class QToolButton;

namespace kolmera {

/// The part of the main window that says what the last run did, until the user closes it or the next run begins.
class ResultPanel final : public QFrame {
  public:
    ResultPanel(Program& program, QWidget* parent);

    std::function<void()> onShowChanges;  ///< the user wants to see what the run changed

    /// `recorded`: there is a record of its changes to be shown.
    void tell(const RunResult& result, bool recorded);

  private:
    QLabel *icon_, *heading_, *figures_;
    QPushButton* changes_;
    QToolButton* close_;
};

}  // namespace kolmera
