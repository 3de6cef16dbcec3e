#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "lang/languagetexts.h"
#include "platform/encodings.h"
#include "platform/messages.h"
#include "startup/messageboxes.h"
#include "startup/startstate.h"
#include "support/temporaryfolder.h"

namespace kolmera::test {

/// Answers message boxes from a list; a box for which there is no answer fails the test.
class ScriptedBoxes final : public MessagePort {
  public:
    std::vector<Answer> answers;
    std::vector<std::string> shown;  ///< "text|title|icon|buttons", and "hourglass" before a box that it stands over

    Answer show(const Message& message) override {
        shown.push_back((hourglass_ ? "hourglass " : "") + message.text + "|" + message.title + "|" +
                        std::to_string(static_cast<int>(message.icon)) + "|" +
                        std::to_string(static_cast<int>(message.buttons)));
        if (answers.empty()) {
            ADD_FAILURE() << "unexpected message: " << message.text;
            return Answer::No;
        }
        const Answer answer = answers.front();
        answers.erase(answers.begin());
        return answer;
    }
    void hourglass(bool on) override { hourglass_ = on; }

  private:
    bool hourglass_ = false;
};

/// A record of DVKlient.ini or DORVIK.INI.
inline std::string iniRecord(const std::string& value) {
    std::string bytes = std::string(20, ' ') + fromUtf8(value, CodePage::Windows1252);
    bytes.resize(70, ' ');
    return bytes + "\r\n";
}

inline std::string iniFile(const std::vector<std::string>& values) {
    std::string file;
    for (const std::string& value : values) file += iniRecord(value);
    return file;
}

/// A program folder and a data folder of the test's own, Swedish.
class StartWorld {
  public:
    StartWorld() {
        std::filesystem::create_directory(program);
        std::filesystem::create_directory(data);
    }
    StartState state(const std::string& settings = {}) {
        root.write("settings.ini", settings);
        return StartState(SettingsStore(root / "settings.ini"), Locale(Locale::Kind::Swedish));
    }
    void write(const std::filesystem::path& file, const std::string& bytes) const {
        root.write(file.lexically_relative(root.path()).string(), bytes);
    }

    TemporaryFolder root;
    std::filesystem::path program = root / "program";
    std::filesystem::path data = root / "data";
};

}  // namespace kolmera::test
