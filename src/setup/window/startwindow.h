#pragma once

#include <QDialog>
#include <filesystem>
#include <optional>

#include "ui/program.h"

class QCommandLinkButton;
class QListWidget;
class QPushButton;

namespace kolmera {

/// Where a session is to begin.
struct StartAnswer {
    std::filesystem::path dataFolder;  ///< empty: the program's own folder
};

/// Lets the user choose what to work on: the demo, a new data folder with its company, one that is there, or one of
/// those that were opened before. `ownFolder` offers the program's own folder, too.
class StartWindow final : public QDialog {
  public:
    StartWindow(Program& program, bool ownFolder, QWidget* parent);

    [[nodiscard]] const std::optional<StartAnswer>& answer() const { return answer_; }

  private:
    QCommandLinkButton* choice(const char* name, const char* caption, const std::string& description);
    void buildControls(bool ownFolder);
    void layOut();
    void tryDemo();
    void makeNew();
    void openExisting();
    void choose(const std::filesystem::path& folder);
    void openRecent();

    Program& program_;
    std::optional<StartAnswer> answer_;
    QCommandLinkButton *demo_, *new_, *existing_, *own_;
    QListWidget* recent_;
    QPushButton* cancel_;
};

/// Makes the demo of this user when it is not there yet, and answers where it is. Throws PlatformError.
std::filesystem::path demoFolder(Program& program);

/// Asks for the data folder to work on; nothing when the user thinks better of it.
std::optional<StartAnswer> askWhereToStart(Program& program, bool ownFolder, QWidget* parent);

}  // namespace kolmera
