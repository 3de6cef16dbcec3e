#include "platform/engine/sqlite/networklocks.h"

#include <fcntl.h>

#include "platform/descriptor.h"
#include "platform/error.h"
#include "platform/privatefile.h"

namespace kolmera {

namespace {

/// A lock of the first byte that belongs to the open file, not to the process: so one process can try it alone.
struct flock firstByte() {
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_len = 1;
    return lock;
}

bool takes(const Descriptor& file) {
    struct flock lock = firstByte();
    return fcntl(file.get(), F_OFD_SETLK, &lock) == 0;
}

bool seesLock(const Descriptor& file) {
    struct flock lock = firstByte();
    return fcntl(file.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

}  // namespace

bool fileLocksWork(const std::filesystem::path& folder) {
    // Never the database itself: closing any descriptor of a file drops the locks that this process has on it.
    try {
        const PrivateFile probe(folder / "kolmera-lock", "");
        const Descriptor other(probe.path(), O_RDWR | O_NOFOLLOW);
        return takes(probe.descriptor()) && seesLock(other) && !takes(other);
    } catch (const PlatformError&) {
        return true;
    }
}

}  // namespace kolmera
