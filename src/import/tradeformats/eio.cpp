#include "import/tradeformats/eio.h"

namespace kolmera {
namespace {

void tellNoMarkup(PriceTrace& trace, const Column& price) {
    trace.column(price.statement);
    trace.step({.step = PriceStep::NoMarkup});
}

}  // namespace

Eio::Eio(const TradeFormatParts& parts)
    : EioRsk(parts, CodePage::Windows1252,
             {.supplierCode = columns(kEioPrice, "leverantörskod"),
              .price = columns(kEioPrice, "bruttopris"),
              .discountCode = columns(kEioPrice, "rabattkod")}) {}

void Eio::takeArticle(std::string_view line) {
    article_.number = text(line, columns(kEioArticle, "produktnr"));
    // Numbers of seven digits are padded with one zero; what follows it is the number, zeros included.
    if (article_.number.starts_with('0')) article_.number.erase(0, 1);
    article_.name = text(line, columns(kEioArticle, "benämning"));
    priceDate_ = date(line, columns(kEioArticle, "prisdatum"));
}

void Eio::writePriceLevels(ProductRows& products, double price) {
    const double net = products.netCost(price);
    for (int level = 1; level <= kPriceLists; ++level) {
        if (products.row.number(products.Pålägg(level)) == 0) {
            if (PriceTrace* const trace = tables().trace()) tellNoMarkup(*trace, products.Utpris(level));
            continue;
        }
        products.row.write(products.Utpris(level), tables().roundedUtpris(products.markedUp(net, level), level));
    }
}

}  // namespace kolmera
