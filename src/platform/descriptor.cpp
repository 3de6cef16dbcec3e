#include "platform/descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/error.h"

namespace kolmera {

namespace {

/// Repeats a system call that a signal broke off.
template <typename Call>
ssize_t retried(Call call) {
    for (;;) {
        const ssize_t result = call();
        if (result >= 0) return result;
        if (errno != EINTR) throwSystemError(errno);
    }
}

struct stat statusOf(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) throwSystemError(errno);
    return status;
}

}  // namespace

void throwSystemError(int systemError) {
    const auto number = [systemError] {
        switch (systemError) {
            case ENOENT:
            case ENOTDIR:
                return errors::kFileNotFound;
            case ENOSPC:
            case EDQUOT:
            case EFBIG:  // the user's or the disk's limit for a file
                return errors::kDiskFull;
            default:
                return errors::kInternal;
        }
    };
    throw PlatformError(number(), std::generic_category().message(systemError)).ofSystem(systemError);
}

Descriptor::Descriptor(const std::filesystem::path& file, int flags, unsigned mode)
    : descriptor_(static_cast<int>(retried([&] { return open(file.c_str(), flags | O_CLOEXEC, mode); }))) {
    struct stat status {};
    const int failure = fstat(descriptor_, &status) != 0 ? errno : S_ISDIR(status.st_mode) ? EISDIR : 0;
    if (failure == 0) return;
    close(descriptor_);
    throwSystemError(failure);
}

Descriptor::Descriptor(int opened) : descriptor_(opened) {
    if (opened < 0) throwSystemError(errno);
}

Descriptor::Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

Descriptor::~Descriptor() {
    if (isOpen()) close(descriptor_);
}

std::size_t Descriptor::size() const { return static_cast<std::size_t>(statusOf(descriptor_).st_size); }

std::size_t Descriptor::read(char* bytes, std::size_t count) const {
    return static_cast<std::size_t>(retried([&] { return ::read(descriptor_, bytes, count); }));
}

std::size_t Descriptor::readAt(std::size_t offset, char* bytes, std::size_t count) const {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got =
            retried([&] { return pread(descriptor_, bytes + done, count - done, static_cast<off_t>(offset + done)); });
        if (got == 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

void Descriptor::write(std::string_view bytes) const {
    while (!bytes.empty()) {
        bytes.remove_prefix(
            static_cast<std::size_t>(retried([&] { return ::write(descriptor_, bytes.data(), bytes.size()); })));
    }
}

void Descriptor::writeAt(std::size_t offset, std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t written =
            retried([&] { return pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset)); });
        bytes.remove_prefix(static_cast<std::size_t>(written));
        offset += static_cast<std::size_t>(written);
    }
}

void Descriptor::copyRights(const Descriptor& other) const {
    const struct stat status = statusOf(other.descriptor_);
    // Only the system's administrator may give a file away. The owner comes first: changing it takes rights back.
    if (fchown(descriptor_, status.st_uid, status.st_gid) != 0 && errno != EPERM) throwSystemError(errno);
    if (fchmod(descriptor_, status.st_mode & 07777) != 0 && errno != EPERM) throwSystemError(errno);
}

void Descriptor::sync() const {
    retried([&] { return fsync(descriptor_); });
}

void moveOver(const Descriptor& finished, const std::filesystem::path& from, const std::filesystem::path& to) {
    finished.sync();
    if (rename(from.c_str(), to.c_str()) != 0) throwSystemError(errno);
    syncFolder(to.parent_path());
}

void syncFolder(const std::filesystem::path& folder) {
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);
    close(descriptor);
}

}  // namespace kolmera
