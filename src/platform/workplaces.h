#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "platform/descriptor.h"

namespace kolmera {

/// A folder that a program may work in, and what is free there.
struct WorkPlace {
    std::filesystem::path folder;
    std::uint64_t free = 0;  ///< bytes
};

/// Where a program may work, the best first: $TMPDIR, /var/tmp, the data folder. Places that cannot be looked at are
/// left out.
std::vector<WorkPlace> workPlaces(const std::filesystem::path& dataFolder);

/// A file without a name, gone when it is closed, in the first place with room for so many bytes. Throws PlatformError:
/// kDiskFull where no place has room.
Descriptor workFile(const std::vector<WorkPlace>& places, std::uint64_t bytes);

/// A name for an open file, by which this process can open it again.
std::filesystem::path pathOf(const Descriptor& file);

}  // namespace kolmera
