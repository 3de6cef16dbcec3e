#include "import/masks/productcoupling.h"

#include "db/conversions.h"
#include "db/productcolumns.h"
#include "platform/attempt.h"

namespace kolmera {
ProductCoupling::ProductCoupling(bool hasPurchasePrice, SqlLayer& sql, PrisClsRoundInprisOUtpris& prices,
                                 PassedOver& passedOver, PriceTrace* trace)
    : hasPurchasePrice_(hasPurchasePrice),
      sql_(sql),
      prices_(prices),
      passedOver_(passedOver),
      trace_(trace),
      currencies_(sql.SQLÖppnaTabell("Syvaluta", "Kod", options::kReadOnly, false)) {}

void ProductCoupling::couple(Recordset& product) {
    attempt(passedOver_, "Produkt", [&] {
        if (coupled(product)) prices_.Priskoppling(product, netPurchasePrice(product));
    });
}

bool ProductCoupling::coupled(Recordset& product) {
    if (hasPurchasePrice_) {
        for (int level = 1; level <= kPriceLists; ++level) {
            if (TillDbl(product.value(påläggOrdinal(level)), sql_.locale()) != 0) return true;
        }
    }
    return prices_.KopplaMotFinns();
}

double ProductCoupling::netPurchasePrice(Recordset& product) {
    const auto number = [&](int column) { return TillDbl(product.value(column), sql_.locale()); };
    lookUpCurrency(textOf(product.value(ordinal(kProdukt, "Valutakod"))));
    const double purchasePrice = number(ordinal(kProdukt, "Inpris"));
    const double inHomeCurrency = purchasePrice * currency_.rate / currency_.factor;
    const double percent = number(ordinal(kProdukt, "InprisProc"));
    const double net = inHomeCurrency - inHomeCurrency * percent / 100;
    const double purchaseFactor = number(ordinal(kProdukt, "Inköpsfaktor"));
    const double result = purchaseFactor == 0 ? net : net / purchaseFactor;
    if (trace_) {
        startFrom(*trace_, PriceTrace::kNetCost, "Produkt.Inpris", purchasePrice);
        trace_->step({.step = PriceStep::Rate,
                      .value = inHomeCurrency,
                      .operand = currency_.rate,
                      .second = static_cast<double>(currency_.factor),
                      .text = currency_.code});
        trace_->step({.step = PriceStep::Deduction, .value = net, .operand = percent});
        if (purchaseFactor != 0) trace_->step({.step = PriceStep::Factor, .value = result, .operand = purchaseFactor});
    }
    return result;
}

void ProductCoupling::lookUpCurrency(std::string_view code) {
    if (code == currency_.code) return;
    currency_.code = code;
    sql_.SQLSök(*currencies_, "=", keys_.of(code), passedOver_);
    if (currencies_->noMatch()) return;
    attempt(passedOver_, "Syvaluta", [&] {
        currency_.rate = TillDbl(currencies_->value("Levreskontra"), sql_.locale());
        currency_.factor = TillLng(currencies_->value("Faktor"), sql_.locale());
    });
    if (currency_.rate == 0) currency_.rate = 1;
    if (currency_.factor == 0) currency_.factor = 1;
}

}  // namespace kolmera
