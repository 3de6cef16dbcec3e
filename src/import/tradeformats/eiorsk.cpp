#include "import/tradeformats/eiorsk.h"

#include "import/rows/fieldconversion.h"
#include "platform/digits.h"

namespace kolmera {

int recordType(std::string_view line) { return !line.empty() && isDigit(line.front()) ? line.front() - '0' : 0; }

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
            return otherLine(line);
    }
}

LineUse EioRsk::takePrice(std::string_view line) {
    parts_.report.about(article_.number);
    const std::string_view code = cut(line, priceLine_.supplierCode);
    const CoupledSupplier* supplier = parts_.suppliers.find(code);
    if (!supplier) {
        parts_.report.uncoupled(toUtf8(code, page_));
        return LineUse::PassedOver;
    }
    if (article_.number.empty()) return parts_.passOver(Remark::NoKey);
    const Columns& columns = priceLine_.price;
    const Digits price = cutDigits(line, columns, 100);
    tellPrice(line, price);
    // A damaged price must not put 0 over a good one; a missing one is 0.
    if (price.unreadable()) return parts_.passOver(Remark::DamagedPrice, columns.name, text(line, columns));
    if (!writeProduct(*supplier, price.number)) return parts_.passOver(Remark::NotSaved);
    if (price.number == 0) parts_.report.remark(Remark::MissingPrice, columns.name, text(line, columns));
    writeSupplierPrice(*supplier, price.number, text(line, priceLine_.discountCode));
    return LineUse::Written;
}

void EioRsk::tellPrice(std::string_view line, const Digits& price) const {
    PriceTrace* trace = parts_.tables.trace();
    if (!trace) return;
    const Columns& columns = priceLine_.price;
    trace->product(article_.number);
    tellFileNumber(*trace, columns.name, columns.name, text(line, columns), price.number, 2, price.whole());
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
        if (PriceTrace* trace = tables().trace())
            startFrom(*trace, products.Inpris.statement, priceLine_.price.name, price);
        products.row.write(products.Inpris, tables().roundedInpris(price));
        writePriceLevels(products, price);
    }
    tables().saveProduct(article_.number, found);
    return true;
}

void EioRsk::writeSupplierPrice(const CoupledSupplier& supplier, double price, std::string_view discountCode) {
    const double discount = tables().discount(supplier.number, discountCode);
    SupplierPriceRows& prices = tables().supplierPrices();
    if (!tables().editOrAddSupplierPrice(article_.number, supplier.number)) return;
    prices.row.write(prices.Rabatt, roundDecimals(discount * 100, 2));
    prices.row.write(prices.Datum, priceDate_);
    prices.row.write(prices.RabattKod, discountCode);
    PriceTrace* trace = tables().trace();
    if (trace) startFrom(*trace, prices.Inpris.statement, priceLine_.price.name, price);
    prices.row.write(prices.Inpris, tables().roundedInpris(tables().discounted(price, discount)));
    if (trace) startFrom(*trace, prices.InprisFöreRabatt.statement, priceLine_.price.name, price);
    prices.row.write(prices.InprisFöreRabatt, price);
    tables().saveSupplierPrice();
}

LineUse EioRsk::otherLine(std::string_view line) const {
    constexpr std::size_t kShownBytes = 80;
    return parts_.passOver(Remark::OtherLine, {}, toUtf8(line.substr(0, kShownBytes), page_));
}

std::string EioRsk::text(std::string_view line, Columns columns) const { return toUtf8(cut(line, columns), page_); }

std::optional<Date> EioRsk::date(std::string_view line, Columns columns) const {
    return TolkaDatum(text(line, columns), parts_.Idag, parts_.locale);
}

}  // namespace kolmera
