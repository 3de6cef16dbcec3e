#include "pricing/listsetting.h"

#include <optional>

#include "platform/lettercase.h"

namespace kolmera {
namespace {

/// The list that an entry is for: a digit 1 to 9 and "=" in front.
std::optional<int> listOf(std::string_view entry) {
    if (entry.size() < 2 || entry[1] != '=' || entry[0] < '1' || entry[0] > '9') return std::nullopt;
    return entry[0] - '0';
}

}  // namespace

ListSetting::ListSetting(std::string_view standard) : standard_(standard) { texts_.fill(standard_); }

void ListSetting::read(std::string_view setting) {
    std::array<bool, kPriceLists> found{};
    texts_.fill(standard_);
    for (const std::string& entry : split(setting, ";")) {
        const auto list = listOf(entry);
        if (!list || found.at(place(*list))) continue;
        found.at(place(*list)) = true;
        set(*list, std::string_view(entry).substr(2));
    }
}

}  // namespace kolmera
