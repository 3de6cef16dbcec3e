#pragma once

#include <string>
#include <vector>

#include "import/preview/preview.h"
#include "import/run/runport.h"

namespace kolmera {

/// The surroundings of a preview: those of the run that it stands for, but nothing is asked that the preview was told
/// already, and what the run would tell at its end is kept.
class PreviewPort final : public RunPort {
  public:
    PreviewPort(RunPort& outer, const PreviewOptions& options) : outer_(outer), options_(options) {}

    Answer show(const Message& message) override { return outer_.show(message); }
    [[nodiscard]] bool answers() const override { return outer_.answers(); }
    void hourglass(bool on) override { outer_.hourglass(on); }
    void letEventsRun() override { outer_.letEventsRun(); }
    void status(std::string_view text) override { outer_.status(text); }
    void runMode(bool on) override { outer_.runMode(on); }
    bool cancelled() override { return outer_.cancelled(); }
    void clearCancel() override {
        if (!options_.withinRun) outer_.clearCancel();
    }
    [[nodiscard]] bool cancelEndsPreparation() const override { return true; }
    ConfirmationAnswer confirm(const Confirmation& confirmation) override {
        if (!confirmation.warning.empty()) told_.push_back(confirmation.warning);
        return {.confirmed = true, .emptyTables = options_.emptyTables};
    }
    bool readsDoubtful(const DoubtfulFile& file) override { return options_.withinRun || outer_.readsDoubtful(file); }
    void openJobSettings() override { outer_.openJobSettings(); }
    void tell(const Message& message) override { told_.push_back(message.text); }
    [[nodiscard]] std::size_t examplesTold() const override { return outer_.examplesTold(); }
    void progress(std::uint64_t position, std::uint64_t size, std::int64_t records) override {
        outer_.progress(position, size, records);
    }

    [[nodiscard]] const std::vector<std::string>& told() const { return told_; }

  private:
    RunPort& outer_;
    PreviewOptions options_;
    std::vector<std::string> told_;
};

}  // namespace kolmera
