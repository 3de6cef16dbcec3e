#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "db/sqllayer.h"
#include "platform/attempt.h"

namespace kolmera {

/// The home currency: rate 1, factor 1, never looked up.
inline constexpr std::string_view kHomeCurrency = "SEK";

/// Exchange rates of the company: home amount = foreign amount * `Kurs` / `Faktor`. A look-up sets `Kurs` and
/// `Faktor`; neither is ever 0 afterwards, and an unknown currency keeps those of the look-up before.
class ClsValuta {
  public:
    /// The ledger whose rate is meant.
    static constexpr std::uint8_t kKundreskontra = 0;
    static constexpr std::uint8_t kLevreskontra = 1;

    ClsValuta(SqlLayer& sql, PassedOver& passedOver);

    double Kurs = 1.0;
    std::int32_t Faktor = 1;
    std::int16_t Konto = 0;
    double DKurs = 0;
    std::unique_ptr<Recordset> ValutaTabell;  ///< "Syvaluta"; none when it could not be opened

    void KursOchFaktor(std::string_view StrKod, std::uint8_t Reskontra);
    /// `Faktor` of the currency, `Kurs` as given.
    void EndastFaktor(std::string_view StrKod, double Valutakurs);
    /// Replaces the entries of a selection list by all currency codes, in table order.
    void FyllCombo(std::vector<std::string>& Cmb);
    /// `Konto` := the ledger account of the currency, 0 when it is unknown.
    void ValutaKonto(std::string_view StrKey);
    /// On a server: reads the whole table once; later look-ups use this copy, which is not refreshed.
    void InitSQLCashe();

  private:
    struct Rates {
        std::string code;
        std::array<double, 2> rates{};  ///< by ledger
        std::int32_t factor = 0;
        bool found = true;
    };

    bool seek(std::string_view code);
    Rates readCurrent();
    const Rates* lookUp(std::string_view code);
    template <typename Visit>
    bool forEachCurrency(Visit&& visit);
    void neverZero();

    SqlLayer& sql_;
    PassedOver& passedOver_;
    bool cacheOn_ = false;
    std::vector<Rates> cache_;       ///< codes in upper case
    std::vector<Rates> remembered_;  ///< look-ups done while the table carried `stamp_`
    std::uint64_t stamp_ = 0;
};

}  // namespace kolmera
