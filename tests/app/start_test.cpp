#include <gtest/gtest.h>

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>

#include "platform/encodings.h"
#include "startup/inifile.h"
#include "support/qt/formworld.h"

namespace kolmera {
namespace {

namespace fs = std::filesystem;
using namespace test;

/// A program folder of the test's own, and the program started from it.
class StartTest : public testing::Test {
  protected:
    StartTest() {
        fs::create_directories(data);
        fs::create_directories(program);
        fs::copy(fs::path(KOLMERA_BIN_DIR) / "kolmera", program / "kolmera");
        fs::copy(fs::path(KOLMERA_BIN_DIR) / "DVLang.sys", program / "DVLang.sys");
    }
    ~StartTest() override {
        process.kill();
        process.waitForFinished();
    }

    void nameDataFolder(const fs::path& named) {
        const std::string value = named.string();
        const IniLine line{"", value};
        writeIniValues(program / "DVKlient.ini", 2, {&line, 1});
    }
    /// The program's own folder has data, as where the suite's programs and files lie together.
    void haveDataBesideTheProgram() { folder.write("program/DORVIK.FTG", ""); }
    /// Starts the program and waits until its main window has read (and so made) the job list of that folder.
    bool startsOn(const fs::path& dataFolder, const QStringList& arguments = {}) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_CONFIG_HOME", QString::fromStdString((folder / "settings").string()));
        process.setProcessEnvironment(environment);
        process.start(QString::fromStdString((program / "kolmera").string()), arguments);
        return eventually([&] { return fs::exists(dataFolder / "KOLMERA.TXT"); }) &&
               process.state() == QProcess::Running;
    }

    TemporaryFolder folder;
    fs::path program = folder / "program";
    fs::path data = folder / "data";
    QProcess process;
};

TEST_F(StartTest, AloneOnItsOwnFolder) {
    haveDataBesideTheProgram();
    EXPECT_TRUE(startsOn(program));
}

TEST_F(StartTest, OnTheFolderThatIsNamedThenAndLater) {
    EXPECT_TRUE(startsOn(data, {QString::fromStdString(data.string())}));
    EXPECT_FALSE(fs::exists(program / "KOLMERA.TXT"));
    ASSERT_TRUE(eventually([&] { return fs::exists(folder / "settings" / "Kolmera" / "windows.ini"); }));
    process.kill();
    process.waitForFinished();
    fs::remove(data / "KOLMERA.TXT");
    EXPECT_TRUE(startsOn(data)) << "the folder of the last time is forgotten";
}

TEST_F(StartTest, TellsOfItself) {
    const struct {
        const char *argument, *told;
        int code;
    } cases[] = {{"--version", "kolmera 0", 0}, {"--help", "[DATAMAPP | --demo]", 0}, {"--nonsense", "--nonsense", 2}};
    for (const auto& c : cases) {
        QProcess told;
        told.setProcessChannelMode(QProcess::MergedChannels);
        told.start(QString::fromStdString((program / "kolmera").string()), {c.argument});
        ASSERT_TRUE(told.waitForFinished()) << c.argument;
        EXPECT_EQ(told.exitCode(), c.code) << c.argument;
        EXPECT_NE(told.readAll().toStdString().find(c.told), std::string::npos) << c.argument;
    }
}

TEST_F(StartTest, SaysInALineThatNoDisplayAnswers) {
    for (const char* platform : {"xcb", "wayland"}) {
        QProcess told;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", platform);
        environment.insert("DISPLAY", ":7777");
        environment.insert("WAYLAND_DISPLAY", "gone");
        environment.insert("XDG_RUNTIME_DIR", QString::fromStdString(folder.path().string()));
        told.setProcessEnvironment(environment);
        told.setProcessChannelMode(QProcess::MergedChannels);
        told.start(QString::fromStdString((program / "kolmera").string()), QStringList());
        ASSERT_TRUE(told.waitForFinished()) << platform;
        EXPECT_EQ(told.exitStatus(), QProcess::NormalExit) << platform;
        EXPECT_EQ(told.exitCode(), 69) << platform;
        EXPECT_EQ(told.readAll().toStdString(),
                  "kolmera: Ingen skärm svarar (DISPLAY=:7777, WAYLAND_DISPLAY=gone). "
                  "Utan skärm används kolmera-cli.\n")
            << platform;
    }
}

TEST_F(StartTest, OnTheFolderThatTheSuiteNames) {
    nameDataFolder(data);
    EXPECT_TRUE(startsOn(data));
    EXPECT_TRUE(fs::exists(data / "DVUser.dvl")) << "the user file was not asked for";
}

TEST_F(StartTest, AloneWhenThatFolderIsGone) {
    // DVKlient.ini is there: nobody is asked.
    nameDataFolder(folder / "gone");
    EXPECT_TRUE(startsOn(program));
}

TEST_F(StartTest, WithoutTheLanguageDatabase) {
    fs::remove(program / "DVLang.sys");
    nameDataFolder(data);
    EXPECT_TRUE(startsOn(data));
}

TEST_F(StartTest, WithADamagedLanguageDatabase) {
    haveDataBesideTheProgram();
    folder.write("program/DVLang.sys", "no database");
    EXPECT_TRUE(startsOn(program));
}

}  // namespace
}  // namespace kolmera
