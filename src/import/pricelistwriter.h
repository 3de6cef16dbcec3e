#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "db/sqllayer.h"
#include "discounts/rabattbrev.h"
#include "import/entrylist.h"
#include "import/loadedmask.h"
#include "import/runreport.h"
#include "import/seekkeys.h"
#include "platform/date.h"

namespace kolmera {

/// Writes the supplier's price list row of a record. The prices are the file's own: without VAT, and of them only
/// the net purchase price is rounded.
class PriceListWriter {
  public:
    /// `priceList` is `Levprislista` by its index "Produktnr".
    PriceListWriter(const LoadedMask& mask, SqlLayer& sql, std::unique_ptr<Recordset> priceList, std::uint8_t InprisDec,
                    Date Idag, RunReport& report);

    /// Writes the row of a product and supplier; false when it could not be saved. `articleNumber` is asked for when
    /// the row is new. `discount` is what the product's discount column got from the record.
    bool write(std::string_view productNumber, std::string_view supplier,
               const std::function<std::string()>& articleNumber, std::optional<double> discount,
               const EntryList& entries);

  private:
    struct Columns {
        explicit Columns(const Recordset& priceList);
        int Produktnr, Leverantör, Levartikelnr, Datum, Rabatt, RabattKod, Inpris, InprisFöreRabatt;
        std::array<int, 10> Utpris;  ///< by price level, from 1
    };

    void startRow(std::string_view productNumber, std::string_view supplier,
                  const std::function<std::string()>& articleNumber);
    void set(int column, Value value);
    void writePurchasePrice(std::string_view supplier, std::optional<double> discount, const EntryList& entries);
    double netByDiscount(double gross, std::optional<double> discount, const EntryList& entries);
    double netByLetter(double gross, std::string_view supplier, std::string_view code);
    [[nodiscard]] Date dateOf(const EntryList& entries) const;
    [[nodiscard]] double number(int column, const Source& source, const EntryList& entries);

    const LoadedMask& mask_;
    SqlLayer& sql_;
    std::unique_ptr<Recordset> priceList_;
    RunReport& report_;
    Rabattbrev letters_;
    Columns columns_;
    std::vector<std::string> names_;  ///< table and column, for what is passed over
    std::uint8_t InprisDec_;
    Date Idag_;
    SeekKeys keys_;
};

}  // namespace kolmera
