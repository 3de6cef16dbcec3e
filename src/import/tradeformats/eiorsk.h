#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "import/tradeformats/linelayout.h"
#include "import/tradeformats/tradeformat.h"
#include "platform/encodings.h"

namespace kolmera {

/// Where a price line has its columns. Both formats agree on all of them but the discount code.
struct PriceLineLayout {
    Columns supplierCode, price, discountCode;
};

/// The first column of a line as a number; a line without a digit there has type 0. 0 is a header, 1 an article, 2 a
/// price.
int recordType(std::string_view line);

/// What EIO and RSK share. The first column of a line is its record type: 1 is an article, 2 one supplier's price for
/// the article before it. Prices reach the product from the main supplier's lines only, the supplier price list from
/// every coupled supplier's.
class EioRsk : public TradeFormat {
  public:
    EioRsk(const TradeFormatParts& parts, CodePage page, const PriceLineLayout& priceLine)
        : parts_(parts), page_(page), priceLine_(priceLine) {}

    LineUse takeLine(std::string_view line) final;

  protected:
    /// The article that price lines belong to until the next one comes.
    struct Article {
        std::string number, name;
    };

    virtual LineUse takeHeader(std::string_view line) = 0;
    virtual void takeArticle(std::string_view line) = 0;
    virtual void writeArticleColumns(ProductRows& /*products*/) {}
    /// Of the main supplier's price lines.
    virtual void writePriceLevels(ProductRows& /*products*/, double /*price*/) {}

    [[nodiscard]] TradeTables& tables() { return parts_.tables; }
    /// A line that is not read, because of its record type or because it says nothing.
    [[nodiscard]] LineUse otherLine(std::string_view line) const;
    /// The text in these columns.
    [[nodiscard]] std::string text(std::string_view line, Columns columns) const;
    [[nodiscard]] std::optional<Date> date(std::string_view line, Columns columns) const;

    Article article_;
    std::optional<Date> priceDate_;

  private:
    LineUse takePrice(std::string_view line);
    void tellPrice(std::string_view line, const Digits& price) const;
    [[nodiscard]] bool writeProduct(const CoupledSupplier& supplier, double price);
    void writeSupplierPrice(const CoupledSupplier& supplier, double price, std::string_view discountCode);

    TradeFormatParts parts_;
    CodePage page_;
    PriceLineLayout priceLine_;
};

}  // namespace kolmera
