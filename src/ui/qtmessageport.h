#pragma once

#include "lang/languagetexts.h"
#include "platform/messages.h"

class QMessageBox;

namespace kolmera {

/// Shows message boxes over the active window, with buttons in the program's language. The words that the errors in a
/// text came with can be unfolded.
class QtMessagePort final : public MessagePort {
  public:
    explicit QtMessagePort(LanguageTexts& texts) : texts_(texts) {}

    Answer show(const Message& message) override;
    void hourglass(bool on) override;
    /// Windows are drawn; keys and clicks wait. A form that opens a company is in the middle of something.
    void letEventsRun() override;

  private:
    void addHelp(QMessageBox& box, const Message& message);
    void openHelp(const Message& message, QMessageBox& box);

    LanguageTexts& texts_;
    bool hourglass_ = false;
};

}  // namespace kolmera
