#include "import/productcoupling.h"

#include "db/conversions.h"
#include "import/loadedmask.h"
#include "platform/attempt.h"
#include "pricing/clsprisavrund.h"

namespace kolmera {
namespace {

// Ordinals of Produkt.
constexpr int kInköpsfaktor = 11;
constexpr int kInprisProc = 42;
constexpr int kValutakod = 105;

}  // namespace

ProductCoupling::ProductCoupling(bool hasPurchasePrice, SqlLayer& sql, PrisClsRoundInprisOUtpris& prices,
                                 PassedOver& passedOver)
    : hasPurchasePrice_(hasPurchasePrice),
      sql_(sql),
      prices_(prices),
      passedOver_(passedOver),
      currencies_(sql.SQLÖppnaTabell("Syvaluta", "Kod", options::kReadOnly, false)) {}

void ProductCoupling::couple(Recordset& product) {
    attempt(passedOver_, "Produkt: priskoppling", [&] {
        if (coupled(product)) prices_.Priskoppling(product, netPurchasePrice(product));
    });
}

bool ProductCoupling::coupled(Recordset& product) {
    if (hasPurchasePrice_) {
        for (int level = 1; level <= kPriceLists; ++level) {
            if (TillDbl(product.value(kPåläggPosition + level), sql_.locale()) != 0) return true;
        }
    }
    return prices_.KopplaMotFinns();
}

double ProductCoupling::netPurchasePrice(Recordset& product) {
    const auto number = [&](int ordinal) { return TillDbl(product.value(ordinal), sql_.locale()); };
    lookUpCurrency(textOf(product.value(kValutakod)));
    double net = number(target::kInpris) * rate_ / factor_;
    net -= net * number(kInprisProc) / 100;
    const double purchaseFactor = number(kInköpsfaktor);
    return purchaseFactor == 0 ? net : net / purchaseFactor;
}

void ProductCoupling::lookUpCurrency(std::string_view code) {
    if (code == currency_) return;
    currency_ = code;
    sql_.SQLSök(*currencies_, "=", keys_.of(code), passedOver_);
    if (currencies_->noMatch()) return;
    attempt(passedOver_, "Syvaluta", [&] {
        rate_ = TillDbl(currencies_->value("Levreskontra"), sql_.locale());
        factor_ = TillLng(currencies_->value("Faktor"), sql_.locale());
    });
    if (rate_ == 0) rate_ = 1;
    if (factor_ == 0) factor_ = 1;
}

}  // namespace kolmera
