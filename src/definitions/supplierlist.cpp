#include "definitions/supplierlist.h"

#include <algorithm>

#include "platform/lettercase.h"

namespace kolmera {

std::vector<SupplierRow> readSuppliers(SqlLayer& sql) {
    const auto records =
        sql.SQLÖppnaRs("SELECT Nummer, Söknamn FROM Leverantör ORDER BY Nummer", RecordsetType::Snapshot);
    std::vector<SupplierRow> suppliers;
    for (; !records->eof(); records->moveNext()) {
        suppliers.push_back({std::string(textOf(records->value(0))), std::string(textOf(records->value(1)))});
    }
    return suppliers;
}

int rowOfSupplier(const std::vector<SupplierRow>& suppliers, std::string_view number) {
    const auto found =
        std::ranges::find_if(suppliers, [number](const SupplierRow& row) { return equalNoCase(row.number, number); });
    return found == suppliers.end() ? -1 : static_cast<int>(found - suppliers.begin());
}

}  // namespace kolmera
