#include "import/preview/workplace.h"

#include "platform/error.h"

namespace kolmera {
namespace {

constexpr std::string_view kPrefix = ".kolmera-preview";

}  // namespace

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
