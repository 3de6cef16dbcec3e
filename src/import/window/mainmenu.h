#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "ui/program.h"

class QAbstractButton;
class QAction;
class QKeySequence;
class QMenu;
class QMenuBar;

namespace kolmera {

/// The menus of the main window: all that its buttons do, and what has no button.
class MainMenu {
  public:
    /// The buttons of the window that are commands, too.
    struct Buttons {
        QAbstractButton &ny, &öppna, &taBort, &utför, &förhandsgranska, &rabattbrev, &tidigare, &avsluta;
    };
    /// What has no button.
    struct Acts {
        std::function<void()> copyJob, readOtherFile, copyRow, search, saveTemplate, openTemplate, guide, about,
            otherFolder, products, registers, accessFile;
        std::function<void(const std::filesystem::path&)> openFolder;
        std::function<void(const std::string& language)> speak;
    };

    MainMenu(Program& program, QWidget& form, const Buttons& buttons, Acts acts);

    [[nodiscard]] QMenuBar* bar() const { return bar_; }
    /// The commands that are about a job, for the menu of the list.
    [[nodiscard]] const std::vector<QAction*>& aboutJob() const { return aboutJob_; }
    /// The captions in the language of the program; called when the form is translated.
    void name();
    /// What the selected job allows; nothing while a run is on.
    void present(bool running, bool canRun, bool canCopy);

  private:
    QMenu* menu(const char* name, const char* caption);
    QAction* action(QMenu& menu, const char* name, const char* caption, const QKeySequence& key,
                    const std::function<void()>& act);
    void fillFile(const Buttons& buttons);
    void fillJob(const Buttons& buttons);
    void fillRest(const Buttons& buttons);
    void giveIcons();
    void addRecent();
    void addLanguages(QMenu& menu);

    Program& program_;
    QWidget& form_;
    Acts acts_;
    QMenuBar* bar_;
    QMenu *recent_, *language_;
    QAction *copyJob_, *otherFile_, *copyRow_, *search_, *saveTemplate_, *guide_, *products_, *registers_;
    std::vector<QAction*> aboutJob_, restful_;  ///< the latter are not to be had during a run
};

}  // namespace kolmera
