#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kolmera::test {

// The system calls by which this process opens and changes files of one folder and those below it. This binary has
// functions of their names, which the libraries find before the system's. They count the calls, let one go wrong, or
// record them. Files that SQLite shares as memory (-shm) are left alone: after a fault they are made anew.

enum class Fault {
    None,
    Kill,           ///< the program is killed; of what it was writing, half is written
    DiskFull,       ///< ENOSPC, from then on, at everything that needs room
    InputOutput,    ///< EIO, once
    DiskBroken,     ///< EIO, from then on
    Interrupted,    ///< EINTR, once
    WrittenInPart,  ///< half is written, which is no error
};

struct CallPlan {
    std::filesystem::path folder = {};
    Fault fault = Fault::None;
    int at = 0;          ///< the call it befalls, counted from 1; 0: none
    int record = -1;     ///< a descriptor to which the calls are written
    int clockSpeed = 1;  ///< how much quicker time passes, so that a short run does what a long one does at intervals
};

/// How a process ended that carried out an operation under a plan.
struct Outcome {
    int calls = 0;  ///< of the folder's files
    bool killed = false;
    int crashSignal = 0;  ///< another signal that ended it: a crash, SIGALRM after a minute
    int exitCode = -1;
    std::string told;  ///< what the operation said on stderr

    [[nodiscard]] bool ended() const { return !killed && crashSignal == 0; }
};

/// Carries out an operation in a process of its own; it returns the exit code, and writes to a stream what it tells.
Outcome inChild(const CallPlan& plan, const std::function<int(std::ostream& told)>& operation);

/// A call of a record.
struct RecordedCall {
    enum class Kind : char { Create, Truncate, Write, SyncFile, SyncFolder, Rename, Link, Unlink };
    Kind kind{};
    std::uint64_t file = 0;  ///< the same for all calls on one file
    std::uint64_t offset = 0;
    std::string first, second;  ///< paths below the folder; of Write, the bytes
};

/// The calls of an operation that ended by itself.
std::vector<RecordedCall> recorded(const std::filesystem::path& folder,
                                   const std::function<int(std::ostream& told)>& operation, int clockSpeed = 1);

}  // namespace kolmera::test
