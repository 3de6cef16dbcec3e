#include "platform/folderlock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>
#include <thread>

#include "platform/error.h"

namespace kolmera {
namespace {

constexpr const char* kLockFile = "KOLMERA.LCK";

/// Whoever may write in the folder may lock it, whatever rights new files of the user have.
Descriptor makeLockFile(const std::filesystem::path& folder) {
    Descriptor made(folder / kLockFile, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW);
    struct stat status {};
    if (stat(folder.c_str(), &status) == 0) fchmod(made.get(), status.st_mode & 0666);
    return made;
}

/// A file that may only be read can be locked too, on the file systems of this machine.
Descriptor openLockFile(const std::filesystem::path& folder) {
    for (const int access : {O_RDWR, O_RDONLY}) {
        try {
            return Descriptor(folder / kLockFile, access | O_NOFOLLOW);
        } catch (const PlatformError& error) {
            if (error.number() == errors::kFileNotFound) break;
        }
    }
    try {
        return makeLockFile(folder);
    } catch (const PlatformError& error) {
        try {
            return Descriptor(folder / kLockFile, O_RDONLY | O_NOFOLLOW);  // another program was faster
        } catch (const PlatformError&) {
            throw error.about(kLockFile);
        }
    }
}

/// 0, or the value of errno.
int waitFor(const Descriptor& file, FolderLock::Kind kind, std::chrono::milliseconds longest) {
    constexpr std::chrono::milliseconds kPause{10};
    const int operation = (kind == FolderLock::Kind::Exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB;
    const auto end = std::chrono::steady_clock::now() + longest;
    while (flock(file.get(), operation) != 0) {
        if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() >= end) return errno;
        std::this_thread::sleep_for(kPause);
    }
    return 0;
}

}  // namespace

FolderLock::FolderLock(const std::filesystem::path& folder, Kind kind, std::chrono::milliseconds longest) {
    try {
        file_ = openLockFile(folder);
    } catch (const PlatformError&) {
        if (kind == Kind::Exclusive) throw;
        return;
    }
    const int failure = waitFor(file_, kind, longest);
    if (failure == EWOULDBLOCK) {
        throw PlatformError(errors::kLocked, "another program is changing the files").about(kLockFile);
    }
    if (failure != 0 && kind == Kind::Exclusive) throwSystemError(failure);
}

}  // namespace kolmera
