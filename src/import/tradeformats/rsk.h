#pragma once

#include "import/tradeformats/eiorsk.h"

namespace kolmera {

/// Price files of the plumbing and heating trade (code page 850).
inline constexpr Columns kRskHeader[] = {{"posttyp", 1, 1}, {"prisdatum", 2, 7}};
inline constexpr Columns kRskArticle[] = {
    {"posttyp", 1, 1}, {"produktnr", 3, 9}, {"benämning", 10, 36}, {"enhet", 37, 39}, {"varugrupp", 41, 44}};
inline constexpr Columns kRskPrice[] = {
    {"posttyp", 1, 1}, {"leverantörskod", 2, 3}, {"bruttopris", 4, 11}, {"rabattkod", 13, 18}};
static_assert(wellFormed(kRskHeader) && wellFormed(kRskArticle) && wellFormed(kRskPrice));

/// A header carries the price date, the article its unit and product group.
class Rsk final : public EioRsk {
  public:
    explicit Rsk(const TradeFormatParts& parts);

    [[nodiscard]] std::unique_ptr<TradeFormat> copy() const override { return std::make_unique<Rsk>(*this); }

  protected:
    LineUse takeHeader(std::string_view line) override;
    void takeArticle(std::string_view line) override;
    void writeArticleColumns(ProductRows& products) override;

  private:
    std::string unit_, group_;  ///< of the article
};

}  // namespace kolmera
