#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "db/sqllayer.h"
#include "platform/attempt.h"
#include "pricing/clsvaluta.h"
#include "pricing/listsetting.h"
#include "pricing/pricetrace.h"
#include "pricing/vatrates.h"

namespace kolmera {

/// A company's rules for out prices: rounding by price ranges, and recomputing of the coupled price lists. Order:
/// construct, `InitInstRS`, then round; to couple a product set `DblIPEfterRabatt`, `DblVägtIP`
/// and `ByteDecimaler`, call `SetProdukt` and `UtförPriskoppling`, and read `Ändrad` and `Utpris`. A property is read
/// by its name and written by the same name with the new value; the price settings of the rest of the suite take them
/// one by one (`suite/pricesettings`). Price lists and indexes count from 1.
class ClsPrisAvrund {
  public:
    ClsPrisAvrund(SqlLayer& sql, PassedOver& passedOver);

    bool BoolValutaFinns = false;
    bool BoolKopplaMotFinns = false;     ///< some price list is coupled to something else than the in price
    bool BoolPUtprisFaktorTG = false;    ///< markups are margins, per cent of the out price
    bool BoolPAutoUppdatUtpris = false;  ///< the import recomputes coupled prices
    bool BoolPAutoUppdatValuta = false;
    bool BoolPFaktorValuta = false;     ///< a markup of 0 is not enough in a foreign currency either
    std::unique_ptr<ClsValuta> Valuta;  ///< made when a price is first converted
    double DblIPEfterRabatt = 0;        ///< in price after discount, home currency
    double DblVägtIP = 0;               ///< weighted in price
    std::uint8_t ByteDecimaler = 0;     ///< decimals of recomputed prices outside the ranges, at most 15
    std::int16_t IntProdMomskod = 0;    ///< VAT code of the product
    PriceTrace* trace = nullptr;        ///< hears how out prices are computed

    /// Loads the settings from the current record of "Syinställningar2"; a column that cannot be read leaves its
    /// member as it was.
    void InitInstRS(Recordset& DsetInställningar2);

    // Rounding.

    /// The ranges as lines "From 1, To 1, ... From 5, To 5", separated by CR LF: at most ten are taken. Call
    /// `UppdateraNumValues` after writing.
    void StrInställning(std::string_view New_StrInställning);
    /// The bounds as numbers in the user's locale; what is no number is 0.
    void UppdateraNumValues();
    [[nodiscard]] const std::string& StrFrom(int Index) const { return range(Index).from; }
    [[nodiscard]] const std::string& StrTom(int Index) const { return range(Index).to; }
    /// Rounds by the first range that contains the price, else to `StdDecimaler` (at most 15) decimals. Price lists
    /// without rounding always get `StdDecimaler`.
    [[nodiscard]] double UtförAvrundning(double DblPris, std::uint8_t StdDecimaler, int IntPLIdx) const;
    /// The price lists that are not rounded by ranges: bit i for list i.
    void PNoAvrundPLBM(std::int32_t New_PNoAvrundPLBM);

    // Coupling.

    void StrPUtprisValuta(std::string_view New_StrPUtprisValuta) { valutaKod_.read(New_StrPUtprisValuta); }
    /// Sets `BoolKopplaMotFinns`, too.
    void StrPUtprisKopplaMot(std::string_view New_StrPUtprisKopplaMot);
    void StrPUtprisMomsMot(std::string_view New_StrPUtprisMomsMot) { momsMot_.read(New_StrPUtprisMomsMot); }
    [[nodiscard]] const std::string& StrValuta(int Index) const { return valutaKod_.of(Index); }
    void StrValuta(int Index, std::string_view New_StrValuta) { valutaKod_.set(Index, New_StrValuta); }
    [[nodiscard]] const std::string& StrKopplaMot(int Index) const { return kopplaMot_.of(Index); }
    void StrKopplaMot(int Index, std::string_view New_StrKopplaMot) { kopplaMot_.set(Index, New_StrKopplaMot); }
    [[nodiscard]] std::int16_t MomsMotPL(int Index) const;
    void MomsMotPL(int Index, std::int16_t New_MomsMotPL) { momsMot_.set(Index, std::to_string(New_MomsMotPL)); }
    [[nodiscard]] double Utpris(int Index) const { return list(Index).utpris; }
    void Utpris(int Index, double New_Utpris) { list(Index).utpris = New_Utpris; }
    [[nodiscard]] float Pålägg(int Index) const { return list(Index).pålägg; }
    void Pålägg(int Index, float New_Pålägg) { list(Index).pålägg = New_Pålägg; }
    [[nodiscard]] bool Ändrad(int Index) const { return list(Index).ändrad; }

    /// Takes out prices, markups and VAT code of the current product.
    void SetProdukt(Recordset& ProdTabell);
    /// Whether a markup can be used; as a margin it lies within 99 per cent and is not 0.
    [[nodiscard]] bool CheckFaktorTG(float SinPålägg, bool BoolNoMsgVidNoll) const;
    /// Recomputes the coupled price lists in the order 1 to 9, each seeing the new prices of the lists before it.
    /// `IntPrisFrånUtpris` 0: all of them; else those behind that list, with `BoolFrånFaktor` that list, too.
    void UtförPriskoppling(int IntPrisFrånUtpris, bool BoolFrånFaktor);

  private:
    struct Range {
        std::string from, to;
        double fromNum = 0, toNum = 0;
    };
    struct PriceList {
        double utpris = 0;
        float pålägg = 0;
        bool ändrad = false;
        bool noAvrund = false;
    };
    static constexpr int kRanges = 5;

    Range& range(int index) { return ranges_.at(static_cast<std::size_t>(index - 1)); }
    [[nodiscard]] const Range& range(int index) const { return ranges_.at(static_cast<std::size_t>(index - 1)); }
    PriceList& list(int index) { return lists_.at(static_cast<std::size_t>(index - 1)); }
    [[nodiscard]] const PriceList& list(int index) const { return lists_.at(static_cast<std::size_t>(index - 1)); }

    [[nodiscard]] double numeric(std::string_view text) const;
    [[nodiscard]] int rangeOf(double price) const;
    void tellRounding(int range, std::uint8_t decimals, double rounded) const;
    [[nodiscard]] std::string baseColumn(int index) const;
    [[nodiscard]] bool canBeRecomputed(int index) const;
    /// Always false.
    bool tellWhyNot(int index, PriceStep reason) const {
        if (trace != nullptr) tellReason(index, reason);
        return false;
    }
    void tellReason(int index, PriceStep reason) const;
    [[nodiscard]] double baseOf(int index);
    [[nodiscard]] double homePrice(int index);
    [[nodiscard]] double newPrice(int index, double base);
    void tellCurrency(int index, double price) const;
    [[nodiscard]] bool foreign(int index) const { return valutaKod_.of(index) != kHomeCurrency; }
    ClsValuta& lookUpCurrency(int index);
    bool recompute(int index);

    SqlLayer& sql_;
    PassedOver& passedOver_;
    std::array<Range, kRanges> ranges_;
    std::array<PriceList, kPriceLists> lists_;
    ListSetting valutaKod_{kHomeCurrency};
    ListSetting kopplaMot_{"I"};
    ListSetting momsMot_{"0"};
    VatRates vatRates_;
    int momskodOrdinal_ = -1;
};

}  // namespace kolmera
