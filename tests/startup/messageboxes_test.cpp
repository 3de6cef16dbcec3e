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

TEST(MessageBoxes, NoIsTheDefaultWhereItMatters) {
    LastMessage port;
    MessageBoxes boxes(port, "/opt/Dorvik.chm");
    EXPECT_EQ(boxes.MeddelandeJaNej("text"), Answer::Yes);
    EXPECT_FALSE(port.last.secondIsDefault);
    EXPECT_EQ(port.last.title, "Kolmera");
    EXPECT_EQ(port.last.helpFile, "/opt/Dorvik.chm");
    boxes.MeddelandeJaNejNej("text", "title");
    EXPECT_TRUE(port.last.secondIsDefault && port.last.helpButton);
    EXPECT_EQ(port.last.title, "title");
}

}  // namespace
}  // namespace kolmera::test
