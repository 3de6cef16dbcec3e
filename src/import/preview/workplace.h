#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "platform/privatefolder.h"

namespace kolmera {

/// A folder that a preview may work in, and what is free there.
struct WorkPlace {
    std::filesystem::path folder;
    std::uint64_t free = 0;  ///< bytes
};

/// Where a preview may work, the best first: $TMPDIR, /var/tmp, the data folder. Places that cannot be looked at are
/// left out.
std::vector<WorkPlace> workPlaces(const std::filesystem::path& dataFolder);

/// Bytes that a preview takes for a company of so many: its copy grows by what is read, and its changes are recorded.
std::uint64_t bytesForPreview(std::uint64_t company);

/// A private folder in the first place with room for so many bytes; nullptr when there is none. What earlier programs
/// had to leave behind is removed.
std::unique_ptr<PrivateFolder> makeWorkFolder(const std::vector<WorkPlace>& places, std::uint64_t bytes);

}  // namespace kolmera
