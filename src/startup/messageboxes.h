#pragma once

#include <string>
#include <string_view>

#include "platform/messages.h"

namespace kolmera {

/// The message boxes of the program: VisaMeddelande and its five shorthands, which fix icon and buttons. All of them
/// carry the help file and show a Help button. Without a title the program's own is used.
class MessageBoxes {
  public:
    MessageBoxes(MessagePort& port, std::string helpFile) : port_(port), helpFile_(std::move(helpFile)) {}

    Answer VisaMeddelande(Message message);
    Answer MeddelandeInfo(std::string_view text, std::string_view title = {});
    Answer MeddelandeVarning(std::string_view text, std::string_view title = {});
    Answer MeddelandeOKAvbryt(std::string_view text, std::string_view title = {});
    Answer MeddelandeJaNej(std::string_view text, std::string_view title = {});
    Answer MeddelandeJaNejNej(std::string_view text, std::string_view title = {});  ///< No is the default

    [[nodiscard]] MessagePort& port() { return port_; }
    static constexpr std::string_view kProgramTitle = "Kolmera";

  private:
    MessagePort& port_;
    std::string helpFile_;
};

}  // namespace kolmera
