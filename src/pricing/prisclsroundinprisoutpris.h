#pragma once

#include <cstdint>
#include <memory>

#include "db/sqllayer.h"
#include "platform/attempt.h"
#include "platform/date.h"
#include "platform/engine/recordset.h"

namespace kolmera {

class ClsPrisAvrund;
class PriceTrace;

/// The price-date mask PPrisDatumBM when the setting is 0: price lists 1 to 9 date the product, the in price does not.
inline constexpr std::int32_t kStandardPrisDatumBM = 2044;

/// Whether a change of price list `list` (1-9) sets the price-change date under this mask.
constexpr bool daterarPris(std::int32_t PPrisDatumBM, int list) { return (PPrisDatumBM & (1 << (list + 1))) != 0; }

/// The prices of one import run: rounds amounts by the product column that they go to, and recomputes the coupled out
/// prices of a product. Order: construct, `Init`, then the rest; gone before the company database is closed.
class PrisClsRoundInprisOUtpris {
  public:
    /// `Idag` dates changed prices; `PPrisDatumBM` is the run's price-date mask (0 already replaced by the standard).
    PrisClsRoundInprisOUtpris(SqlLayer& sql, PassedOver& passedOver, Date Idag,
                              std::int32_t PPrisDatumBM = kStandardPrisDatumBM, PriceTrace* trace = nullptr);
    ~PrisClsRoundInprisOUtpris();
    PrisClsRoundInprisOUtpris(const PrisClsRoundInprisOUtpris&) = delete;
    PrisClsRoundInprisOUtpris& operator=(const PrisClsRoundInprisOUtpris&) = delete;

    /// Reads decimals and rounding and coupling settings of the open company; 2 decimals when they cannot be read.
    void Init();

    std::uint8_t InprisDec = 2;  ///< decimals of in prices
    std::uint8_t UtprisDec = 2;  ///< decimals of out prices

    /// Rounds an amount for the product column at that ordinal: 21 and 23 to `InprisDec` decimals, 24 to 32 by the
    /// ranges of price lists 1 to 9; amounts for other columns are returned as they are.
    [[nodiscard]] double Avrunda(int PositionIPost, double DblBelopp) const;

    /// Whether the company couples some price list to more than the in price.
    [[nodiscard]] bool KopplaMotFinns() const;

    /// Recomputes the coupled out prices of the current record of `ProdTabell` from its in price after discount (home
    /// currency), and saves the record when a price list was recomputed. Does nothing unless the company recomputes
    /// automatically. What the engine refuses is noted and passed over.
    void Priskoppling(Recordset& ProdTabell, double DblIPEfterRabatt);

    /// The currency that was looked up last, which stands for those that the company does not have.
    struct Currency {
        bool known = false;
        double Kurs = 1.0;
        std::int32_t Faktor = 1;
    };
    [[nodiscard]] Currency currency() const;
    void currency(const Currency& currency);

  private:
    struct ProductColumns {
        int Vägtinpris;
        int Prisändrdat;
        int Förändringsdatum;
    };
    void tellCouplingOff() const;
    void saveCoupledPrices(Recordset& ProdTabell, const ProductColumns& columns);

    SqlLayer& sql_;
    PassedOver& passedOver_;
    Date Idag_;
    std::int32_t PPrisDatumBM_;
    PriceTrace* trace_;
    std::unique_ptr<ClsPrisAvrund> avrund_;
    std::unique_ptr<ProductColumns> columns_;  ///< resolved at the first coupling of the run
};

}  // namespace kolmera
