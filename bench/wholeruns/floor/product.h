#pragma once

#include <string>
#include <string_view>

#include "wholeruns/floor/row.h"

namespace kolmera::bench {

class Settings;
class Currencies;

/// The columns of Produkt that the loaders read or write, as places in a Row; `kSales + n` and `kMarkup + n` are price
/// list n.
namespace product {
enum : int {
    kNumber,
    kSupplier,
    kArticleNumber,
    kGroup,
    kName,
    kName2,
    kPurchasePrice,
    kPurchasePercent,
    kWeightedPrice,
    kSales = kWeightedPrice,
    kMarkup = kSales + 9,
    kPurchaseFactor = kMarkup + 10,
    kCurrency,
    kPriceDate,
    kChangeDate,
    kPurchaseUnit,
    kSalesUnit,
    kStatisticsUnit,
    kQuantity1,
    kHeading0,
    kHeading1,
    kSale,
    kSalesFactor,
    kStatisticsFactor,
    kKind,
    kVatCode,
    kStockValue,
    kValuationLevel,
    kPriceList,
    kStocked,
    kCount
};
}

/// A row of Produkt, sought by one of its columns; only the `read` columns are read from the table.
Row productRow(Connection& connection, const std::string& keyColumn, std::span<const int> read);

/// The columns that `couplePrices` reads.
std::vector<int> withCoupling(std::vector<int> read);

/// Fills what a new product still lacks from the company's settings.
void applyDefaults(Row& product, const Settings& settings);

/// What a mask's purchase price does beyond its own column: the sales prices that are coupled to it, recomputed. The
/// product's date of prices follows a real change.
void couplePrices(Row& product, const Settings& settings, Currencies& currencies, std::string_view today);

/// Whether two amounts differ by at most 0.001.
bool nearlyEqual(double a, double b);

}  // namespace kolmera::bench
