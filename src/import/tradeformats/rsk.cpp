#include "import/tradeformats/rsk.h"

namespace kolmera {

Rsk::Rsk(const TradeFormatParts& parts)
    : EioRsk(parts, CodePage::Oem850,
             {.supplierCode = columns(kRskPrice, "leverantörskod"),
              .price = columns(kRskPrice, "bruttopris"),
              .discountCode = columns(kRskPrice, "rabattkod")}) {}

LineUse Rsk::takeHeader(std::string_view line) {
    // Every line without a record type is a header, and one without a date leaves the prices behind it without date.
    priceDate_ = date(line, columns(kRskHeader, "prisdatum"));
    return priceDate_ ? LineUse::Noted : otherLine(line);
}

void Rsk::takeArticle(std::string_view line) {
    article_.number = text(line, columns(kRskArticle, "produktnr"));
    article_.name = text(line, columns(kRskArticle, "benämning"));
    unit_ = text(line, columns(kRskArticle, "enhet"));
    group_ = text(line, columns(kRskArticle, "varugrupp"));
}

void Rsk::writeArticleColumns(ProductRows& products) {
    for (const Column* column : {&products.InköpsEnhet, &products.Försäljenhet, &products.Statistikenhet}) {
        products.row.write(*column, unit_);
    }
    products.row.write(products.Grupp, group_);
}

}  // namespace kolmera
