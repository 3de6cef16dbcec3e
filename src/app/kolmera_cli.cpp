#include <atomic>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "cli/commandline.h"
#include "platform/settings.h"

namespace {

// The one mutable global of the program: a signal handler can reach nothing else.
std::atomic<bool> cancel{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void onCancel(int /*signal*/) { cancel.store(true, std::memory_order_relaxed); }

void listenForCancel() {
    struct sigaction action {};
    action.sa_handler = onCancel;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

}  // namespace

int main(int argc, char** argv) {
    listenForCancel();
    std::error_code ignored;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    const kolmera::cli::Surroundings surroundings{.out = std::cout,
                                                  .err = std::cerr,
                                                  .programFolder = program.parent_path(),
                                                  .settingsFile = kolmera::SettingsStore::userFile(),
                                                  .locale = kolmera::Locale::ofUser(),
                                                  .cancel = cancel};
    return kolmera::cli::runCommandLine(std::vector<std::string>(argv + 1, argv + argc), surroundings);
}
