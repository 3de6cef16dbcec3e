#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "db/sqllayer.h"
#include "import/rows/seekkeys.h"
#include "pricing/pricetrace.h"
#include "pricing/prisclsroundinprisoutpris.h"

namespace kolmera {

/// Has the coupled out prices of a saved product recomputed from its net purchase price in home currency. The rate of
/// the last currency is kept for the run, and serves for currencies that the company does not have.
class ProductCoupling {
  public:
    /// `hasPurchasePrice`: the mask brings purchase prices; then a markup on the product couples it.
    ProductCoupling(bool hasPurchasePrice, SqlLayer& sql, PrisClsRoundInprisOUtpris& prices, PassedOver& passedOver,
                    PriceTrace* trace = nullptr);

    /// Recomputes the current product when it is coupled.
    void couple(Recordset& product);

    /// The last currency.
    struct Currency {
        std::string code = {};
        double rate = 1;
        std::int32_t factor = 1;
    };
    [[nodiscard]] const Currency& currency() const { return currency_; }
    void currency(const Currency& currency) { currency_ = currency; }

  private:
    [[nodiscard]] bool coupled(Recordset& product);
    [[nodiscard]] double netPurchasePrice(Recordset& product);
    void lookUpCurrency(std::string_view code);

    bool hasPurchasePrice_;
    SqlLayer& sql_;
    PrisClsRoundInprisOUtpris& prices_;
    PassedOver& passedOver_;
    PriceTrace* trace_;
    std::unique_ptr<Recordset> currencies_;
    SeekKeys keys_;
    Currency currency_;
};

}  // namespace kolmera
