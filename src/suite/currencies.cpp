#include "suite/currencies.h"

#include "db/conversions.h"

namespace kolmera {

void CurrencyLookUps::KursOchFaktor(std::string_view StrKod, std::uint8_t Reskontra) {
    ClsValuta::KursOchFaktor(StrKod, Reskontra);
    if (StrKod != kHomeCurrency) DKurs = Kurs;
}

void CurrencyLookUps::EndastFaktor(std::string_view StrKod, double Valutakurs) {
    Kurs = Valutakurs;
    if (StrKod == kHomeCurrency) {
        Faktor = 1;
        return;
    }
    if (seek(StrKod)) {
        attempt(passedOver_, "Syvaluta", [this] { Faktor = TillLng(ValutaTabell->value("Faktor"), sql_.locale()); });
    }
    neverZero();
}

void CurrencyLookUps::FyllCombo(std::vector<std::string>& Cmb) {
    Cmb.clear();
    forEachCurrency([&] { Cmb.push_back(TillText(ValutaTabell->value("Kod"), sql_.locale())); });
}

void CurrencyLookUps::ValutaKonto(std::string_view StrKey) {
    Konto = 0;
    if (!seek(StrKey)) return;
    attempt(passedOver_, "Syvaluta",
            [this] { Konto = static_cast<std::int16_t>(TillLng(ValutaTabell->value("Valutakonto"), sql_.locale())); });
}

}  // namespace kolmera
