#include "startup/messageboxes.h"

#include <utility>

namespace kolmera {

namespace {

/// A box of the shorthands: they differ in icon and buttons only.
Message withHelp(std::string_view text, std::string_view title, Icon icon, Buttons buttons) {
    Message message;
    message.text = text;
    message.title = title;
    message.icon = icon;
    message.buttons = buttons;
    message.helpButton = true;
    return message;
}

}  // namespace

Answer MessageBoxes::VisaMeddelande(Message message) {
    if (message.title.empty()) message.title = kProgramTitle;
    message.helpFile = helpFile_;
    return port_.show(message);
}

Answer MessageBoxes::MeddelandeInfo(std::string_view text, std::string_view title) {
    return VisaMeddelande(withHelp(text, title, Icon::Information, Buttons::OK));
}

Answer MessageBoxes::MeddelandeVarning(std::string_view text, std::string_view title) {
    return VisaMeddelande(withHelp(text, title, Icon::Exclamation, Buttons::OK));
}

Answer MessageBoxes::MeddelandeOKAvbryt(std::string_view text, std::string_view title) {
    return VisaMeddelande(withHelp(text, title, Icon::Exclamation, Buttons::OKCancel));
}

Answer MessageBoxes::MeddelandeJaNej(std::string_view text, std::string_view title) {
    return VisaMeddelande(withHelp(text, title, Icon::Question, Buttons::YesNo));
}

Answer MessageBoxes::MeddelandeJaNejNej(std::string_view text, std::string_view title) {
    Message message = withHelp(text, title, Icon::Question, Buttons::YesNo);
    message.secondIsDefault = true;
    return VisaMeddelande(std::move(message));
}

}  // namespace kolmera
