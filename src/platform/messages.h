#pragma once

#include <cstdint>
#include <string>

namespace kolmera {

/// Answers of message boxes, with the suite's numbers.
enum class Answer : std::int16_t { OK = 1, Cancel = 2, Yes = 6, No = 7 };

enum class Buttons { OK, OKCancel, YesNo };
enum class Icon { Information, Exclamation, Question };

/// One message box: text and title in UTF-8, line breaks CR LF.
struct Message {
    std::string text;
    std::string title;
    Buttons buttons = Buttons::OK;
    Icon icon = Icon::Exclamation;
    bool secondIsDefault = false;  ///< the second button (No, Cancel) is the default
    bool helpButton = false;
    int helpContext = 0;
    std::string helpFile;
};

/// Where messages are shown: a window, the terminal, or a script in tests.
class MessagePort {
  public:
    virtual ~MessagePort() = default;
    virtual Answer show(const Message& message) = 0;
    /// Somebody is there who answers questions.
    [[nodiscard]] virtual bool answers() const { return true; }
    /// What waits for a database server shall give up.
    [[nodiscard]] virtual bool givesUp() { return false; }
    /// The hourglass or the normal mouse pointer.
    virtual void hourglass(bool /*on*/) {}
    /// Lets waiting window events run once.
    virtual void letEventsRun() {}
};

/// The hourglass while something takes its time.
class Hourglass {
  public:
    explicit Hourglass(MessagePort& port) : port_(port) { port_.hourglass(true); }
    ~Hourglass() { port_.hourglass(false); }
    Hourglass(const Hourglass&) = delete;
    Hourglass& operator=(const Hourglass&) = delete;

  private:
    MessagePort& port_;
};

}  // namespace kolmera
