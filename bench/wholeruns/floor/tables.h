#pragma once

#include "wholeruns/floor/row.h"

namespace kolmera::bench {

/// The columns of Levprislista that the loaders write.
namespace pricelist {
enum : int { kProduct, kSupplier, kArticleNumber, kDate, kDiscount, kDiscountCode, kNet, kGross, kSales1, kCount };
}

/// The row of a product and a supplier in the supplier price list.
inline Row priceListRow(Connection& connection, std::vector<int> read,
                        const char* condition = "Produktnr = ?1 AND Leverantör = ?2") {
    return {connection,
            "Levprislista",
            {"Produktnr", "Leverantör", "Levartikelnr", "Datum", "Rabatt", "RabattKod", "Inpris", "InprisFöreRabatt",
             "Utpris1"},
            read,
            condition};
}

/// The columns of Prodaltprodnr.
namespace alternative {
enum : int { kProduct, kHeading, kNumber };
}

/// The alternative number of a product under a heading.
inline Row alternativeRow(Connection& connection) {
    static constexpr int kRead[] = {alternative::kNumber};
    return {
        connection, "Prodaltprodnr", {"Produktnr", "Nummer", "Alternativnr"}, kRead, "Produktnr = ?1 AND Nummer = ?2"};
}

}  // namespace kolmera::bench
