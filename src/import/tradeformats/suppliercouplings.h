#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "db/sqllayer.h"
#include "definitions/couplingfile.h"
#include "platform/encodings.h"

namespace kolmera {

/// A supplier code of the price file and the supplier of the company that it stands for.
struct CoupledSupplier {
    std::string code;
    std::string number;
    bool mainSupplier = false;
    std::string searchName;
};

/// The couplings whose supplier exists in the open company, in their order.
std::vector<CoupledSupplier> coupledSuppliers(const std::vector<Coupling>& couplings, SqlLayer& sql,
                                              PassedOver& passedOver);

/// The couplings as rows of LevFastLista: code, arrow, number, `mainSupplierText` beside a main supplier, search name.
std::vector<std::string> couplingRows(const std::vector<CoupledSupplier>& suppliers, std::string_view mainSupplierText);

/// Finds the supplier of a line's code. The last answer is remembered: lines of one supplier come together.
class SupplierLookup {
  public:
    SupplierLookup(std::vector<CoupledSupplier> suppliers, CodePage page)
        : suppliers_(std::move(suppliers)), page_(page) {}

    /// The first coupling whose code is exactly the one in these bytes of the price file, or nullptr.
    const CoupledSupplier* find(std::string_view code);

  private:
    std::vector<CoupledSupplier> suppliers_;
    CodePage page_;
    std::string lastCode_;  ///< bytes of the price file; at first the blank code, which stands for nobody
    const CoupledSupplier* last_ = nullptr;
};

}  // namespace kolmera
