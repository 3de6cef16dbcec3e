#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "db/sqllayer.h"
#include "lang/languagetexts.h"

namespace kolmera {

/// Rows of texts under headings, as windows and the command line show them.
struct CardTable {
    std::string name;  ///< for other programs: "prices"
    std::string title;
    std::vector<std::string> fields;  ///< of its columns, for other programs
    std::vector<std::string> headings;
    std::vector<std::vector<std::string>> rows;
};

/// What a company holds of a product.
struct ProductCard {
    std::string number, name;
    std::vector<CardTable> tables;  ///< product, prices, supplier prices, alternative numbers, documents
    /// The IDs of its rows by table: what its changes in the records of past runs are found by.
    std::map<std::string, std::set<std::int64_t>> ids;
};

/// Reads a product of the open company by its number; nothing when there is none. Throws PlatformError.
std::optional<ProductCard> productCard(SqlLayer& sql, LanguageTexts& texts, std::string_view number);

}  // namespace kolmera
