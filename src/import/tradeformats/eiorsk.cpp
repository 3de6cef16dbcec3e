#include "import/tradeformats/eiorsk.h"

#include "import/fieldconversion.h"

namespace kolmera {
namespace {

/// The first column as a number; a line without a digit there has type 0.
int recordType(std::string_view line) {
    const bool digit = !line.empty() && line.front() >= '0' && line.front() <= '9';
    return digit ? line.front() - '0' : 0;
}

}  // namespace

LineUse EioRsk::takeLine(std::string_view line) {
    switch (recordType(line)) {
        case 0:
            return takeHeader(line);
        case 1:
            takeArticle(line);
            return LineUse::Noted;
        case 2:
            return takePrice(line);
        default:
            return LineUse::PassedOver;
    }
}

LineUse EioRsk::takePrice(std::string_view line) {
    const CoupledSupplier* supplier = parts_.suppliers.find(cut(line, priceLine_.supplierCode));
    if (!supplier || article_.number.empty()) return LineUse::PassedOver;
    // A damaged price must not put 0 over a good one.
    const Digits price = cutDigits(line, priceLine_.price, 100);
    if (!price.whole()) return LineUse::PassedOver;
    if (!writeProduct(*supplier, price.number)) return LineUse::PassedOver;
    writeSupplierPrice(*supplier, price.number, text(line, priceLine_.discountCode));
    return LineUse::Written;
}

bool EioRsk::writeProduct(const CoupledSupplier& supplier, double price) {
    const RowWriter::Row found = tables().editOrAddProduct(article_.number);
    if (found == RowWriter::Row::Unreachable) return false;
    ProductRows& products = tables().products();
    products.row.write(products.Nummer, article_.number);
    products.row.write(products.Benämning, article_.name);
    writeArticleColumns(products);
    if (supplier.mainSupplier) {
        products.row.write(products.Leverantör, supplier.number);
        products.row.write(products.Levartikelnr, article_.number);
        products.row.write(products.Prisändrdat, priceDate_);
        products.row.write(products.Inpris, tables().roundedInpris(price));
        writePriceLevels(products, price);
    }
    tables().saveProduct(found);
    return true;
}

void EioRsk::writeSupplierPrice(const CoupledSupplier& supplier, double price, std::string_view discountCode) {
    const double discount = tables().discount(supplier.number, discountCode);
    SupplierPriceRows& prices = tables().supplierPrices();
    if (!prices.editOrAdd(article_.number, supplier.number)) return;
    prices.row.write(prices.Rabatt, roundDecimals(discount * 100, 2));
    prices.row.write(prices.Datum, priceDate_);
    prices.row.write(prices.RabattKod, discountCode);
    prices.row.write(prices.Inpris, tables().roundedInpris(price - price * discount));
    prices.row.write(prices.InprisFöreRabatt, price);
    tables().saveSupplierPrice();
}

std::string EioRsk::text(std::string_view line, Columns columns) const { return toUtf8(cut(line, columns), page_); }

std::optional<Date> EioRsk::date(std::string_view line, Columns columns) const {
    return TolkaDatum(text(line, columns), parts_.Idag, parts_.locale);
}

}  // namespace kolmera
