#pragma once

#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "import/run/runport.h"

namespace kolmera::test {

/// A run's surroundings that follow a script. A message that is not expected fails the test, as does an expected one
/// that never came; what else happens is remembered.
class ScriptedPort final : public RunPort {
  public:
    ~ScriptedPort() override;

    // The script.
    /// The next message has this text and title.
    void expect(const std::string& text, const std::string& title, Answer answer = Answer::OK);
    /// The same with the beginning of the text only, where the system's own words follow.
    void expectBeginning(const std::string& text, const std::string& title, Answer answer = Answer::OK);
    ConfirmationAnswer confirmation{.confirmed = true};
    bool readsDoubtfulFiles = true;
    /// Cancel is pressed as soon as the status line shows this text.
    std::string cancelAtStatus;
    /// Called each time that the run lets events run.
    std::function<void()> onEvents;

    // What happened.
    std::vector<Confirmation> confirmations;
    std::vector<std::string> statuses;
    std::vector<std::string> passedOver;  ///< "what: error number", one for each statement that failed
    std::vector<std::string> told;        ///< what runs told at their end
    std::vector<DoubtfulFile> doubtfulFiles;
    int jobSettingsOpened = 0;
    bool inRunMode = false;
    bool hourglassShown = false;

    // What a run asks.
    Answer show(const Message& message) override;
    void hourglass(bool on) override { hourglassShown = on; }
    void letEventsRun() override;
    void status(std::string_view text) override;
    void runMode(bool on) override { inRunMode = on; }
    bool cancelled() override;
    void clearCancel() override { cancelled_ = false; }
    ConfirmationAnswer confirm(const Confirmation& asked) override;
    bool readsDoubtful(const DoubtfulFile& file) override;
    void openJobSettings() override { ++jobSettingsOpened; }
    void tell(const Message& message) override { told.push_back(message.text); }

    void pressCancel() { cancelled_ = true; }

  private:
    struct Expected {
        std::string text, title;
        Answer answer;
        bool beginning;
    };
    std::deque<Expected> expected_;
    bool cancelled_ = false;
    int askedInVain_ = 0;  ///< since the status line changed
};

}  // namespace kolmera::test
