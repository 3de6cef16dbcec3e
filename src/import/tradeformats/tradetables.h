#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "discounts/rabattbrev.h"
#include "import/rows/alternativerows.h"
#include "import/rows/defaults.h"
#include "import/rows/rowwriter.h"
#include "import/rows/supplierpricerows.h"
#include "import/run/runsummary.h"
#include "platform/date.h"
#include "pricing/changedate.h"
#include "pricing/listsetting.h"
#include "pricing/prisclsroundinprisoutpris.h"

namespace kolmera {

/// "Produkt" as the trade formats write it. Order for a record: `editOrAdd`, `write` ..., `save`.
class ProductRows {
  public:
    ProductRows(SqlLayer& sql, PassedOver& passedOver);

    RowWriter row;
    const Column Nummer = row.column("Nummer");
    const Column Leverantör = row.column("Leverantör");
    const Column Levartikelnr = row.column("Levartikelnr");
    const Column Grupp = row.column("Grupp");
    const Column Benämning = row.column("Benämning");
    const Column InköpsEnhet = row.column("InköpsEnhet");
    const Column Försäljenhet = row.column("Försäljenhet");
    const Column Statistikenhet = row.column("Statistikenhet");
    const Column Inpris = row.column("Inpris");
    const Column InprisProc = row.column("InprisProc");
    const Column Prisändrdat = row.column("Prisändrdat");
    const Column Försäljning = row.column("Försäljning");
    const Column Rubrik0 = row.column("Rubrik0");
    const Column Rubrik1 = row.column("Rubrik1");
    const Column Antal1 = row.column("Antal1");
    const Column Förändringsdatum = row.column(kFörändringsdatum);

    /// The sales price and the markup of a price level, 1 to 9. They are found by position.
    [[nodiscard]] const Column& Utpris(int level) const { return Utpris_[static_cast<std::size_t>(level - 1)]; }
    [[nodiscard]] const Column& Pålägg(int level) const { return Pålägg_[static_cast<std::size_t>(level - 1)]; }

    /// The purchase price less the product's own percentage.
    [[nodiscard]] double netCost(double purchasePrice);
    /// The unrounded sales price of a level: the net cost with the product's markup in per cent.
    [[nodiscard]] double markedUp(double netCost, int level);

    PriceTrace* trace = nullptr;  ///< hears how prices are computed

  private:
    std::array<Column, kPriceLists> Utpris_, Pålägg_;
};

/// What the records of a trade-format file are written to.
class TradeTables {
  public:
    /// References to what the run has opened; all outlive the tables.
    struct Parts {
        ProductRows& products;
        SupplierPriceRows& supplierPrices;
        AlternativeRows* alternatives;  ///< nullptr when the format has none
        NewProductDefaults& defaults;
        Rabattbrev& discountLetters;
        PrisClsRoundInprisOUtpris& prices;
        RunSummary& summary;
        Date Idag;
        PriceTrace* trace = nullptr;  ///< hears how prices are computed
    };
    explicit TradeTables(const Parts& parts);

    /// As `RowWriter::lookOnly`: rows are looked up, prices are not worked out, and nothing is counted.
    void lookOnly(bool on);

    [[nodiscard]] ProductRows& products() { return parts_.products; }
    [[nodiscard]] SupplierPriceRows& supplierPrices() { return parts_.supplierPrices; }
    [[nodiscard]] double discount(std::string_view supplier, std::string_view code) {
        return parts_.discountLetters.BeräknaRabattbrev(supplier, code);
    }
    [[nodiscard]] PriceTrace* trace() const { return parts_.trace; }
    /// A price less a discount, which is a fraction.
    [[nodiscard]] double discounted(double price, double discount) const;
    /// Rounded to the decimals of purchase prices.
    [[nodiscard]] double roundedInpris(double price) const;
    /// Rounded by the rules of a price level, 1 to 9.
    [[nodiscard]] double roundedUtpris(double price, int level) const;

    /// Edits the product, or begins it with the company's defaults: they are in place before any column is written, so
    /// that a default markup counts for the first price.
    RowWriter::Row editOrAddProduct(std::string_view number);
    /// Saves the product with today as the day of its change.
    void saveProduct(std::string_view number, RowWriter::Row row);
    /// Edits the supplier's row of the product, or begins it; a new row gets the product number as article number too.
    /// False when the row is unreachable.
    bool editOrAddSupplierPrice(std::string_view product, std::string_view supplier);
    void saveSupplierPrice();
    void putAlternative(std::string_view product, int heading, std::string_view alternative);

  private:
    Parts parts_;
    bool looksOnly_ = false;
};

}  // namespace kolmera
