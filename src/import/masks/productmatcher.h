#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "db/dvdbsqltable.h"
#include "db/sqllayer.h"
#include "import/masks/entrylist.h"
#include "import/masks/loadedmask.h"
#include "import/rows/seekkeys.h"
#include "import/run/runreport.h"

namespace kolmera {

/// What a record is about. The texts are valid until the next record is read.
struct ProductMatch {
    enum class Outcome {
        Skip,           ///< nothing: no usable key, or no product and none to be created
        Edit,           ///< the product that `Produkt` is positioned on
        Add,            ///< a product that does not exist yet
        PriceListOnly,  ///< only the supplier price list knows the article
    };
    Outcome outcome = Outcome::Skip;
    Remark skipped = Remark::NoProduct;  ///< Skip: why
    std::string_view key;
    std::string_view supplier;       ///< whose prices the record brings
    std::string_view productNumber;  ///< PriceListOnly: the product of the price list's row
};

/// Finds the product of a record by the mask's search key: its number, its search name, the supplier's article number
/// or an alternative number.
class ProductMatcher {
  public:
    /// `products` is the run's `Produkt`, opened with `index`; on a server a search replaces it.
    ProductMatcher(const LoadedMask& mask, std::string_view jobSupplier, SqlLayer& sql,
                   std::unique_ptr<Recordset>& products, PassedOver& passedOver);

    /// The index of `Produkt` that a search key uses.
    static std::string_view index(int keyTarget);

    /// Errors of a search reach the caller, who skips the record.
    ProductMatch match(const EntryList& entries);

  private:
    [[nodiscard]] ProductMatch::Outcome foundOr(bool found) const;
    ProductMatch::Outcome byNumber(std::string_view key);
    ProductMatch::Outcome bySearchName(std::string_view key);
    ProductMatch::Outcome byAlternative(std::string_view key);
    ProductMatch::Outcome byArticle(std::string_view key, std::string_view supplier);
    ProductMatch::Outcome throughPriceList(std::string_view key, std::string_view supplier);
    [[nodiscard]] std::string_view recordSupplier(const EntryList& entries) const;
    [[nodiscard]] bool isOf(std::string_view supplier);
    [[nodiscard]] bool walkToSupplier(std::string_view key, std::string_view supplier);

    const LoadedMask& mask_;
    std::string jobSupplier_;
    SqlLayer& sql_;
    std::unique_ptr<Recordset>& products_;
    PassedOver& passedOver_;
    std::unique_ptr<Recordset> alternatives_;  ///< Prodaltprodnr by Alternativnr; for alternative keys
    ClsDVDBSQLTable priceList_;                ///< Levprislista by Levartikelnr; for article keys of one supplier
    SeekKeys keys_;
    std::string productNumber_;
};

}  // namespace kolmera
