#include "import/rows/supplierpricerows.h"

#include <string>
#include <utility>

namespace kolmera {
namespace {

template <std::size_t... list>
std::array<Column, sizeof...(list)> utpris(const RowWriter& row, std::index_sequence<list...>) {
    return {row.column("Utpris" + std::to_string(list + 1))...};
}

}  // namespace

SupplierPriceRows::SupplierPriceRows(SqlLayer& sql, PassedOver& passedOver, std::unique_ptr<Recordset> rows)
    : row(sql, passedOver, "Levprislista", std::move(rows)),
      Utpris_(utpris(row, std::make_index_sequence<kPriceLists>())) {}

void SupplierPriceRows::name(std::string_view product, std::string_view supplier, std::string_view article) {
    row.write(Produktnr, product);
    row.write(Leverantör, supplier);
    row.write(Levartikelnr, article);
}

std::unique_ptr<Recordset> openSupplierPrices(SqlLayer& sql) {
    return sql.SQLÖppnaTabell("Levprislista", "Produktnr", 0, false);
}

}  // namespace kolmera
