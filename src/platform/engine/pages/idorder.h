#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace kolmera {

/// Where a row of a page belongs by its ID.
struct IdPlace {
    std::int64_t id;
    bool uncertain;  ///< the row's own ID breaks the order; `id` is one that its neighbours leave free, if they do
};

/// Whether the IDs of a page rise, from above `above` up to `last`.
bool inOrder(std::span<const std::int64_t> ids, std::int64_t above, std::int64_t last);

/// Finds the fewest IDs that break the order of a page. The bounds count when most IDs keep them: they may be what is
/// damaged.
std::vector<IdPlace> placesInOrder(std::span<const std::int64_t> ids, std::int64_t above, std::int64_t last);

}  // namespace kolmera
