#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "wholeruns/formats.h"

namespace kolmera::bench {

/// The places of `records` articles, in product-number order or shuffled (always the same way).
std::vector<std::uint64_t> placesInOrder(std::uint64_t records, bool shuffled);

/// Writes the price file of a format with one price record an article, and for RSK its product groups.
void writePriceFile(const std::filesystem::path& folder, Format format, const std::vector<std::uint64_t>& places);

}  // namespace kolmera::bench
