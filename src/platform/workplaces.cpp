#include "platform/workplaces.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/statvfs.h>

#include <cerrno>
#include <cstdlib>

#include "platform/error.h"
#include "platform/privatefile.h"

namespace kolmera {
namespace fs = std::filesystem;
namespace {

Descriptor namelessIn(const fs::path& folder) {
    const int unnamed = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, PrivateFile::kForOwner);
    if (unnamed >= 0) return Descriptor(unnamed);
    // Some file systems have no files without names.
    const PrivateFile named(folder / ".kolmera", "");
    return Descriptor(fcntl(named.descriptor().get(), F_DUPFD_CLOEXEC, 0));
}

}  // namespace

std::vector<WorkPlace> workPlaces(const fs::path& dataFolder) {
    std::vector<fs::path> folders;
    if (const char* wanted = std::getenv("TMPDIR"); wanted != nullptr && *wanted == '/') folders.emplace_back(wanted);
    folders.emplace_back("/var/tmp");
    folders.push_back(dataFolder);
    std::vector<WorkPlace> places;
    for (fs::path& folder : folders) {
        struct statvfs seen {};
        if (statvfs(folder.c_str(), &seen) != 0) continue;
        places.push_back({std::move(folder), std::uint64_t{seen.f_bavail} * seen.f_frsize});
    }
    return places;
}

Descriptor workFile(const std::vector<WorkPlace>& places, std::uint64_t bytes) {
    for (const WorkPlace& place : places) {
        if (place.free < bytes) continue;
        try {
            return namelessIn(place.folder);
        } catch (const PlatformError&) {
            continue;  // it may not be written
        }
    }
    throwSystemError(ENOSPC);
}

fs::path pathOf(const Descriptor& file) { return fmt::format("/proc/self/fd/{}", file.get()); }

}  // namespace kolmera
