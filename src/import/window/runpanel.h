#pragma once

#include <QElapsedTimer>
#include <QWidget>
#include <functional>
#include <optional>
#include <utility>

#include "import/run/runpace.h"
#include "import/run/runport.h"
#include "ui/program.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace kolmera {

/// The part of the main window that a run uses: the message line `Meddelande`, how far the price file is read, and the
/// button `Avbryt`. It is the run's port: what the run asks, the window's dialogs answer. Hidden outside run mode.
class RunPanel final : public QWidget, public RunPort {
  public:
    RunPanel(Program& program, QWidget* parent);

    std::function<void()> onRunMode;          ///< run mode was entered or left
    std::function<void()> onOpenJobSettings;  ///< the user wants to mend the job

    /// Another run begins.
    void begin();
    /// How long the run was in run mode; what it asked the user before does not count.
    [[nodiscard]] double seconds() const { return seconds_; }
    /// What the Cancel button does.
    void cancel() { cancel_ = true; }

    /// The user has asked in the confirmation of the run that was just done for a preview instead; its value tells
    /// whether all tables are to be emptied first.
    [[nodiscard]] std::optional<bool> takePreviewWish() { return std::exchange(previewWish_, std::nullopt); }
    /// Ticks the box in the next confirmation, if it may be ticked.
    void proposeEmptyTables(bool propose) { proposed_ = propose; }

    Answer show(const Message& message) override;
    void hourglass(bool on) override;
    void letEventsRun() override;
    void status(std::string_view text) override;
    void runMode(bool on) override;
    bool cancelled() override;
    void clearCancel() override { cancel_ = false; }
    ConfirmationAnswer confirm(const Confirmation& confirmation) override;
    bool readsDoubtful(const DoubtfulFile& file) override;
    void openJobSettings() override { onOpenJobSettings(); }
    void tell(const Message& message) override;
    void progress(std::uint64_t position, std::uint64_t size, std::int64_t records) override;

  private:
    void present();
    template <typename Form>
    ConfirmationAnswer answerOf(const Confirmation& confirmation);

    Program& program_;
    QLabel* meddelande_;
    QProgressBar* bar_;
    QPushButton* avbryt_;
    std::string status_;
    RunPace pace_;
    QElapsedTimer running_;
    double seconds_ = 0;
    bool cancel_ = false;
    std::optional<bool> previewWish_;
    bool proposed_ = false;
    QElapsedTimer sinceEvents_;
};

}  // namespace kolmera
