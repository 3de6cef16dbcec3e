#include "import/preview/workplace.h"

#include <sys/statvfs.h>

#include <cstdlib>

#include "platform/error.h"

namespace kolmera {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view kPrefix = ".kolmera-preview";

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

std::uint64_t bytesForPreview(std::uint64_t company) {
    constexpr std::uint64_t kLeast = std::uint64_t{32} << 20;
    return company + company / 2 + kLeast;
}

std::unique_ptr<PrivateFolder> makeWorkFolder(const std::vector<WorkPlace>& places, std::uint64_t bytes) {
    for (const WorkPlace& place : places) PrivateFolder::sweep(place.folder, kPrefix);
    for (const WorkPlace& place : places) {
        if (place.free < bytes) continue;
        try {
            return std::make_unique<PrivateFolder>(place.folder, kPrefix);
        } catch (const PlatformError&) {
            continue;  // it may not be written
        }
    }
    return nullptr;
}

}  // namespace kolmera
