#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kolmera::bench {

/// Compares two company files table by table, row by row in the order of their IDs, every value with its type. Returns
/// one line for each of the first `most` differences; empty when the tables are equal.
std::vector<std::string> differences(const std::filesystem::path& a, const std::filesystem::path& b, std::size_t most);

}  // namespace kolmera::bench
