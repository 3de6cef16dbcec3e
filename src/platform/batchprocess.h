#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "platform/descriptor.h"
#include "platform/paths.h"

namespace kolmera {

/// A preparation batch file: the command, CR LF, "DEL " and its own name, CR LF, in Windows-1252. Its lines run one
/// after the other in its folder, CR dropped:
///  - DEL, COPY, REN, CD and REM (any letter case, also ERASE, RENAME, CHDIR) with Windows paths through the drive map,
///    "*" and "?" in the names of DEL and COPY, switches and "> NUL" passed over;
///  - every other line as a command of /bin/sh, in a shell of its own; so are several commands in one line ("cd a &&
///  b").
/// It runs as a process of its own session, without input, its output on our standard error. It ends whatever its
/// commands do; the only signal of its end is that the batch file is gone.
///
/// All programs use one name in a folder, one at a time: `takeTurn` until it answers true, then `start`. The turn is a
/// lock on a file beside the batch. The running batch holds it too, so that it ends with the batch even when we are
/// gone by then or have stopped waiting. Everything throws PlatformError (kFileNotFound, kDiskFull or kInternal, with
/// the system's text).
class BatchFile {
  public:
    BatchFile(const std::filesystem::path& folder, const std::string& name);

    /// False while the batch of another run is there.
    [[nodiscard]] bool takeTurn();
    /// Writes the batch file in the place of what an interrupted run has left (of a link, not of its target), and
    /// starts it.
    void start(const std::string& command, const DriveMap& drives);
    [[nodiscard]] bool ended() const;
    /// 0 or the exit status of the first line that failed: 127 for a program that is not there, 128 + n for one that
    /// signal n has ended, 2 for a line that the shell cannot read. Nothing while the batch runs.
    [[nodiscard]] std::optional<int> exitStatus() const;

  private:
    void run(const std::string& command, const DriveMap& drives);

    std::filesystem::path folder_;
    std::string name_;
    std::filesystem::path file_;
    Descriptor lock_;
    Descriptor status_;  ///< a file in memory, which the batch writes to
};

}  // namespace kolmera
