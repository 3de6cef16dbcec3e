#pragma once

#include <array>
#include <cstdint>
#include <functional>
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
    std::unique_ptr<Recordset> ValutaTabell;  ///< "Syvaluta"; none when it could not be opened

    void KursOchFaktor(std::string_view StrKod, std::uint8_t Reskontra);
    /// On a server: reads the whole table once; later look-ups use this copy, which is not refreshed.
    void InitSQLCashe();

  protected:
    bool seek(std::string_view code);
    /// Visits every record of the table, if it is open; whether all could be read.
    bool forEachCurrency(const std::function<void()>& visit);
    void neverZero();

    SqlLayer& sql_;
    PassedOver& passedOver_;

  private:
    struct Rates {
        std::string code;
        std::array<double, 2> rates{};  ///< by ledger
        std::int32_t factor = 0;
        bool found = true;
    };

    Rates readCurrent();
    const Rates* lookUp(std::string_view code);

    bool cacheOn_ = false;
    std::vector<Rates> cache_;       ///< codes in upper case
    std::vector<Rates> remembered_;  ///< look-ups done while the table carried `stamp_`
    std::uint64_t stamp_ = 0;
};

}  // namespace kolmera
