#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "db/sqllayer.h"

namespace kolmera {

struct FoundProduct {
    std::string number, searchName, name, supplier, article;
};

/// Finds products of the open company by any of their numbers, or by words of their names. Throws PlatformError.
class ProductFinder {
  public:
    explicit ProductFinder(SqlLayer& sql) : sql_(sql) {}

    /// The products whose product number, search name, supplier's number or alternative number begins as it is typed,
    /// those that are just that first; where there are fewer than `most`, then those whose names and numbers have all
    /// its words. Nothing for an empty text.
    [[nodiscard]] std::vector<FoundProduct> find(std::string_view typed, std::size_t most);
    /// The numbers of the products that have just that number, of whatever kind; a product number is one product's.
    [[nodiscard]] std::vector<std::string> named(std::string_view number);

  private:
    class Found;
    void byNumbers(std::string_view typed, Found& found);
    void byWords(std::string_view typed, Found& found);
    void readNames();

    SqlLayer& sql_;
    std::vector<FoundProduct> names_;  ///< of all products, when somebody has searched by words
    std::optional<std::uint64_t> stamp_;
};

}  // namespace kolmera
