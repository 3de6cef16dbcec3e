#include "startup/messageboxes.h"

#include "startworld.h"

namespace kolmera::test {
namespace {

/// Keeps the last message.
class LastMessage final : public MessagePort {
  public:
    Answer show(const Message& message) override {
        last = message;
        return Answer::Yes;
    }
    Message last;
};

TEST(MessageBoxes, ShorthandsFixIconAndButtons) {
    LastMessage port;
    MessageBoxes boxes(port, "/opt/Dorvik.chm");
    using Shorthand = Answer (MessageBoxes::*)(std::string_view, std::string_view);
    const struct {
        const char* name;
        Shorthand shorthand;
        Icon icon;
        Buttons buttons;
        bool secondIsDefault;
    } cases[] = {
        {"MeddelandeInfo", &MessageBoxes::MeddelandeInfo, Icon::Information, Buttons::OK, false},
        {"MeddelandeVarning", &MessageBoxes::MeddelandeVarning, Icon::Exclamation, Buttons::OK, false},
        {"MeddelandeOKAvbryt", &MessageBoxes::MeddelandeOKAvbryt, Icon::Exclamation, Buttons::OKCancel, false},
        {"MeddelandeJaNej", &MessageBoxes::MeddelandeJaNej, Icon::Question, Buttons::YesNo, false},
        {"MeddelandeJaNejNej", &MessageBoxes::MeddelandeJaNejNej, Icon::Question, Buttons::YesNo, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ((boxes.*c.shorthand)("text", ""), Answer::Yes);
        EXPECT_EQ(port.last.text, "text");
        EXPECT_EQ(port.last.title, "Kolmera");
        EXPECT_EQ(port.last.icon, c.icon);
        EXPECT_EQ(port.last.buttons, c.buttons);
        EXPECT_EQ(port.last.secondIsDefault, c.secondIsDefault);
        EXPECT_TRUE(port.last.helpButton);
        EXPECT_EQ(port.last.helpFile, "/opt/Dorvik.chm");
    }
    boxes.MeddelandeInfo("text", "title");
    EXPECT_EQ(port.last.title, "title");
}

}  // namespace
}  // namespace kolmera::test
