#include "support/scriptedport.h"

#include <gtest/gtest.h>

namespace kolmera::test {

ScriptedPort::~ScriptedPort() {
    for (const Expected& message : expected_) ADD_FAILURE() << "this message never came: " << message.text;
}

void ScriptedPort::expect(const std::string& text, const std::string& title, Answer answer) {
    expected_.push_back({text, title, answer, false});
}

void ScriptedPort::expectBeginning(const std::string& text, const std::string& title, Answer answer) {
    expected_.push_back({text, title, answer, true});
}

namespace {

bool offers(Buttons buttons, Answer answer) {
    switch (buttons) {
        case Buttons::OK:
            return answer == Answer::OK;
        case Buttons::OKCancel:
            return answer == Answer::OK || answer == Answer::Cancel;
        case Buttons::YesNo:
            return answer == Answer::Yes || answer == Answer::No;
    }
    return false;
}

}  // namespace

Answer ScriptedPort::show(const Message& message) {
    if (expected_.empty()) {
        ADD_FAILURE() << "nobody expected this message: " << message.title << ": " << message.text;
        return message.buttons == Buttons::YesNo ? Answer::No : Answer::OK;
    }
    const Expected expected = expected_.front();
    expected_.pop_front();
    EXPECT_EQ(expected.beginning ? message.text.substr(0, expected.text.size()) : message.text, expected.text);
    EXPECT_EQ(message.title, expected.title);
    EXPECT_TRUE(offers(message.buttons, expected.answer)) << "no such button: " << message.text;
    EXPECT_FALSE(hourglassShown) << "the hourglass stands over " << message.text;
    return expected.answer;
}

void ScriptedPort::letEventsRun() {
    if (onEvents) onEvents();
}

void ScriptedPort::status(std::string_view text) {
    statuses.emplace_back(text);
    askedInVain_ = 0;
    if (text == cancelAtStatus) pressCancel();
}

bool ScriptedPort::cancelled() {
    constexpr int kPatience = 3000;  // pauses of a wait, at least 30 seconds
    letEventsRun();
    if (++askedInVain_ == kPatience) {
        ADD_FAILURE() << "the run waits for nothing";
        pressCancel();
    }
    return cancelled_;
}

ConfirmationAnswer ScriptedPort::confirm(const Confirmation& asked) {
    confirmations.push_back(asked);
    return confirmation;
}

bool ScriptedPort::readsDoubtful(const DoubtfulFile& file) {
    doubtfulFiles.push_back(file);
    EXPECT_FALSE(hourglassShown) << "the hourglass stands over " << file.text;
    return readsDoubtfulFiles;
}

}  // namespace kolmera::test
