#pragma once

#include "db/productcolumns.h"

namespace kolmera {

// What a relation of a mask writes to is stored as a code: 0 for nothing, up to 137 the place of a product column, then
// the headings of alternative numbers, then the product columns behind 137.

inline constexpr int kLastColumnBeforeHeadings = 137;
inline constexpr int kLastHeading = 63;  ///< a later one has no code

constexpr int targetOfColumn(int ordinal) {
    return ordinal <= kLastColumnBeforeHeadings ? ordinal : ordinal + kLastHeading;
}

/// `heading` is its number, from 1.
constexpr int targetOfHeading(int heading) { return kLastColumnBeforeHeadings + heading; }

/// The number of the heading that a code means; 0 for codes that mean none.
constexpr int headingOf(int targetCode) {
    const int heading = targetCode - kLastColumnBeforeHeadings;
    return heading >= 1 && heading <= kLastHeading ? heading : 0;
}

/// The place of the product column that a code means; 0 for codes that mean none.
constexpr int columnOf(int targetCode) {
    if (targetCode < 1 || headingOf(targetCode) != 0) return 0;
    return targetCode <= kLastColumnBeforeHeadings ? targetCode : targetCode - kLastHeading;
}

/// The code of a product column; a misspelt name does not compile.
consteval int target(std::string_view column) { return targetOfColumn(ordinal(kProdukt, column)); }

}  // namespace kolmera
