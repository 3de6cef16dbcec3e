#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>

#include "jet/jetfile.h"

// Reads the Access-format file that is its standard input and tells its standard output what is in it. The program that
// starts it trusts nothing of that: the library that reads here was made for files that are whole.

namespace {

constexpr rlim_t kMemory = rlim_t{512} << 20;
constexpr rlim_t kSeconds = 20;
constexpr rlim_t kSecondsPerMegabyte = 1;
constexpr rlim_t kFiles = 16;
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kTakesAllAddresses = true;  // for its own notes
#else
constexpr bool kTakesAllAddresses = false;
#endif
constexpr std::size_t kBuffer = std::size_t{64} << 10;

void limit(int resource, rlim_t most) {
    const rlimit both{most, most};
    if (setrlimit(static_cast<__rlimit_resource>(resource), &both) != 0) std::_Exit(EXIT_FAILURE);
}

void limitMyself() {
    struct stat file {};
    if (fstat(STDIN_FILENO, &file) != 0) std::_Exit(EXIT_FAILURE);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_FSIZE, 0);  // no file can be written
    limit(RLIMIT_NOFILE, kFiles);
    limit(RLIMIT_CPU, kSeconds + kSecondsPerMegabyte * (static_cast<rlim_t>(file.st_size) >> 20));
    if (!kTakesAllAddresses) limit(RLIMIT_AS, kMemory);
}

void writeAll(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) std::_Exit(EXIT_FAILURE);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace

int main() {
    limitMyself();
    std::string waiting;
    kolmera::jet::tellJetFile("/proc/self/fd/0", [&](std::string_view message) {
        waiting += message;
        if (waiting.size() < kBuffer) return;
        writeAll(waiting);
        waiting.clear();
    });
    writeAll(waiting);
    std::_Exit(EXIT_SUCCESS);  // the library's memory goes with the process
}
