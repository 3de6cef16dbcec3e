#pragma once

#include <QTimer>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>

#include "definitions/firststeps.h"
#include "definitions/jobtable.h"
#include "history/lastruns.h"
#include "import/run/importcontext.h"
#include "platform/date.h"
#include "ui/folderwatch.h"
#include "ui/program.h"

class QComboBox;
class QLabel;
class QPushButton;
class QTreeView;

namespace kolmera {

class FirstStepsPanel;
class JobListModel;
class MainMenu;
class ResultPanel;
class RunPanel;
class SearchBox;

/// What the user wants when the main window has closed: another data folder, or another language.
struct NextWindow {
    std::filesystem::path dataFolder;  ///< empty: the same
    std::string language;              ///< empty: the same
};

/// The main window: the job list and what is done with a job. The process lives until it is closed.
class PrisMain final : public QWidget {
  public:
    explicit PrisMain(Program& program);
    ~PrisMain() override;
    PrisMain(const PrisMain&) = delete;
    PrisMain& operator=(const PrisMain&) = delete;

    /// Reads the job list anew and selects a job: that of the number, or below 1 the one of the last session.
    void FyllJobbLista(int JobbNr);
    /// Nothing: the program is to end.
    [[nodiscard]] const std::optional<NextWindow>& next() const { return next_; }

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void buildControls();
    void buildList();
    void buildSearch();
    void buildMenu();
    void layOut();
    void nameColumns();
    void setSizes();
    void drawIcons();
    void showFirstSteps();
    void openRegisters(std::string_view name = {});
    void showSelection();
    void present();
    void fill(int JobbNr, const std::string& otherwise);
    void showRows(std::vector<JobRow> rows, int JobbNr, const std::string& otherwise);
    [[nodiscard]] std::vector<JobRow> readRows();
    void beginWatching();
    void watchFolders();
    void refresh();
    void readLastRuns();
    void offerCompanies();
    void nameSuppliers();
    [[nodiscard]] bool isAsShown();
    [[nodiscard]] bool addsTradeJobs();
    void ny();
    void öppna();
    void openSettings(int JobbNr, bool ÄrStandardJobb);
    void taBort();
    void duplicera();
    void sparaMall();
    void öppnaMall();
    void läsAnnanFil();
    void askWhatToDoWith(const std::string& otherFile);
    void utför(const std::string& otherFile = {});
    void förhandsgranska(bool emptyTables, const std::string& otherFile = {});
    void visaÄndringar();
    void about();
    void leaveFor(NextWindow next);
    void tidigareKörningar();
    void rabattbrev();
    [[nodiscard]] ImportContext context();
    void whileRunning(const std::function<void()>& work);
    [[nodiscard]] bool asksForCommand();
    [[nodiscard]] bool leavesCommandOut();

    Program& program_;
    Date Idag_;
    JobTable jobs_;
    bool running_ = false;
    bool closeAfterRun_ = false;
    std::optional<NextWindow> next_;
    std::string lastRecord_;  ///< of the run that the result panel tells of
    LastRuns lastRuns_;
    FolderWatch watch_;
    QTimer readsLastRuns_, looks_;

    JobListModel* model_;
    QTreeView* lista_;
    QLabel *searchLabel_, *companyLabel_;
    SearchBox* search_;
    bool suppliersNamed_ = false;
    QComboBox* company_;
    FirstSteps steps_;
    FirstStepsPanel* stepsPanel_;
    ResultPanel* resultPanel_;
    RunPanel* runPanel_;
    std::unique_ptr<MainMenu> menu_;
    QPushButton *ny_, *öppna_, *taBort_, *utför_, *rabattbrev_, *förhandsgranska_, *tidigare_, *avsluta_;
};

}  // namespace kolmera
