#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "db/sqllayer.h"

namespace kolmera {

/// The table of discount letters; its columns are addressed by their place.
namespace lettertable {

inline constexpr std::string_view kName = "Levrabattbrev";
inline constexpr int kId = 0;
inline constexpr int kSupplier = 1;
inline constexpr int kCode = 2;
inline constexpr int kFirstDiscount = 3;

/// The statement that selects one supplier's letter.
inline std::string letterOf(std::string_view supplier) {
    return "SELECT * FROM " + std::string(kName) + " WHERE Leverantör = " + SqlLayer::SQLText(supplier);
}

/// The ID of the current record.
inline std::int64_t idOf(Recordset& letter) {
    const auto* id = std::get_if<std::int64_t>(&letter.value(kId));
    return id != nullptr ? *id : 0;
}

}  // namespace lettertable
}  // namespace kolmera
