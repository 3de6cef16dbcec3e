#include "platform/engine/pages/idorder.h"

#include <algorithm>
#include <limits>

namespace kolmera {

namespace {

/// Which IDs form the longest rising sequence; those out of bounds are in none.
std::vector<bool> longestRise(std::span<const std::int64_t> ids, std::int64_t above, std::int64_t last) {
    std::vector<std::size_t> length(ids.size());
    std::size_t longest = 0;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (ids[i] <= above || ids[i] > last) continue;
        length[i] = 1;
        for (std::size_t k = 0; k < i; ++k) {
            if (ids[k] < ids[i] && length[k] >= length[i]) length[i] = length[k] + 1;
        }
        longest = std::max(longest, length[i]);
    }
    std::vector<bool> rising(ids.size());
    for (std::size_t i = ids.size(); i-- > 0;) {
        if (length[i] != longest || longest == 0 || ids[i] > last) continue;
        rising[i] = true;
        last = ids[i] - 1;
        --longest;
    }
    return rising;
}

}  // namespace

bool inOrder(std::span<const std::int64_t> ids, std::int64_t above, std::int64_t last) {
    if (ids.empty()) return true;
    const bool rising = std::ranges::adjacent_find(ids, std::ranges::greater_equal()) == ids.end();
    return rising && ids.front() > above && ids.back() <= last;
}

std::vector<IdPlace> placesInOrder(std::span<const std::int64_t> ids, std::int64_t above, std::int64_t last) {
    using Limits = std::numeric_limits<std::int64_t>;
    const auto within = std::ranges::count_if(ids, [&](std::int64_t id) { return id > above && id <= last; });
    if (2 * static_cast<std::size_t>(within) <= ids.size()) {
        above = Limits::min();
        last = Limits::max();
    }
    std::vector<bool> rising(ids.size(), true);
    if (!inOrder(ids, above, last)) rising = longestRise(ids, above, last);
    std::vector<IdPlace> places;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        places.push_back({ids[i], !rising[i]});
        if (!rising[i]) {
            const auto next = std::find(rising.begin() + static_cast<std::ptrdiff_t>(i), rising.end(), true);
            const std::int64_t end =
                next == rising.end() ? last : ids[static_cast<std::size_t>(next - rising.begin())] - 1;
            if (above != Limits::min() && above < end) places.back().id = above + 1;
        }
        above = std::max(above, rising[i] || places.back().id != ids[i] ? places.back().id : above);
    }
    return places;
}

}  // namespace kolmera
