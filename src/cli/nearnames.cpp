#include "cli/nearnames.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "platform/lettercase.h"

namespace kolmera::cli {
namespace {

/// How many bytes have to be changed, added or left out to make one text of the other.
std::size_t changesBetween(std::string_view one, std::string_view other) {
    std::vector<std::size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (const char c : one) {
        std::size_t diagonal = row[0]++;
        for (std::size_t i = 1; i < row.size(); ++i) {
            const std::size_t changed = diagonal + (c == other[i - 1] ? 0 : 1);
            diagonal = std::exchange(row[i], std::min({changed, row[i] + 1, row[i - 1] + 1}));
        }
    }
    return row.back();
}

std::string comparable(std::string_view name) { return replaceAll(upperCase(name), " ", ""); }

}  // namespace

std::vector<std::string> nearNames(std::string_view wanted, const std::vector<std::string>& names) {
    constexpr std::size_t kMost = 3;
    const std::string text = comparable(wanted);
    std::vector<std::pair<std::size_t, std::string>> found;
    for (const std::string& name : names) {
        const std::string candidate = comparable(name);
        const std::size_t changes = changesBetween(text, candidate);
        const bool part = !text.empty() && candidate.find(text) != std::string::npos;
        if (part || changes <= std::max<std::size_t>(2, candidate.size() / 3)) found.emplace_back(changes, name);
    }
    std::ranges::stable_sort(found, {}, &std::pair<std::size_t, std::string>::first);
    found.resize(std::min(found.size(), kMost));
    std::vector<std::string> result;
    for (auto& [changes, name] : found) result.push_back(std::move(name));
    return result;
}

}  // namespace kolmera::cli
