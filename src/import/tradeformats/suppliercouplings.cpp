#include "import/tradeformats/suppliercouplings.h"

#include <algorithm>

#include "db/conversions.h"

namespace kolmera {

std::vector<CoupledSupplier> coupledSuppliers(const std::vector<Coupling>& couplings, SqlLayer& sql,
                                              PassedOver& passedOver) {
    auto rows = sql.SQLÖppnaTabell("Leverantör", "Nummer", options::kReadOnly, false);
    std::vector<CoupledSupplier> suppliers;
    for (const Coupling& coupling : couplings) {
        attempt(passedOver, "Leverantör", [&] {
            const Value key[] = {coupling.supplier};
            if (sql.SQLSökIngenTräff(rows, "=", key)) return;
            suppliers.push_back({.code = coupling.code,
                                 .number = coupling.supplier,
                                 .mainSupplier = coupling.mainSupplier,
                                 .searchName = TillText(rows->value("Söknamn"), sql.locale())});
        });
    }
    return suppliers;
}

std::vector<std::string> couplingRows(const std::vector<CoupledSupplier>& suppliers,
                                      std::string_view mainSupplierText) {
    std::vector<std::string> rows;
    for (const CoupledSupplier& supplier : suppliers) {
        std::string& row = rows.emplace_back(supplier.code + "\t-->\t" + supplier.number + "\t");
        if (supplier.mainSupplier) row += mainSupplierText;
        row += "\t" + supplier.searchName;
    }
    return rows;
}

const CoupledSupplier* SupplierLookup::find(std::string_view code) {
    if (code == lastCode_) return last_;
    lastCode_ = code;
    const auto found = std::ranges::find(suppliers_, toUtf8(code, page_), &CoupledSupplier::code);
    last_ = found == suppliers_.end() ? nullptr : &*found;
    return last_;
}

}  // namespace kolmera
