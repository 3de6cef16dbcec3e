#include "pricing/prisclsroundinprisoutpris.h"

#include "db/conversions.h"
#include "platform/error.h"
#include "pricing/changedate.h"
#include "pricing/clsprisavrund.h"
#include "pricing/pricetrace.h"
#include "pricing/rounding.h"

namespace kolmera {
namespace {

constexpr std::uint8_t kStandardDecimals = 2;
constexpr int kMostDecimals = 15;  ///< of `roundDecimals`

constexpr int kInpris = ordinal(kProdukt, "Inpris");
constexpr int kVägtinpris = ordinal(kProdukt, "Vägtinpris");
constexpr std::string_view kUtpris[kPriceLists] = {"Produkt.1Utpris", "Produkt.2Utpris", "Produkt.3Utpris",
                                                   "Produkt.4Utpris", "Produkt.5Utpris", "Produkt.6Utpris",
                                                   "Produkt.7Utpris", "Produkt.8Utpris", "Produkt.9Utpris"};

std::uint8_t decimals(Recordset& settings, std::string_view column, const Locale& locale) {
    const std::int32_t number = TillLng(settings.value(column), locale);
    if (number < 0 || number > kMostDecimals) {
        throw PlatformError(errors::kWrongType, std::string(column) + " is no number of decimals.");
    }
    return static_cast<std::uint8_t>(number);
}

}  // namespace

PrisClsRoundInprisOUtpris::PrisClsRoundInprisOUtpris(SqlLayer& sql, PassedOver& passedOver, Date Idag,
                                                     std::int32_t PPrisDatumBM, PriceTrace* trace)
    : sql_(sql),
      passedOver_(passedOver),
      Idag_(Idag),
      PPrisDatumBM_(PPrisDatumBM),
      trace_(trace),
      avrund_(std::make_unique<ClsPrisAvrund>(sql, passedOver)) {}

PrisClsRoundInprisOUtpris::~PrisClsRoundInprisOUtpris() = default;

void PrisClsRoundInprisOUtpris::Init() {
    avrund_ = std::make_unique<ClsPrisAvrund>(sql_, passedOver_);
    avrund_->trace = trace_;
    InprisDec = UtprisDec = kStandardDecimals;
    attempt(passedOver_, "Syinställningar2", [this] {
        const auto settings = sql_.SQLÖppnaRs("Syinställningar2", RecordsetType::Dynaset, options::kReadOnly);
        attempt(passedOver_, "Syinställningar2.PDecInpris", [&] {
            const std::uint8_t inpris = decimals(*settings, "PDecInpris", sql_.locale());
            UtprisDec = decimals(*settings, "PDecUtpris", sql_.locale());
            InprisDec = inpris;
        });
        avrund_->InitInstRS(*settings);
    });
}

double PrisClsRoundInprisOUtpris::Avrunda(int PositionIPost, double DblBelopp) const {
    if (PositionIPost == kInpris || PositionIPost == kVägtinpris) {
        const double rounded = roundDecimals(DblBelopp, InprisDec);
        if (trace_) {
            const auto decimals = static_cast<double>(InprisDec);
            trace_->step({.step = PriceStep::Decimals, .value = rounded, .operand = decimals});
        }
        return rounded;
    }
    const int list = priceListOf(PositionIPost);
    return list == 0 ? DblBelopp : avrund_->UtförAvrundning(DblBelopp, UtprisDec, list);
}

bool PrisClsRoundInprisOUtpris::KopplaMotFinns() const { return avrund_->BoolKopplaMotFinns; }

void PrisClsRoundInprisOUtpris::Priskoppling(Recordset& ProdTabell, double DblIPEfterRabatt) {
    if (!avrund_->BoolPAutoUppdatUtpris) return tellCouplingOff();
    const bool loaded = attempt(passedOver_, "Produkt", [&] {
        if (!columns_) {
            columns_ = std::make_unique<ProductColumns>(ProductColumns{ProdTabell.ordinal("Vägtinpris"),
                                                                       ProdTabell.ordinal("Prisändrdat"),
                                                                       ProdTabell.ordinal(kFörändringsdatum)});
        }
        avrund_->DblIPEfterRabatt = DblIPEfterRabatt;
        avrund_->DblVägtIP = TillDbl(ProdTabell.value(columns_->Vägtinpris), sql_.locale());
        avrund_->ByteDecimaler = UtprisDec;
        avrund_->SetProdukt(ProdTabell);
    });
    if (!loaded) return;
    avrund_->UtförPriskoppling(0, false);
    for (int list = 1; list <= kPriceLists; ++list) {
        if (avrund_->Ändrad(list)) return saveCoupledPrices(ProdTabell, *columns_);
    }
}

void PrisClsRoundInprisOUtpris::tellCouplingOff() const {
    if (!trace_) return;
    for (const std::string_view column : kUtpris) {
        trace_->column(column);
        trace_->step({.step = PriceStep::CouplingOff});
    }
}

void PrisClsRoundInprisOUtpris::saveCoupledPrices(Recordset& ProdTabell, const ProductColumns& columns) {
    if (!attempt(passedOver_, "Produkt", [&] { ProdTabell.edit(); })) return;
    bool pricesChanged = false;
    for (int list = 1; list <= kPriceLists; ++list) {
        if (!avrund_->Ändrad(list)) continue;
        attempt(passedOver_, kUtpris[static_cast<std::size_t>(list - 1)], [&] {
            const int position = utprisOrdinal(list);
            const double price = avrund_->Utpris(list);
            if (daterarPris(PPrisDatumBM_, list) &&
                !NästanLika(TillDbl(ProdTabell.value(position), sql_.locale()), price)) {
                pricesChanged = true;
            }
            ProdTabell.set(position, price);
            if (trace_) trace_->written(kUtpris[static_cast<std::size_t>(list - 1)], price);
        });
    }
    if (pricesChanged) {
        attempt(passedOver_, "Produkt.Prisändrdat", [&] { ProdTabell.set(columns.Prisändrdat, Idag_); });
    }
    attempt(passedOver_, "Produkt.Förändringsdatum",
            [&] { SättÄndringsdatum(ProdTabell, columns.Förändringsdatum, Idag_); });
    attempt(passedOver_, "Produkt", [&] { ProdTabell.update(); });
}

PrisClsRoundInprisOUtpris::Currency PrisClsRoundInprisOUtpris::currency() const {
    if (!avrund_ || !avrund_->Valuta) return {};
    return {.known = true, .Kurs = avrund_->Valuta->Kurs, .Faktor = avrund_->Valuta->Faktor};
}

void PrisClsRoundInprisOUtpris::currency(const Currency& currency) {
    if (!avrund_ || !avrund_->Valuta) return;
    if (!currency.known) return avrund_->Valuta.reset();
    avrund_->Valuta->Kurs = currency.Kurs;
    avrund_->Valuta->Faktor = currency.Faktor;
}

}  // namespace kolmera
