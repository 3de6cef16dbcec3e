#pragma once

#include <QDialog>
#include <functional>
#include <memory>
#include <vector>

#include "history/comparisonlist.h"
#include "history/runfolder.h"
#include "ui/filedialogs.h"
#include "ui/program.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;
class QTimer;

namespace kolmera {

/// Which articles came to a supplier's price file, and which left it, from an earlier run of a job to another one.
class CompareWindow final : public QDialog {
  public:
    /// `earlier` are the runs to compare with, the newest first; there is one at least.
    CompareWindow(Program& program, const RunFolder& folder, RunHeader run, std::vector<RunHeader> earlier,
                  QWidget* parent);
    ~CompareWindow() override;

    /// Asks for the file to save to; an empty answer is Cancel.
    std::function<QString(const FileQuestion& question)> fileToWrite;

  private:
    class Model;
    struct Compared;
    void buildControls();
    void connectKeys();
    void layOut();
    void setSizes();
    void compare();
    void nameKinds();
    void filter();
    void present();
    void sortByCurrentColumn();
    void copy();
    void save();
    [[nodiscard]] std::string runText(const RunHeader& run) const;

    Program& program_;
    const RunFolder& folder_;
    RunHeader run_;
    std::vector<RunHeader> earlier_;
    std::unique_ptr<Compared> compared_;
    Model* model_;
    QLabel* origin_;
    QComboBox *with_, *kind_;
    QLineEdit* filter_;
    QLabel *remark_, *count_;
    QTableView* list_;
    QPushButton *copy_, *save_, *close_;
    QTimer* typing_;
};

/// Opens the window over a run of the folder; tells where there is no earlier run of the same job to compare with.
void compareRun(Program& program, QWidget* parent, const RunFolder& folder, const RunHeader& run,
                const std::vector<RunHeader>& runs);

}  // namespace kolmera
