#include "platform/privatefolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <vector>

#include "platform/error.h"

namespace kolmera {
namespace fs = std::filesystem;
namespace {

bool isOwnFolder(const struct stat& seen) { return S_ISDIR(seen.st_mode) && seen.st_uid == geteuid(); }

/// The folder opened and locked; not open where somebody works in it, or it is no folder of ours.
Descriptor locked(const fs::path& folder, int* refusal = nullptr) {
    const int opened = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (opened < 0) return {};
    Descriptor descriptor(opened);
    struct stat held {};
    struct stat named {};
    const bool ours = fstat(opened, &held) == 0 && isOwnFolder(held);
    const bool isLocked = ours && flock(opened, LOCK_EX | LOCK_NB) == 0;
    if (ours && !isLocked && refusal != nullptr) *refusal = errno;
    // Who swept it meanwhile has removed the name.
    const bool there = isLocked && lstat(folder.c_str(), &named) == 0 && named.st_ino == held.st_ino;
    return there ? std::move(descriptor) : Descriptor();
}

void removeAll(const fs::path& folder) noexcept {
    try {
        std::error_code stays;
        fs::remove_all(folder, stays);
    } catch (const std::bad_alloc&) {
        // Swept another time.
    }
}

}  // namespace

PrivateFolder::PrivateFolder(const fs::path& in, std::string_view prefix) {
    constexpr int kTries = 10;  // another program may sweep a folder before it is locked
    for (int tries = 0; tries < kTries && !lock_.isOpen(); ++tries) {
        std::string name = (in / prefix).string().append("-XXXXXX");
        if (mkdtemp(name.data()) == nullptr) throwSystemError(errno);
        path_ = name;
        int refusal = 0;
        lock_ = locked(path_, &refusal);
        if (refusal != 0 && refusal != EWOULDBLOCK) return;  // some network disks lock no folders
    }
    if (!lock_.isOpen()) throw PlatformError(errors::kLocked, "the folder cannot be locked").about(path_.string());
}

PrivateFolder::~PrivateFolder() { removeAll(path_); }

void PrivateFolder::sweep(const fs::path& in, std::string_view prefix) noexcept {
    try {
        std::vector<fs::path> found;
        std::error_code unreadable;
        const std::string beginning = std::string(prefix).append("-");
        for (fs::directory_iterator entry(in, unreadable), end; !unreadable && entry != end;
             entry.increment(unreadable)) {
            if (entry->path().filename().string().starts_with(beginning)) found.push_back(entry->path());
        }
        for (const fs::path& folder : found) {
            if (const Descriptor lock = locked(folder); lock.isOpen()) removeAll(folder);
        }
    } catch (const std::bad_alloc&) {
        // Swept another time.
    }
}

}  // namespace kolmera
