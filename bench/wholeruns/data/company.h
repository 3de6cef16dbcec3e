#pragma once

#include <cstdint>

#include "wholeruns/formats.h"
#include "wholeruns/sqlite.h"

namespace kolmera::bench {

/// Fills the tables of an empty company: settings with price coupling, currencies, suppliers, discount letters,
/// headings, product groups, and the known ones of `products` articles with their price list and alternative numbers.
void fillCompany(Connection& company, Format format, std::uint64_t products);

}  // namespace kolmera::bench
