#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "db/sqllayer.h"
#include "discounts/rabattbrev.h"
#include "import/masks/entrylist.h"
#include "import/masks/loadedmask.h"
#include "import/rows/supplierpricerows.h"
#include "import/run/runsummary.h"
#include "platform/date.h"
#include "pricing/pricetrace.h"

namespace kolmera {

/// Writes the supplier's price list row of a record, and counts it. The prices are the file's own: without VAT, and of
/// them only the net purchase price is rounded.
class PriceListWriter {
  public:
    /// `priceList` is what `openSupplierPrices` opened.
    PriceListWriter(const LoadedMask& mask, SqlLayer& sql, std::unique_ptr<Recordset> priceList, std::uint8_t InprisDec,
                    Date Idag, RunSummary& summary, PriceTrace* trace = nullptr);

    /// Writes the row of a product and supplier; false when it could not be saved. `articleNumber` is asked for when
    /// the row is new. `discount` is what the product's discount column got from the record.
    bool write(std::string_view productNumber, std::string_view supplier,
               const std::function<std::string()>& articleNumber, std::optional<double> discount,
               const EntryList& entries);

  private:
    void writePurchasePrice(std::string_view supplier, std::optional<double> discount, const EntryList& entries);
    double netByDiscount(double gross, std::optional<double> discount, const EntryList& entries);
    double netByLetter(double gross, std::string_view supplier, std::string_view code);
    void tellDiscount(double gross, double percent, double net);
    [[nodiscard]] Date dateOf(const EntryList& entries) const;
    [[nodiscard]] double number(const Column& column, const Source& source, const EntryList& entries);

    const LoadedMask& mask_;
    SqlLayer& sql_;
    RunReport& report_;
    PriceTrace* trace_;
    SupplierPriceRows prices_;
    Rabattbrev letters_;
    std::uint8_t InprisDec_;
    Date Idag_;
};

}  // namespace kolmera
