#include "import/tradeformats/finfo.h"

#include "import/rows/fieldconversion.h"
#include "platform/encodings.h"
#include "platform/lettercase.h"

namespace kolmera {
namespace {

constexpr std::size_t kGroupCharacters = 5;  ///< of the group prefix, in column "Grupp"
constexpr double kHundredths = 100;
constexpr double kMillionths = 1'000'000;
constexpr Columns kInpris = columns(kFinfo, "inpris"), kUtpris = columns(kFinfo, "utpris"),
                  kFörpackningsantal = columns(kFinfo, "förpackningsantal");

std::string cutText(std::string_view line, Columns columns) { return toUtf8(cut(line, columns), CodePage::Oem850); }

void tellPrice(PriceTrace& trace, std::string_view line, Columns columns, const Digits& price) {
    tellFileNumber(trace, columns.name, columns.name, cutText(line, columns), price.number, 2, price.whole());
}

}  // namespace

LineUse Finfo::takeLine(std::string_view line) {
    std::string group = cutText(line, columns(kFinfo, "varugrupp"));
    if (!inGroupRange(group)) return parts_.passOver(Remark::OutsideGroups, {}, group);
    const std::string_view code = cut(line, columns(kFinfo, "leverantörskod"));
    const CoupledSupplier* supplier = parts_.suppliers.find(code);
    std::string number = cutText(line, columns(kFinfo, "produktnr"));
    parts_.report.about(number);
    if (!supplier) {
        parts_.report.uncoupled(toUtf8(code, CodePage::Oem850));
        return LineUse::PassedOver;
    }
    if (number.empty()) return parts_.passOver(Remark::NoKey);
    const Digits purchasePrice = cutDigits(line, kInpris, kHundredths);
    // A damaged price must not put 0 over a good one; a missing one is 0.
    if (purchasePrice.unreadable()) return parts_.passOver(Remark::DamagedPrice, kInpris.name, cutText(line, kInpris));
    const Digits salesPrice = cutDigits(line, kUtpris, kHundredths);
    if (PriceTrace* trace = parts_.tables.trace()) {
        trace->product(number);
        tellPrice(*trace, line, kInpris, purchasePrice);
        tellPrice(*trace, line, kUtpris, salesPrice);
    }

    const Article article{
        .line = line,
        .supplier = *supplier,
        .number = std::move(number),
        .group = std::move(group),
        .purchasePrice = purchasePrice.number,
        .salesPrice = salesPrice.number,
        .priceDate = TolkaDatum(cutText(line, columns(kFinfo, "prisdatum")), parts_.Idag, parts_.locale)};
    if (!writeProduct(article)) return parts_.passOver(Remark::NotSaved);
    if (article.purchasePrice == 0) parts_.report.remark(Remark::MissingPrice, kInpris.name, cutText(line, kInpris));
    if (salesPrice.unreadable()) parts_.report.remark(Remark::NotNumber, kUtpris.name, cutText(line, kUtpris));
    writeSupplierPrice(article);
    writeAlternatives(article);
    return LineUse::Written;
}

bool Finfo::inGroupRange(std::string_view group) const {
    const std::string upper = upperCase(group);
    return upper >= parts_.job.fromGroup && upper <= parts_.job.toGroup;
}

bool Finfo::writeProduct(const Article& article) {
    const RowWriter::Row found = parts_.tables.editOrAddProduct(article.number);
    if (found == RowWriter::Row::Unreachable) return false;
    ProductRows& products = parts_.tables.products();
    RowWriter& row = products.row;
    row.write(products.Nummer, article.number);
    row.write(products.Benämning, cutText(article.line, columns(kFinfo, "benämning")));
    const std::string unit = cutText(article.line, columns(kFinfo, "enhet"));
    for (const Column* column : {&products.InköpsEnhet, &products.Försäljenhet, &products.Statistikenhet}) {
        row.write(*column, unit);
    }
    row.write(products.Grupp, firstCharacters(article.group, kGroupCharacters));
    writePackage(products, article.line);
    row.write(products.Leverantör, article.supplier.number);
    row.write(products.Levartikelnr, cutText(article.line, columns(kFinfo, "levartikelnr")));
    row.write(products.Prisändrdat, article.priceDate);
    if (PriceTrace* trace = parts_.tables.trace())
        startFrom(*trace, products.Inpris.statement, kInpris.name, article.purchasePrice);
    row.write(products.Inpris, parts_.tables.roundedInpris(article.purchasePrice));
    row.write(products.Utpris(1), parts_.tables.roundedUtpris(levelOnePrice(article, found), 1));
    row.write(products.Försäljning, std::string_view());
    parts_.tables.saveProduct(article.number, found);
    return true;
}

void Finfo::writePackage(ProductRows& products, std::string_view line) {
    const Digits quantity = cutDigits(line, kFörpackningsantal, kMillionths);
    if (quantity.number == 1) return;
    if (quantity.unreadable()) {
        return parts_.report.remark(Remark::DamagedQuantity, kFörpackningsantal.name,
                                    cutText(line, kFörpackningsantal));
    }
    const std::string unit = cutText(line, columns(kFinfo, "förpackningsenhet"));
    products.row.write(products.Antal1, quantity.number);
    products.row.write(products.Rubrik0, unit);
    products.row.write(products.Rubrik1, unit);
}

double Finfo::levelOnePrice(const Article& article, RowWriter::Row row) {
    ProductRows& products = parts_.tables.products();
    if (article.salesPrice != 0 || row == RowWriter::Row::New) {
        if (PriceTrace* trace = parts_.tables.trace())
            startFrom(*trace, products.Utpris(1).statement, kUtpris.name, article.salesPrice);
        return article.salesPrice;
    }
    return products.markedUp(products.netCost(article.purchasePrice), 1);
}

void Finfo::writeSupplierPrice(const Article& article) {
    TradeTables& tables = parts_.tables;
    // The lines name no discount code: what may apply is the letter of the job's supplier under the empty code.
    const double discount = tables.discount(parts_.job.supplier, {});
    SupplierPriceRows& prices = tables.supplierPrices();
    if (!tables.editOrAddSupplierPrice(article.number, article.supplier.number)) return;
    prices.row.write(prices.Datum, article.priceDate);
    prices.row.write(prices.RabattKod, std::string_view());
    const auto start = [&](const Column& column, std::string_view source, double value) {
        if (PriceTrace* trace = tables.trace()) startFrom(*trace, column.statement, source, value);
    };
    start(prices.Inpris, kInpris.name, article.purchasePrice);
    prices.row.write(prices.Inpris, tables.roundedInpris(tables.discounted(article.purchasePrice, discount)));
    start(prices.InprisFöreRabatt, kInpris.name, article.purchasePrice);
    prices.row.write(prices.InprisFöreRabatt, tables.roundedInpris(article.purchasePrice));
    start(prices.Utpris(1), kUtpris.name, article.salesPrice);
    prices.row.write(prices.Utpris(1), tables.roundedUtpris(article.salesPrice, 1));
    tables.saveSupplierPrice();
}

void Finfo::writeAlternatives(const Article& article) {
    const struct {
        int heading;
        Columns columns;
    } alternatives[] = {{parts_.job.heading1, columns(kFinfo, "micronicnr")},
                        {parts_.job.heading2, columns(kFinfo, "EAN")}};
    for (const auto& alternative : alternatives) {
        if (alternative.heading == 0) continue;
        parts_.tables.putAlternative(article.number, alternative.heading, cutText(article.line, alternative.columns));
    }
}

}  // namespace kolmera
