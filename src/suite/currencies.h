#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "pricing/clsvaluta.h"

namespace kolmera {

/// ClsValuta with the look-ups that ledgers and orders ask for besides.
class CurrencyLookUps : public ClsValuta {
  public:
    CurrencyLookUps(SqlLayer& sql, PassedOver& passedOver) : ClsValuta(sql, passedOver) {}

    std::int16_t Konto = 0;
    double DKurs = 0;  ///< `Kurs` of the last `KursOchFaktor` of a foreign currency

    void KursOchFaktor(std::string_view StrKod, std::uint8_t Reskontra);
    /// `Faktor` of the currency, `Kurs` as given.
    void EndastFaktor(std::string_view StrKod, double Valutakurs);
    /// Replaces the entries of a selection list by all currency codes, in table order.
    void FyllCombo(std::vector<std::string>& Cmb);
    /// `Konto` := the ledger account of the currency, 0 when it is unknown.
    void ValutaKonto(std::string_view StrKey);
};

}  // namespace kolmera
