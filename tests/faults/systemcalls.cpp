#include "faults/systemcalls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <optional>
#include <set>
#include <span>
#include <sstream>

#include "platform/descriptor.h"

namespace kolmera::test {
namespace {

namespace fs = std::filesystem;
using Kind = RecordedCall::Kind;

/// The plan of this process; in the parent there is none. The count outlives a killed child.
struct State {
    CallPlan plan;
    std::string folder;
    int* calls = nullptr;
    std::set<std::uint64_t> recorded;  ///< files whose writes have been recorded
};
State* state = nullptr;

template <typename Function>
Function* systems(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool concerns(std::string_view path) {
    return path.starts_with(state->folder) && !path.ends_with("-shm") &&
           (path.size() == state->folder.size() || path[state->folder.size()] == '/');
}

std::string absolutePath(const char* path) {
    if (path[0] == '/') return fs::path(path).lexically_normal().string();
    std::error_code gone;
    return (fs::current_path(gone) / path).lexically_normal().string();
}

std::string pathOf(int descriptor) {
    char path[PATH_MAX];
    const ssize_t length = readlink(fmt::format("/proc/self/fd/{}", descriptor).c_str(), path, sizeof path);
    return {path, length < 0 ? 0 : static_cast<std::size_t>(length)};
}

/// What is to become of a call.
struct Verdict {
    int error = 0;
    bool halved = false, killed = false;
};

/// Counts a call. `needsRoom`: what a full disk refuses; `writes`: what can be done in part; `waits`: what a signal may
/// break off.
Verdict judge(bool needsRoom, bool writes, bool waits) {
    const int call = ++*state->calls;
    const int at = state->plan.at;
    if (at == 0 || call < at) return {};
    const bool now = call == at;
    switch (state->plan.fault) {
        case Fault::None:
            return {};
        case Fault::Kill:
            if (now && !writes) raise(SIGKILL);
            return {.halved = now, .killed = now};
        case Fault::DiskFull:
            return {.error = needsRoom ? ENOSPC : 0};
        case Fault::InputOutput:
            return {.error = now ? EIO : 0};
        case Fault::DiskBroken:
            return {.error = EIO};
        case Fault::Interrupted:
            return {.error = now && waits ? EINTR : 0};
        case Fault::WrittenInPart:
            return {.halved = now && writes};
    }
    return {};
}

void writeWhole(int descriptor, const void* bytes, std::size_t count) {
    static auto* const systemWrite = systems<ssize_t(int, const void*, std::size_t)>("write");
    for (const char* at = static_cast<const char*>(bytes); count > 0;) {
        const ssize_t done = systemWrite(descriptor, at, count);
        if (done <= 0) _exit(99);
        at += done;
        count -= static_cast<std::size_t>(done);
    }
}

/// The fixed part of a call in a record; the texts follow.
struct Head {
    Kind kind{};
    std::uint64_t file = 0, offset = 0, first = 0, second = 0;
};

void record(Kind kind, std::uint64_t file, std::uint64_t offset, std::string_view first, std::string_view second = {}) {
    if (state->plan.record < 0) return;
    const int error = errno;
    const auto below = [](std::string_view path) {
        return path.substr(std::min(path.size(), state->folder.size() + 1));
    };
    if (kind != Kind::Write) {
        first = below(first);
        second = below(second);
    }
    if (kind == Kind::Write || kind == Kind::Truncate) state->recorded.insert(file);
    const Head head{kind, file, offset, first.size(), second.size()};
    writeWhole(state->plan.record, &head, sizeof head);
    writeWhole(state->plan.record, first.data(), first.size());
    writeWhole(state->plan.record, second.data(), second.size());
    errno = error;
}

std::uint64_t fileOf(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 ? status.st_ino : 0;
}

bool concerned(int descriptor) { return state != nullptr && concerns(pathOf(descriptor)); }

template <typename Open>
int opened(const char* name, int flags, const Open& open) {
    if (state == nullptr) return open();
    const std::string path = absolutePath(name);
    if (!concerns(path)) return open();
    if (const Verdict verdict = judge((flags & O_CREAT) != 0, false, true); verdict.error != 0) {
        errno = verdict.error;
        return -1;
    }
    const bool unnamed = (flags & O_TMPFILE) == O_TMPFILE;
    const bool isNew = (flags & O_CREAT) != 0 && !unnamed && access(name, F_OK) != 0;
    const int descriptor = open();
    if (descriptor < 0) return descriptor;
    if (isNew) {
        record(Kind::Create, fileOf(descriptor), 0, path);
    } else if ((flags & O_TRUNC) != 0) {
        record(Kind::Truncate, fileOf(descriptor), 0, path);
    }
    return descriptor;
}

/// A write of `count` bytes: `write` carries out as many as it is told.
template <typename Write>
ssize_t written(int descriptor, std::size_t count, const char* bytes, std::optional<off_t> offset, const Write& write) {
    if (!concerned(descriptor)) return write(count);
    const Verdict verdict = judge(true, true, true);
    if (verdict.error != 0) {
        errno = verdict.error;
        return -1;
    }
    const off_t at = offset                                         ? *offset
                     : (fcntl(descriptor, F_GETFL) & O_APPEND) != 0 ? lseek(descriptor, 0, SEEK_END)
                                                                    : lseek(descriptor, 0, SEEK_CUR);
    const ssize_t done = write(verdict.halved && count > 1 ? count / 2 : count);
    if (verdict.killed) raise(SIGKILL);
    if (done > 0) {
        record(Kind::Write, fileOf(descriptor), static_cast<std::uint64_t>(at),
               {bytes, static_cast<std::size_t>(done)});
    }
    return done;
}

/// A call on an open file that is not a write.
template <typename Call>
int changed(int descriptor, Kind kind, bool needsRoom, std::uint64_t length, const Call& call) {
    if (!concerned(descriptor)) return call();
    if (const Verdict verdict = judge(needsRoom, false, true); verdict.error != 0) {
        errno = verdict.error;
        return -1;
    }
    const int result = call();
    if (result == 0) record(kind, fileOf(descriptor), length, pathOf(descriptor));
    return result;
}

int synced(int descriptor, const char* name) {
    auto* const call = systems<int(int)>(name);
    struct stat status {};
    const bool folder = fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
    if (!concerned(descriptor)) return call(descriptor);
    // The disk of the test is not asked: what it would hold is worked out from the record. Of a file that was written
    // by calls within the system's library (stdio), all of it is recorded now.
    const Kind kind = folder ? Kind::SyncFolder : Kind::SyncFile;
    const auto file = static_cast<std::uint64_t>(status.st_ino);
    const bool unknown = !folder && state->plan.record >= 0 && !state->recorded.contains(file);
    const int result = changed(descriptor, kind, false, 0, [] { return 0; });
    if (result != 0 || !unknown) return result;
    std::string content(static_cast<std::size_t>(status.st_size), '\0');
    if (pread(descriptor, content.data(), content.size(), 0) < 0) content.clear();
    record(Kind::Create, file, 0, pathOf(descriptor));
    record(Kind::Write, file, 0, content);
    record(Kind::SyncFile, file, 0, pathOf(descriptor));
    return 0;
}

template <typename Call>
int renamed(Kind kind, const char* from, const char* to, const Call& call) {
    if (state == nullptr) return call();
    const std::string first = absolutePath(from), second = to == nullptr ? "" : absolutePath(to);
    if (!concerns(first) && !concerns(second)) return call();
    if (const Verdict verdict = judge(kind != Kind::Unlink, false, false); verdict.error != 0) {
        errno = verdict.error;
        return -1;
    }
    struct stat gone {};
    const bool vanishes = lstat(kind == Kind::Unlink ? from : to, &gone) == 0;
    const int result = call();
    if (result == 0) record(kind, 0, 0, first, second);
    if (result == 0 && vanishes) state->recorded.erase(gone.st_ino);  // the number is free for another file
    return result;
}

mode_t modeOf(int flags, va_list& arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace
}  // namespace kolmera::test

using kolmera::test::changed;
using kolmera::test::opened;
using kolmera::test::RecordedCall;
using kolmera::test::renamed;
using kolmera::test::synced;
using kolmera::test::systems;
using kolmera::test::written;

// NOLINTBEGIN(cert-dcl50-cpp,cppcoreguidelines-pro-type-vararg,readability-inconsistent-declaration-parameter-name)
extern "C" {

int open(const char* name, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = kolmera::test::modeOf(flags, arguments);
    va_end(arguments);
    return opened(name, flags, [&] { return systems<int(const char*, int, ...)>("open")(name, flags, mode); });
}
int open64(const char* name, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = kolmera::test::modeOf(flags, arguments);
    va_end(arguments);
    return opened(name, flags, [&] { return systems<int(const char*, int, ...)>("open64")(name, flags, mode); });
}
ssize_t write(int file, const void* bytes, std::size_t count) {
    return written(file, count, static_cast<const char*>(bytes), {}, [&](std::size_t part) {
        return systems<ssize_t(int, const void*, std::size_t)>("write")(file, bytes, part);
    });
}
ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t offset) {
    return written(file, count, static_cast<const char*>(bytes), offset, [&](std::size_t part) {
        return systems<ssize_t(int, const void*, std::size_t, off_t)>("pwrite")(file, bytes, part, offset);
    });
}
ssize_t pwrite64(int file, const void* bytes, std::size_t count, off64_t offset) {
    return written(file, count, static_cast<const char*>(bytes), offset, [&](std::size_t part) {
        return systems<ssize_t(int, const void*, std::size_t, off64_t)>("pwrite64")(file, bytes, part, offset);
    });
}
ssize_t writev(int file, const struct iovec* parts, int count) {
    std::string bytes;
    for (const struct iovec& part : std::span(parts, static_cast<std::size_t>(count))) {
        bytes.append(static_cast<const char*>(part.iov_base), part.iov_len);
    }
    return write(file, bytes.data(), bytes.size());
}
int fsync(int file) { return synced(file, "fsync"); }
int fdatasync(int file) { return synced(file, "fdatasync"); }
int ftruncate(int file, off_t length) noexcept {
    return changed(file, RecordedCall::Kind::Truncate, false, static_cast<std::uint64_t>(length),
                   [&] { return systems<int(int, off_t)>("ftruncate")(file, length); });
}
int ftruncate64(int file, off64_t length) noexcept {
    return changed(file, RecordedCall::Kind::Truncate, false, static_cast<std::uint64_t>(length),
                   [&] { return systems<int(int, off64_t)>("ftruncate64")(file, length); });
}
int rename(const char* from, const char* to) noexcept {
    return renamed(RecordedCall::Kind::Rename, from, to,
                   [&] { return systems<int(const char*, const char*)>("rename")(from, to); });
}
int link(const char* from, const char* to) noexcept {
    return renamed(RecordedCall::Kind::Link, from, to,
                   [&] { return systems<int(const char*, const char*)>("link")(from, to); });
}
int unlink(const char* name) noexcept {
    return renamed(RecordedCall::Kind::Unlink, name, nullptr,
                   [&] { return systems<int(const char*)>("unlink")(name); });
}
int remove(const char* name) noexcept {
    return renamed(RecordedCall::Kind::Unlink, name, nullptr,
                   [&] { return systems<int(const char*)>("remove")(name); });
}
int clock_gettime(clockid_t clock, struct timespec* time) noexcept {
    constexpr long kNanoseconds = 1'000'000'000;
    const int result = systems<int(clockid_t, struct timespec*)>("clock_gettime")(clock, time);
    if (kolmera::test::state == nullptr || result != 0 || clock != CLOCK_MONOTONIC) return result;
    const int speed = kolmera::test::state->plan.clockSpeed;
    const long nanoseconds = time->tv_nsec * speed;
    time->tv_sec = time->tv_sec * speed + nanoseconds / kNanoseconds;
    time->tv_nsec = nanoseconds % kNanoseconds;
    return result;
}

}  // extern "C"
// NOLINTEND(cert-dcl50-cpp,cppcoreguidelines-pro-type-vararg,readability-inconsistent-declaration-parameter-name)

namespace kolmera::test {
namespace {

constexpr unsigned kLongestSeconds = 60;
constexpr int kThrew = 98;  // an exit code that no program of ours has

std::string contentOf(int descriptor) {
    std::string text(static_cast<std::size_t>(lseek(descriptor, 0, SEEK_END)), '\0');
    if (pread(descriptor, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) text.clear();
    return text;
}

[[noreturn]] void carryOut(const CallPlan& plan, int* calls, int told,
                           const std::function<int(std::ostream& told)>& operation) {
    State planned{plan, fs::canonical(plan.folder).string(), calls, {}};
    alarm(kLongestSeconds);
    std::ostringstream text;
    int exitCode = kThrew;
    try {
        state = &planned;
        exitCode = operation(text);
    } catch (const std::exception& error) {
        text << "THROWN: " << error.what();
    }
    state = nullptr;
    writeWhole(told, text.str().data(), text.str().size());
    _exit(exitCode);
}

}  // namespace

Outcome inChild(const CallPlan& plan, const std::function<int(std::ostream& told)>& operation) {
    void* const shared = mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    const Descriptor told(memfd_create("told", MFD_CLOEXEC));
    auto* const calls = static_cast<int*>(shared);
    const pid_t child = fork();
    if (child == 0) carryOut(plan, calls, told.get(), operation);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    Outcome outcome{.calls = *calls, .told = contentOf(told.get())};
    munmap(shared, sizeof(int));
    if (WIFEXITED(status)) outcome.exitCode = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) {
        outcome.killed = WTERMSIG(status) == SIGKILL;
        if (!outcome.killed) outcome.crashSignal = WTERMSIG(status);
    }
    return outcome;
}

std::vector<RecordedCall> recorded(const fs::path& folder, const std::function<int(std::ostream& told)>& operation,
                                   int clockSpeed) {
    const Descriptor log(memfd_create("calls", MFD_CLOEXEC));
    const Outcome outcome = inChild({.folder = folder, .record = log.get(), .clockSpeed = clockSpeed}, operation);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.told;
    const std::string bytes = contentOf(log.get());
    std::vector<RecordedCall> calls;
    for (std::size_t at = 0; at + sizeof(Head) <= bytes.size();) {
        Head head;
        std::memcpy(&head, bytes.data() + at, sizeof head);
        at += sizeof head;
        calls.push_back({head.kind, head.file, head.offset, bytes.substr(at, head.first),
                         bytes.substr(at + head.first, head.second)});
        at += head.first + head.second;
    }
    return calls;
}

}  // namespace kolmera::test
