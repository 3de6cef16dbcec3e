#pragma once

#include "import/tradeformats/eiorsk.h"

namespace kolmera {

/// Price files of the electrical trade (Windows-1252).
inline constexpr Columns kEioArticle[] = {
    {"posttyp", 1, 1}, {"produktnr", 2, 9}, {"benämning", 10, 34}, {"prisdatum", 35, kToEndOfLine}};
inline constexpr Columns kEioPrice[] = {
    {"posttyp", 1, 1}, {"leverantörskod", 2, 3}, {"bruttopris", 4, 11}, {"rabattkod", 13, 16}};
static_assert(wellFormed(kEioArticle) && wellFormed(kEioPrice));

/// The article carries the price date. The main supplier's prices give the sales prices of the levels with a markup.
class Eio final : public EioRsk {
  public:
    explicit Eio(const TradeFormatParts& parts);

    [[nodiscard]] std::unique_ptr<TradeFormat> copy() const override { return std::make_unique<Eio>(*this); }

  protected:
    LineUse takeHeader(std::string_view line) override { return otherLine(line); }
    void takeArticle(std::string_view line) override;
    void writePriceLevels(ProductRows& products, double price) override;
};

}  // namespace kolmera
