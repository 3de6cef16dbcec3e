#include "platform/batchprocess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>

#include "platform/error.h"
#include "support/temporaryfolder.h"

namespace kolmera {
namespace {

namespace fs = std::filesystem;

constexpr const char* kBatch = "EXPA@#01.BAT";

struct BatchTest : testing::Test {
    test::TemporaryFolder folder;
    DriveMap drives{{{'A', folder / "a"}}};
    fs::path work = folder / "Filer";

    BatchTest() {
        fs::create_directories(work);
        fs::create_directories(folder / "a");
    }
    static bool soon(const std::function<bool()>& comes) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!comes()) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return true;
    }
    BatchFile start(const std::string& command) {
        BatchFile batch(work, kBatch);
        EXPECT_TRUE(soon([&] { return batch.takeTurn(); }));
        batch.start(command, drives);
        return batch;
    }
    bool ends() {
        return soon([this] { return !fs::exists(work / kBatch); });
    }
    bool runs(const std::string& command) {
        start(command);
        return ends();
    }
};

TEST_F(BatchTest, WritesTheBatchByteForByte) {
    folder.write(std::string("Filer/") + kBatch, std::string(100, 'x'));
    start("while [ ! -e go ]; do sleep 0.01; done # å€");
    EXPECT_EQ(folder.read(std::string("Filer/") + kBatch),
              "while [ ! -e go ]; do sleep 0.01; done # \xE5\x80\r\nDEL EXPA@#01.BAT\r\n");
    folder.write("Filer/go", "");
    EXPECT_TRUE(ends());
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(BatchTest, EndsWhateverTheCommandDoesAndTellsHow) {
    const std::pair<const char*, int> cases[] = {{"false", 1},
                                                 {"no-such-program", 127},
                                                 {"echo 'no end of the quote", 2},
                                                 {"exit 3", 3},
                                                 {"cd /", 0},
                                                 {"CD /", 0},
                                                 {"CD none", 2},
                                                 {")", 2},
                                                 {"REM no", 0},
                                                 {"cat", 0},
                                                 {"", 0},
                                                 {"set -e; false", 1},
                                                 {"exit 9\r\nexit 3\r\ntrue", 9},
                                                 {"kill -9 $(exec sh -c 'echo $PPID')", 137},
                                                 {"DEL none", 0},
                                                 {"COPY none x", 1}};
    for (const auto& [command, status] : cases) {
        SCOPED_TRACE(command);
        const BatchFile batch = start(command);
        EXPECT_TRUE(ends());
        EXPECT_EQ(batch.exitStatus(), status);
    }
}

TEST_F(BatchTest, OneAtATimeEvenWhenNobodyWaitsForTheFirst) {
    start("while [ ! -e go ]; do sleep 0.01; done; sleep 60 >/dev/null 2>&1 & echo $! > left");
    BatchFile second(work, kBatch);
    EXPECT_FALSE(second.takeTurn());
    folder.write("Filer/go", "");
    EXPECT_TRUE(soon([&] { return second.takeTurn(); })) << "what a command leaves behind keeps the turn";
    EXPECT_TRUE(second.ended()) << "the turn came before the end";
    EXPECT_EQ(kill(std::stoi(folder.read("Filer/left")), SIGTERM), 0) << "nothing was left behind";
}

TEST_F(BatchTest, ReplacesWhatLiesThereWithoutFollowingIt) {
    folder.write("precious", "kept");
    fs::create_symlink(folder / "precious", work / kBatch);
    EXPECT_TRUE(runs("true"));
    EXPECT_EQ(folder.read("precious"), "kept");
    fs::remove(work / ".EXPA@#01.BAT.lock");
    fs::create_symlink(folder / "precious", work / ".EXPA@#01.BAT.lock");
    EXPECT_THROW(BatchFile(work, kBatch), PlatformError);
}

TEST_F(BatchTest, RunsTheCommandInItsFolder) {
    EXPECT_TRUE(runs("ECHO 'å it''s' > result.txt\r"));
    EXPECT_EQ(folder.read("Filer/result.txt"), "å its\n");
}

TEST_F(BatchTest, CommandsOfTheBatchLanguage) {
    const struct {
        const char *fault, *command, *present, *absent;
    } cases[] = {
        {"copy from a drive into the folder", R"(COPY A:\prices.TXT)", "Filer/Prices.txt", "Filer/prices.TXT"},
        {"copy to a new name", R"(copy /Y "a:\it's.txt" new.txt > NUL)", "Filer/new.txt", "Filer/NUL"},
        {"copy several", R"(@Copy A:\*.TXT .)", "Filer/it's.txt", "Filer/*.TXT"},
        {"copy all", R"(COPY A:\*.*)", "Filer/other.dat", nullptr},
        {"rename", "REN OLD.txt new.txt", "Filer/new.txt", "Filer/old.txt"},
        {"rename over a file", "REN OLD.txt keep.txt", "Filer/old.txt", nullptr},
        {"rename in another folder", R"(rename A:\prices.txt new.txt)", "a/new.txt", "Filer/new.txt"},
        {"delete, not the file of a redirection", "DEL Old.TXT > keep.txt", "Filer/keep.txt", "Filer/old.txt"},
        {"delete several", "erase *.T?T", "a/Prices.txt", "Filer/keep.txt"},
        {"lines after another", "CD A:\\\r\nDEL prices.txt\r\ntouch here", "a/here", "a/Prices.txt"},
        {"several commands of the shell in one line", "cd ../a && touch here", "a/here", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        for (const char* file : {"Filer/old.txt", "Filer/keep.txt", "a/Prices.txt", "a/it's.txt", "a/other.dat"}) {
            folder.write(file, file);
        }
        EXPECT_TRUE(runs(c.command));
        EXPECT_TRUE(fs::exists(folder / c.present));
        EXPECT_FALSE(c.absent != nullptr && fs::exists(folder / c.absent));
        EXPECT_EQ(folder.read("Filer/keep.txt") == "Filer/old.txt", false) << "an existing file was replaced";
        for (const fs::path& part : {work, folder / "a"}) {
            fs::remove_all(part);
            fs::create_directory(part);
        }
    }
}

TEST_F(BatchTest, ACommandThatCannotBeStartedIsNotWaitedFor) {
    EXPECT_THROW(start(std::string(200'000, 'x')), PlatformError) << "longer than the system takes";
    EXPECT_FALSE(fs::exists(work / kBatch));
}

TEST_F(BatchTest, RefusesAFolderThatIsNotThere) {
    try {
        BatchFile(folder / "none", kBatch);
        FAIL();
    } catch (const PlatformError& error) {
        EXPECT_EQ(error.number(), errors::kFileNotFound);
        EXPECT_EQ(error.description(), "No such file or directory");
    }
}

}  // namespace
}  // namespace kolmera
