#pragma once

#include <atomic>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "cli/progressbar.h"
#include "import/run/runport.h"

namespace kolmera::cli {

struct Session;

/// A run's surroundings on a terminal: messages go to the error stream, questions are answered No, confirmation is
/// given, and Ctrl-C is Cancel. A verbose session sees the words that errors came with, too.
class TerminalPort final : public RunPort, public PassedOver {
  public:
    /// Which price files are read that are not what the run expects. By itself, those that write less than was meant.
    enum class Doubtful { Harmless, None, All };

    /// `cancel` is set by the signal handler. `emptyTables` ticks the box of the confirmation.
    TerminalPort(Session& session, std::ostream& errors, const std::atomic<bool>& cancel, bool emptyTables,
                 Doubtful doubtful = {}, bool drawsProgress = true);

    Answer show(const Message& message) override;
    [[nodiscard]] bool answers() const override { return false; }
    [[nodiscard]] bool givesUp() override { return cancelled(); }
    void letEventsRun() override {}
    void note(std::string_view /*what*/, const PlatformError& /*error*/) override { ++passedOver_; }
    void status(std::string_view text) override;
    void runMode(bool on) override;
    bool cancelled() override { return cancel_.load(std::memory_order_relaxed); }
    /// A Ctrl-C stays a Ctrl-C: the preparation must not swallow it.
    void clearCancel() override {}
    [[nodiscard]] bool cancelEndsPreparation() const override { return true; }
    ConfirmationAnswer confirm(const Confirmation& confirmation) override;
    bool readsDoubtful(const DoubtfulFile& file) override;
    bool goesBeyondLimits(const LimitsBroken& broken) override {
        print(broken.text);
        return doubtful_ == Doubtful::All;
    }
    void openJobSettings() override {}
    /// The summary says which records were left out, and the last line how it went, as the title does.
    void tell(const Message& message) override {
        if (message.icon != Icon::Information) print(message.text);
    }
    [[nodiscard]] std::size_t examplesTold() const override { return 20; }
    void progress(std::uint64_t position, std::uint64_t size, std::int64_t records) override;

    /// What was told, a title before its text.
    [[nodiscard]] const std::vector<std::string>& messages() const { return messages_; }
    [[nodiscard]] std::int64_t passedOver() const { return passedOver_; }
    /// The price file that was not read.
    [[nodiscard]] const std::optional<DoubtfulFile>& refusedFile() const { return refusedFile_; }

  private:
    void print(std::string_view text);

    Session& session_;
    std::ostream& errors_;
    const std::atomic<bool>& cancel_;
    bool emptyTables_;
    Doubtful doubtful_;
    std::optional<DoubtfulFile> refusedFile_;
    ProgressBar bar_;
    std::string status_;
    std::vector<std::string> messages_;
    std::int64_t passedOver_ = 0;
};

}  // namespace kolmera::cli
