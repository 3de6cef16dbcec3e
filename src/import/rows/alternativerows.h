#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "import/rows/rowwriter.h"

namespace kolmera {

/// "Prodaltprodnr": one alternative number per product and heading.
class AlternativeRows {
  public:
    /// Opens the table by its index on product and heading.
    AlternativeRows(SqlLayer& sql, PassedOver& passedOver);
    /// `rows` is the table, opened so or for adding only.
    AlternativeRows(SqlLayer& sql, PassedOver& passedOver, std::unique_ptr<Recordset> rows);

    RowWriter row;
    const Column Produktnr = row.column("Produktnr");
    const Column Nummer = row.column("Nummer");
    const Column Alternativnr = row.column("Alternativnr");

    /// Names product and heading in a new row.
    void name(std::string_view product, int heading);
    void put(std::string_view product, int heading, std::string_view alternative);
};

}  // namespace kolmera
