#include "history/runlock.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>

#include "platform/error.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

constexpr const char* kLockFile = "KOLMERA.LCK";

/// The byte of a run, by FNV-1a: of many billions, so that two runs share none.
struct flock byteOf(std::string_view run) {
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char c : run) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    struct flock byte {};
    byte.l_type = F_WRLCK;
    byte.l_whence = SEEK_SET;
    byte.l_start = static_cast<off_t>(hash >> 2);
    byte.l_len = 1;
    return byte;
}

/// Whoever may write records may lock them.
Descriptor lockFile(const fs::path& folder) {
    const fs::path file = folder / kLockFile;
    const int made = open(file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (made < 0 && errno == EEXIST) return Descriptor(file, O_RDWR | O_NOFOLLOW | O_CLOEXEC);
    Descriptor descriptor(made);
    struct stat of {};
    if (stat(folder.c_str(), &of) == 0) (void)fchmod(made, of.st_mode & 0666);
    return descriptor;
}

}  // namespace

RunLock::RunLock(const fs::path& folder, std::string_view run) {
    try {
        file_ = lockFile(folder);
    } catch (const PlatformError&) {
        return;
    }
    struct flock byte = byteOf(run);
    held_ = fcntl(file_.get(), F_OFD_SETLK, &byte) == 0;
}

std::optional<bool> RunLock::isHeld(const fs::path& folder, std::string_view run) {
    try {
        const Descriptor file(folder / kLockFile, O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
        struct flock byte = byteOf(run);
        if (fcntl(file.get(), F_OFD_GETLK, &byte) != 0) return std::nullopt;
        return byte.l_type != F_UNLCK;
    } catch (const PlatformError& error) {
        if (error.number() == errors::kFileNotFound) return false;
        return std::nullopt;
    }
}

}  // namespace kolmera
