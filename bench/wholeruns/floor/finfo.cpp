// The FINFO job of the data folder, written out by hand.
#include <string>

#include "wholeruns/floor/loader.h"
#include "wholeruns/floor/pricelines.h"
#include "wholeruns/floor/product.h"
#include "wholeruns/floor/settings.h"
#include "wholeruns/floor/tables.h"

namespace kolmera::bench {

namespace {

constexpr int kProductColumns[] = {product::kNumber,         product::kName,
                                   product::kPurchaseUnit,   product::kSalesUnit,
                                   product::kStatisticsUnit, product::kGroup,
                                   product::kQuantity1,      product::kHeading0,
                                   product::kHeading1,       product::kSupplier,
                                   product::kArticleNumber,  product::kPriceDate,
                                   product::kPurchasePrice,  product::kPurchasePercent,
                                   product::kSales + 1,      product::kMarkup + 1,
                                   product::kSale,           product::kChangeDate};

void setAlternative(Row& row, std::string_view productNumber, int heading, std::string_view text) {
    if (!row.seek(productNumber, heading)) {
        row.add();
        row.set(alternative::kHeading, heading);
        row.set(alternative::kProduct, productNumber);
    }
    row.set(alternative::kNumber, text);
    row.save();
}

}  // namespace

void loadFinfo(Connection& company, const std::filesystem::path& folder) {
    const Settings settings(company);
    const std::string today = todayText();
    Row row = productRow(company, "Nummer", kProductColumns);
    Row priceList = priceListRow(
        company, {pricelist::kDate, pricelist::kDiscountCode, pricelist::kNet, pricelist::kGross, pricelist::kSales1});
    Row alternatives = alternativeRow(company);
    Decoder decoded(CodePage::Oem850);
    JoinedCommits commits(company);
    PriceLines file(folder / kPriceFile);
    for (std::string line; file.next(line);) {
        decoded.clear();
        const std::string_view group = piece(line, 29, 36);
        if (group < kLowestGroup || group > kHighestGroup || piece(line, 1, 10) != kSupplierCode) continue;
        const std::string_view article = decoded(piece(line, 11, 28));
        const std::string_view productNumber = decoded(piece(line, 29, 46));
        const std::string date = dateText(piece(line, 264, 271));
        const std::string_view unit = decoded(piece(line, 254, 256));
        const double purchase = number(piece(line, 246, 253)) / 100;
        const double sales = number(piece(line, 329, 336)) / 100;

        if (!row.seek(productNumber)) {
            row.add();
            applyDefaults(row, settings);
        }
        row.set(product::kNumber, productNumber);
        row.set(product::kName, decoded(piece(line, 116, 150)));
        for (const int column : {product::kPurchaseUnit, product::kSalesUnit, product::kStatisticsUnit}) {
            row.set(column, unit);
        }
        row.set(product::kGroup, group.substr(0, 5));
        if (const double quantity = number(piece(line, 296, 306)) / 1'000'000; quantity != 1) {
            row.set(product::kQuantity1, quantity);
            row.set(product::kHeading0, decoded(piece(line, 307, 309)));
            row.set(product::kHeading1, decoded(piece(line, 307, 309)));
        }
        row.set(product::kSupplier, kSupplier);
        row.set(product::kArticleNumber, article);
        row.set(product::kPriceDate, std::string_view(date));
        row.set(product::kPurchasePrice, settings.roundedPurchase(purchase));
        double price = sales;
        if (sales == 0 && !row.isNew()) {
            price = purchase - purchase * row.real(product::kPurchasePercent) / 100;
            price = price * (1 + row.real(product::kMarkup + 1) / 100);
        }
        row.set(product::kSales + 1, settings.roundedSales(price));
        row.set(product::kSale, std::string_view());
        row.set(product::kChangeDate, std::string_view(today));
        row.save();

        if (!priceList.seek(productNumber, kSupplier)) {
            priceList.add();
            priceList.set(pricelist::kProduct, productNumber);
            priceList.set(pricelist::kSupplier, kSupplier);
            priceList.set(pricelist::kArticleNumber, productNumber);
        }
        // No discount letter has the empty code, so the net price is the gross price.
        priceList.set(pricelist::kDate, std::string_view(date));
        priceList.set(pricelist::kDiscountCode, std::string_view());
        priceList.set(pricelist::kNet, settings.roundedPurchase(purchase));
        priceList.set(pricelist::kGross, settings.roundedPurchase(purchase));
        priceList.set(pricelist::kSales1, settings.roundedSales(sales));
        priceList.save();

        setAlternative(alternatives, productNumber, kMicronicHeading, decoded(piece(line, 65, 70)));
        setAlternative(alternatives, productNumber, kEanHeading, decoded(piece(line, 71, 85)));
        commits.recordDone();
    }
    commits.finish();
}

}  // namespace kolmera::bench
