// The three mask jobs of the data folder, written out by hand.
#include <array>
#include <string>

#include "wholeruns/floor/loader.h"
#include "wholeruns/floor/pricelines.h"
#include "wholeruns/floor/product.h"
#include "wholeruns/floor/settings.h"
#include "wholeruns/floor/tables.h"

namespace kolmera::bench {

namespace {

/// What a run keeps for all its records.
struct Run {
    explicit Run(Connection& company)
        : settings(company), letters(company), currencies(company), commits(company), today(todayText()) {}
    Settings settings;
    DiscountLetters letters;
    Currencies currencies;
    JoinedCommits commits;
    std::string today;
};

/// The purchase price and the price of list 1 as a mask writes them, and the dates that follow.
void setPrices(Row& row, Run& run, double purchase, double sales) {
    const double before = row.real(product::kSales + 1);
    const bool dated = row.isNew() || (row.real(product::kMarkup + 1) == 0 && !nearlyEqual(before, sales));
    row.set(product::kPurchasePrice, run.settings.roundedPurchase(purchase));
    row.set(product::kSales + 1, run.settings.roundedSales(sales));
    if (row.isNew()) {
        applyDefaults(row, run.settings);
        row.set(product::kWeightedPrice, row.real(product::kPurchasePrice));
    }
    row.set(product::kChangeDate, std::string_view(run.today));
    if (dated) row.set(product::kPriceDate, std::string_view(run.today));
    couplePrices(row, run.settings, run.currencies, run.today);
}

/// Column `place` (from 0) of a tab line; the text behind the last tab is the last column.
std::array<std::string_view, kTabColumns> cutAtTabs(std::string_view line) {
    std::array<std::string_view, kTabColumns> columns;
    for (std::size_t place = 0; place + 1 < columns.size(); ++place) {
        const auto tab = line.find('\t');
        columns[place] = withoutBlanks(line.substr(0, tab));
        line.remove_prefix(tab + 1);
    }
    columns.back() = withoutBlanks(line);
    return columns;
}

void setAlternative(Row& row, std::string_view productNumber, int heading, std::string_view text) {
    if (row.seek(productNumber, heading)) {
        if (text.empty()) return row.remove();
    } else {
        if (text.empty()) return;
        row.add();
        row.set(alternative::kProduct, productNumber);
        row.set(alternative::kHeading, heading);
    }
    row.set(alternative::kNumber, text);
    row.save();
}

// Columns: product number (key), name, article number, purchase price, discount code, sales price, unit, EAN code.
void loadTab(Connection& company, PriceLines& file) {
    Run run(company);
    Row row = productRow(company, "Nummer",
                         withCoupling({product::kNumber, product::kName, product::kArticleNumber, product::kSalesUnit,
                                       product::kPurchasePrice}));
    Row priceList = priceListRow(company, {pricelist::kDate, pricelist::kDiscount, pricelist::kDiscountCode,
                                           pricelist::kNet, pricelist::kGross, pricelist::kSales1});
    Row alternatives = alternativeRow(company);
    Decoder decoded(CodePage::Windows1252);
    for (std::string line; file.next(line); run.commits.recordDone()) {
        decoded.clear();
        const auto columns = cutAtTabs(line);
        const std::string_view key = decoded(columns[0]);
        const std::string_view article = decoded(columns[2]);
        const double purchase = number(columns[3]);
        const std::string_view code = decoded(columns[4]);
        const double sales = number(columns[5]);
        if (key.empty()) continue;

        if (!row.seek(key)) row.add();
        row.set(product::kNumber, key);
        row.set(product::kName, decoded(columns[1]));
        row.set(product::kArticleNumber, article);
        row.set(product::kSalesUnit, decoded(columns[6]));
        setPrices(row, run, purchase, sales);
        row.save();

        setAlternative(alternatives, key, kEanHeading, decoded(columns[7]));

        if (!priceList.seek(key, kSupplier)) {
            priceList.add();
            priceList.set(pricelist::kProduct, key);
            priceList.set(pricelist::kSupplier, kSupplier);
            priceList.set(pricelist::kArticleNumber, article);
        }
        const double fraction = run.letters.fraction(kSupplier, code);
        priceList.set(pricelist::kDate, std::string_view(run.today));
        priceList.set(pricelist::kDiscount, roundTo(fraction * 100, 2));
        priceList.set(pricelist::kDiscountCode, code);
        priceList.set(pricelist::kNet, run.settings.roundedPurchase(purchase - purchase * fraction));
        priceList.set(pricelist::kGross, purchase);
        priceList.set(pricelist::kSales1, sales);
        priceList.save();
    }
    run.commits.finish();
}

// Lines of a record: product number (key), name, purchase price, sales price without VAT. Known products only.
void loadLines(Connection& company, PriceLines& file) {
    Run run(company);
    Row row = productRow(company, "Nummer", withCoupling({product::kNumber, product::kName, product::kPurchasePrice}));
    Decoder decoded(CodePage::Oem850);
    std::array<std::string, kRecordLines> lines;
    for (; file.next(lines[0]); run.commits.recordDone()) {
        for (std::size_t line = 1; line < lines.size(); ++line) file.next(lines[line]);
        decoded.clear();
        const std::string_view key = decoded(withoutBlanks(lines[0]));
        if (key.empty() || !row.seek(key)) continue;
        const double sales = number(withoutBlanks(lines[3]));
        row.set(product::kNumber, key);
        row.set(product::kName, decoded(withoutBlanks(lines[1])));
        setPrices(row, run, number(withoutBlanks(lines[2])), sales + sales * run.settings.vatRate1 / 100);
        row.save();
    }
    run.commits.finish();
}

// Bytes of a record: article number (key) 1-20, second name 21-50, prices in hundredths 51-59 and 60-68, unit 69-72
// (only where the product has none). Known products of the job's supplier; the price list also for others'.
void loadFixed(Connection& company, PriceLines& file) {
    Run run(company);
    Row row = productRow(company, "Levartikelnr",
                         withCoupling({product::kNumber, product::kSupplier, product::kArticleNumber, product::kName2,
                                       product::kSalesUnit, product::kPurchasePrice}));
    const std::vector<int> read = {pricelist::kDate, pricelist::kDiscount, pricelist::kNet, pricelist::kGross,
                                   pricelist::kSales1};
    Row ofProduct = priceListRow(company, read);
    Row ofArticle = priceListRow(company, read, "Levartikelnr = ?1 AND Leverantör = ?2");
    Decoder decoded(CodePage::Windows1252);
    std::string productNumber;
    for (std::string record; file.next(kRecordLength, record); run.commits.recordDone()) {
        decoded.clear();
        const std::string_view key = decoded(piece(record, 1, 20));
        const double purchase = number(piece(record, 51, 59)) / 100;
        const double sales = number(piece(record, 60, 68)) / 100;

        Row* priceList = &ofArticle;
        if (row.seek(key) && row.text(product::kSupplier) == kSupplier) {
            productNumber = row.text(product::kNumber);
            row.set(product::kArticleNumber, key);
            row.set(product::kName2, decoded(piece(record, 21, 50)));
            if (row.text(product::kSalesUnit).empty()) row.set(product::kSalesUnit, decoded(piece(record, 69, 72)));
            setPrices(row, run, purchase, sales);
            row.save();
            priceList = &ofProduct;
            if (!priceList->seek(productNumber, kSupplier)) {
                priceList->add();
                priceList->set(pricelist::kProduct, productNumber);
                priceList->set(pricelist::kSupplier, kSupplier);
                priceList->set(pricelist::kArticleNumber, key);
            }
        } else if (!priceList->seek(key, kSupplier)) {
            continue;
        }
        const double discount = priceList->real(pricelist::kDiscount);
        priceList->set(pricelist::kDate, std::string_view(run.today));
        priceList->set(pricelist::kNet, run.settings.roundedPurchase(purchase - purchase * discount / 100));
        priceList->set(pricelist::kGross, purchase);
        priceList->set(pricelist::kSales1, sales);
        priceList->save();
    }
    run.commits.finish();
}

}  // namespace

void loadMask(Connection& company, const std::filesystem::path& folder, Format format) {
    company.execute("DELETE FROM Prodaltprodnr WHERE Alternativnr = ''");
    PriceLines file(folder / kPriceFile);
    if (format == Format::Tab) loadTab(company, file);
    if (format == Format::Lines) loadLines(company, file);
    if (format == Format::Fixed) loadFixed(company, file);
}

}  // namespace kolmera::bench
