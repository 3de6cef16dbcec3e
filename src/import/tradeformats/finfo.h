#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "import/tradeformats/linelayout.h"
#include "import/tradeformats/tradeformat.h"

namespace kolmera {

/// A line of a FINFO price file (code page 850): an article of a supplier.
inline constexpr Columns kFinfo[] = {{"leverantörskod", 1, 10},
                                     {"levartikelnr", 11, 28},
                                     {"varugrupp", 29, 36},  // the beginning of the product number
                                     {"produktnr", 29, 46},
                                     {"micronicnr", 65, 70},
                                     {"EAN", 71, 85},
                                     {"benämning", 116, 150},
                                     {"inpris", 246, 253},
                                     {"enhet", 254, 256},
                                     {"prisdatum", 264, 271},
                                     {"förpackningsantal", 296, 306},
                                     {"förpackningsenhet", 307, 309},
                                     {"utpris", 329, 336}};
static_assert(wellFormed(kFinfo));

/// One line is one price record; product and supplier price list are both written from it. The job bounds the product
/// groups and names the headings of the alternative numbers. Which supplier is the main one does not matter here.
class Finfo final : public TradeFormat {
  public:
    explicit Finfo(const TradeFormatParts& parts) : parts_(parts) {}

    LineUse takeLine(std::string_view line) override;
    [[nodiscard]] std::unique_ptr<TradeFormat> copy() const override { return std::make_unique<Finfo>(*this); }

  private:
    /// What the steps of a record share.
    struct Article {
        std::string_view line;
        const CoupledSupplier& supplier;
        std::string number;
        std::string group;  ///< prefix
        double purchasePrice, salesPrice;
        std::optional<Date> priceDate;
    };

    [[nodiscard]] bool inGroupRange(std::string_view group) const;
    [[nodiscard]] bool writeProduct(const Article& article);
    void writePackage(ProductRows& products, std::string_view line);
    [[nodiscard]] double levelOnePrice(const Article& article, RowWriter::Row row);
    void writeSupplierPrice(const Article& article);
    void writeAlternatives(const Article& article);

    TradeFormatParts parts_;
};

}  // namespace kolmera
