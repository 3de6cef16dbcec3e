#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/privatefolder.h"
#include "platform/workplaces.h"

namespace kolmera {

/// Bytes that a preview takes for a company of so many: its copy grows by what is read, and its changes are recorded.
std::uint64_t bytesForPreview(std::uint64_t company);

/// A private folder in the first place with room for so many bytes; nullptr when there is none. What earlier programs
/// had to leave behind is removed.
std::unique_ptr<PrivateFolder> makeWorkFolder(const std::vector<WorkPlace>& places, std::uint64_t bytes);

}  // namespace kolmera
