#pragma once

#include <array>
#include <memory>
#include <string_view>

#include "db/productcolumns.h"
#include "import/rows/rowwriter.h"

namespace kolmera {

/// "Levprislista": one row per product and supplier.
class SupplierPriceRows {
  public:
    /// `rows` is the table by its index "Produktnr".
    SupplierPriceRows(SqlLayer& sql, PassedOver& passedOver, std::unique_ptr<Recordset> rows);

    RowWriter row;
    const Column Produktnr = row.column("Produktnr");
    const Column Leverantör = row.column("Leverantör");
    const Column Levartikelnr = row.column("Levartikelnr");
    const Column Datum = row.column("Datum");
    const Column Rabatt = row.column("Rabatt");
    const Column RabattKod = row.column("RabattKod");
    const Column Inpris = row.column("Inpris");
    const Column InprisFöreRabatt = row.column("InprisFöreRabatt");

    /// The sales price of a price list, 1 to 9.
    [[nodiscard]] const Column& Utpris(std::size_t list) const { return Utpris_.at(list - 1); }

    /// Names product, supplier and the supplier's article number in a new row.
    void name(std::string_view product, std::string_view supplier, std::string_view article);

  private:
    std::array<Column, kPriceLists> Utpris_;
};

/// Opens "Levprislista" for that.
std::unique_ptr<Recordset> openSupplierPrices(SqlLayer& sql);

}  // namespace kolmera
