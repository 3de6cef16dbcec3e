#pragma once

#include <gtest/gtest.h>

#include <QDialog>
#include <QString>
#include <QWidget>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "support/temporaryfolder.h"
#include "ui/program.h"

namespace kolmera::test {

/// Answers message boxes from a list; a box for which there is no answer fails the test.
class ScriptedBoxes final : public MessagePort {
  public:
    std::vector<Answer> answers;
    std::vector<std::string> shown;  ///< "title|text" of each box

    Answer show(const Message& message) override;
    void hourglass(bool on) override { waiting = on; }
    void letEventsRun() override;
    bool waiting = false;
};

enum class Data { Empty, Demo };

/// A program with a data folder of the test's own: empty (no files), or the demo company with its jobs, masks and price
/// files. Texts come from the language database that is built beside the programs.
class FormWorld {
  public:
    explicit FormWorld(Data data = Data::Empty, std::string_view language = "SE");
    ~FormWorld();

    TemporaryFolder folder;
    std::filesystem::path data = folder / "data";
    StartState state;
    LanguageTexts texts;
    ScriptedBoxes boxPort;
    MessageBoxes boxes;
    CompanyRegister companies;
    Program program;
};

/// The control of that type and object name; a missing one ends the test. (findChild alone does not tell our own
/// classes apart.)
template <typename Control = QWidget>
Control& control(const QWidget& form, const char* name) {
    for (QWidget* candidate : form.findChildren<QWidget*>(QString::fromUtf8(name))) {
        if (auto* found = dynamic_cast<Control*>(candidate)) return *found;
    }
    throw std::runtime_error(std::string("no control named ") + name);
}

/// Waits, with events running, until the condition holds; false after five seconds.
bool eventually(const std::function<bool()>& condition);

/// Does something to the next modal form of that object name, once it is shown. `act` must close it; a form that is
/// still open afterwards is rejected, and the test fails. The object tells whether the form came.
class WhenShown {
  public:
    WhenShown(const char* form, std::function<void(QDialog& form)> act);
    [[nodiscard]] bool came() const { return *came_; }

  private:
    std::shared_ptr<bool> came_ = std::make_shared<bool>(false);
};

/// Fails for every text of a form that differs from the Swedish column of the language texts, for every text that has
/// no English one, and for every caption, button and column header that is cut off; and as the next three do.
void expectTextsInBothLanguages(QWidget& form, FormWorld& world);

/// Fails for every control that can have the focus and of which a screen reader cannot say its name and what it is.
void expectNamesForScreenReaders(QWidget& form);
/// Fails where Tab goes back: up, but to the next column, or to the left within a row. A search box may stand behind
/// its list.
void expectReadingOrder(QWidget& form);
/// Fails for every letter that is the mnemonic of two controls that can be seen, or menus of the window's bar.
void expectUniqueMnemonics(const QWidget& form);

/// Saves a picture of the form when KOLMERA_PICTURES names a folder; for looking at, nothing is compared.
void takePicture(QWidget& form, const std::string& name);

}  // namespace kolmera::test
