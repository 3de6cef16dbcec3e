#pragma once

#include <QDialog>

#include "history/runfolder.h"
#include "history/runlist.h"
#include "ui/program.h"

class QComboBox;
class QLabel;
class QPushButton;
class QTableView;

namespace kolmera {

/// The past runs of the data folder, by company: what each did, to be shown, taken back or forgotten.
class RunsWindow final : public QDialog {
  public:
    RunsWindow(Program& program, QWidget* parent);
    ~RunsWindow() override;

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    class Model;
    void buildControls();
    void layOut();
    void setSizes();
    void widen(RunList::Column column);
    void widenShortColumns();
    void fill();
    void choose();
    void present();
    [[nodiscard]] int currentRow() const;
    void showRun();
    void compare();
    void undo();
    void remove();

    Program& program_;
    RunFolder folder_;
    RunList runs_;
    std::int64_t unreadable_ = 0;
    Model* model_;
    QComboBox* company_;
    QTableView* list_;
    QLabel* remark_;
    QPushButton *show_, *compare_, *undo_, *remove_, *close_;
};

}  // namespace kolmera
