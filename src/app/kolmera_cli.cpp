#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <new>
#include <ostream>
#include <string>
#include <vector>

#include "cli/commandline.h"
#include "cli/terminalstream.h"
#include "platform/settings.h"

namespace {

// The one mutable global of the program: a signal handler can reach nothing else.
std::atomic<bool> cancel{false};
static_assert(std::atomic<bool>::is_always_lock_free);

constexpr unsigned kSecondsToEnd = 2;
constexpr int kCancelledExitCode = 130;

/// Who asks twice, or for the program's end, gets it: what is committed is safe however the program ends.
extern "C" void onCancel(int signal) {
    const bool again = cancel.exchange(true, std::memory_order_relaxed);
    if (again || signal == SIGTERM) alarm(kSecondsToEnd);
}

extern "C" void onPatienceOver(int /*signal*/) { _exit(kCancelledExitCode); }

void listenForCancel() {
    struct sigaction action {};
    action.sa_handler = onCancel;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    action.sa_handler = onPatienceOver;
    sigaction(SIGALRM, &action, nullptr);
}

/// A file that is opened later must not become the program's output.
void occupyStandardStreams() {
    while (true) {
        const int descriptor = open("/dev/null", O_RDWR);
        if (descriptor > STDERR_FILENO) close(descriptor);
        if (descriptor < 0 || descriptor > STDERR_FILENO) return;
    }
}

int run(const std::vector<std::string>& arguments) {
    kolmera::cli::TerminalStream outBuffer(STDOUT_FILENO, cancel);
    kolmera::cli::TerminalStream errBuffer(STDERR_FILENO, cancel);
    std::ostream out(&outBuffer);
    std::ostream err(&errBuffer);
    err << std::unitbuf;
    std::error_code ignored;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    const kolmera::cli::Surroundings surroundings{.out = out,
                                                  .err = err,
                                                  .programFolder = program.parent_path(),
                                                  .settingsFile = kolmera::SettingsStore::userFile(),
                                                  .locale = kolmera::Locale::ofUser(),
                                                  .cancel = cancel};
    return kolmera::cli::runCommandLine(arguments, surroundings);
}

}  // namespace

int main(int argc, char** argv) {
    occupyStandardStreams();
    listenForCancel();
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::bad_alloc&) {
        // The language database cannot be asked any more.
        std::fputs("kolmera-cli: Minnet räcker inte. There is not enough memory.\n", stderr);
        return kolmera::cli::exitcode::kStopped;
    }
}
