#pragma once

#include <cstdint>
#include <string>

#include "wholeruns/formats.h"

namespace kolmera::bench {

/// A number that depends on the place and the purpose alone, so that every run of the maker gives the same data.
constexpr std::uint64_t mixed(std::uint64_t place, std::uint64_t purpose) {
    std::uint64_t x = place * 0x9E3779B97F4A7C15U + purpose * 0xD1B54A32D192ED03U + 1;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
    return x ^ (x >> 31);
}

/// Whether the place belongs to the `percent` of all places that something holds for.
constexpr bool holds(std::uint64_t place, std::uint64_t purpose, unsigned percent) {
    return mixed(place, purpose) % 100 < percent;
}

/// One article of the trade, as the supplier and the company know it.
struct Item {
    Item(std::uint64_t place, Format format);

    std::uint64_t place;
    std::string number;   ///< product number, seven digits
    std::string article;  ///< the supplier's article number
    std::string name;
    std::string name2;
    std::string unit;
    std::string group;
    std::string discountCode;
    std::string ean;
    std::string micronic;
    std::int64_t purchase;     ///< price in hundredths, as the company has it
    std::int64_t sales;        ///< price in hundredths, as the company has it
    std::int64_t newPurchase;  ///< as the price file has it
    std::int64_t newSales;

    [[nodiscard]] std::string newName() const;  ///< one name in twenty has changed
    /// One article in a hundred is new to the company.
    [[nodiscard]] bool known() const { return place % 100 != 37; }
    /// A few products are bought elsewhere.
    [[nodiscard]] bool ofOtherSupplier() const { return holds(place, 12, 3); }
};

}  // namespace kolmera::bench
