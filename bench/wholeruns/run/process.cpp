#include "wholeruns/run/process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <system_error>

namespace kolmera::bench {

namespace {

double secondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace

ProcessCost runProcess(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t silent;
    posix_spawn_file_actions_init(&silent);
    posix_spawn_file_actions_addopen(&silent, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    const int error = posix_spawn(&child, arguments[0], &silent, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&silent);
    if (error != 0) throw std::system_error(error, std::generic_category(), command.front());
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;

    ProcessCost cost;
    cost.seconds = wall.count();
    cost.cpuSeconds = secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
    cost.peakMegabytes = static_cast<double>(usage.ru_maxrss) / 1024;
    cost.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return cost;
}

}  // namespace kolmera::bench
