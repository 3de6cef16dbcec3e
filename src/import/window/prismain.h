#pragma once

#include <QWidget>
#include <functional>

#include "definitions/jobtable.h"
#include "import/run/importcontext.h"
#include "platform/date.h"
#include "ui/program.h"

class QPushButton;
class QTreeView;

namespace kolmera {

class JobListModel;
class RunPanel;

/// The main window: the job list and what is done with a job. The process lives until it is closed.
class PrisMain final : public QWidget {
  public:
    explicit PrisMain(Program& program);
    ~PrisMain() override;
    PrisMain(const PrisMain&) = delete;
    PrisMain& operator=(const PrisMain&) = delete;

    /// Reads the job list anew and selects a job: that of the number, or below 1 the one of the last session.
    void FyllJobbLista(int JobbNr);

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void buildControls();
    void buildList();
    void layOut();
    void nameColumns();
    void setSizes();
    void drawIcons();
    void showSelection();
    void present();
    void fill(int JobbNr, const std::string& otherwise);
    [[nodiscard]] bool isAsShown();
    [[nodiscard]] bool addsTradeJobs();
    void ny();
    void öppna();
    void openSettings(int JobbNr, bool ÄrStandardJobb);
    void taBort();
    void utför();
    void förhandsgranska(bool emptyTables);
    void tidigareKörningar();
    void rabattbrev();
    [[nodiscard]] ImportContext context();
    void whileRunning(const std::function<void()>& work);
    [[nodiscard]] bool asksForCommand();

    Program& program_;
    Date Idag_;
    JobTable jobs_;
    bool running_ = false;
    bool closeAfterRun_ = false;

    JobListModel* model_;
    QTreeView* lista_;
    RunPanel* runPanel_;
    QPushButton *ny_, *öppna_, *taBort_, *utför_, *rabattbrev_, *förhandsgranska_, *tidigare_, *avsluta_;
};

}  // namespace kolmera
