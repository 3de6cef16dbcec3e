// The EIO and RSK jobs of the data folder, written out by hand.
#include <string>
#include <vector>

#include "wholeruns/floor/loader.h"
#include "wholeruns/floor/pricelines.h"
#include "wholeruns/floor/product.h"
#include "wholeruns/floor/settings.h"
#include "wholeruns/floor/tables.h"

namespace kolmera::bench {

namespace {

void loadGroups(Connection& company, const std::filesystem::path& file) {
    Statement known(company, "SELECT ID, Benämning FROM Prodgrupp WHERE Nummer = ?1");
    Statement change(company, "UPDATE Prodgrupp SET Benämning = ?2 WHERE ID = ?1");
    PriceLines lines(file);
    Decoder decoded(CodePage::Oem850);
    company.execute("BEGIN");
    for (std::string line; lines.next(line);) {
        decoded.clear();
        const std::string_view name = decoded(piece(line, 5, 44));
        known.bind(1, piece(line, 1, 4));
        if (!known.step()) throw std::runtime_error("the data folder's product groups are all known");
        const std::int64_t id = known.integer(0);
        const bool differs = known.text(1) != name;
        known.reset();
        if (!differs) continue;
        change.bind(1, id);
        change.bind(2, name);
        change.run();
    }
    company.execute("COMMIT");
}

/// The last article line's texts.
struct Article {
    std::string number, name, unit, group;
};

class EioRsk {
  public:
    EioRsk(Connection& company, Format format)
        : rsk_(format == Format::Rsk),
          settings_(company),
          letters_(company),
          product_(productRow(company, "Nummer", productColumns(rsk_))),
          priceList_(priceListRow(company, {pricelist::kDate, pricelist::kDiscount, pricelist::kDiscountCode,
                                            pricelist::kNet, pricelist::kGross})),
          commits_(company),
          today_(todayText()) {}

    void line(std::string_view line) {
        if (line.starts_with('0') && rsk_) date_ = shortDate(piece(line, 2, 7));
        if (line.starts_with('1')) article(line);
        if (line.starts_with('2')) price(line);
    }
    void finish() { commits_.finish(); }

  private:
    static std::vector<int> productColumns(bool rsk) {
        std::vector<int> read = {product::kNumber,        product::kName,          product::kSupplier,
                                 product::kArticleNumber, product::kPurchasePrice, product::kPriceDate,
                                 product::kChangeDate};
        if (rsk) {
            read.insert(read.end(),
                        {product::kGroup, product::kPurchaseUnit, product::kSalesUnit, product::kStatisticsUnit});
        } else {
            read.push_back(product::kPurchasePercent);
            for (int list = 1; list <= 9; ++list) {
                read.insert(read.end(), {product::kSales + list, product::kMarkup + list});
            }
        }
        return read;
    }

    std::string shortDate(std::string_view text) const { return dateText(today_.substr(0, 2) + std::string(text)); }

    void article(std::string_view line) {
        decoded_.clear();
        if (rsk_) {
            article_ = {std::string(piece(line, 3, 9)), std::string(decoded_(piece(line, 10, 36))),
                        std::string(decoded_(piece(line, 37, 39))), std::string(piece(line, 41, 44))};
            return;
        }
        std::string_view number = piece(line, 2, 9);
        if (number.starts_with('0')) number.remove_prefix(1);
        article_.number = number;
        article_.name = decoded_(piece(line, 10, 34));
        date_ = dateText(piece(line, 35, line.size()));
    }

    void price(std::string_view line) {
        const std::string_view code = piece(line, 2, 3);
        const bool isMain = code == kSupplierCode;
        if (!isMain && code != kSecondCode) return;
        const std::string_view supplier = isMain ? kSupplier : kSecondSupplier;
        const double gross = number(piece(line, 4, 11)) / 100;
        const std::string_view discountCode = piece(line, 13, rsk_ ? 18 : 16);

        saveProduct(isMain, gross);

        const double fraction = letters_.fraction(supplier, discountCode);
        if (!priceList_.seek(std::string_view(article_.number), supplier)) {
            priceList_.add();
            priceList_.set(pricelist::kProduct, std::string_view(article_.number));
            priceList_.set(pricelist::kSupplier, supplier);
            priceList_.set(pricelist::kArticleNumber, std::string_view(article_.number));
        }
        priceList_.set(pricelist::kDiscount, roundTo(fraction * 100, 2));
        priceList_.set(pricelist::kDate, std::string_view(date_));
        priceList_.set(pricelist::kDiscountCode, discountCode);
        priceList_.set(pricelist::kNet, settings_.roundedPurchase(gross - gross * fraction));
        priceList_.set(pricelist::kGross, gross);
        priceList_.save();
        commits_.recordDone();
    }

    void saveProduct(bool isMain, double gross) {
        const std::string_view number = article_.number;
        if (!product_.seek(number)) {
            product_.add();
            applyDefaults(product_, settings_);
        }
        product_.set(product::kNumber, number);
        product_.set(product::kName, std::string_view(article_.name));
        if (rsk_) {
            for (const int unit : {product::kPurchaseUnit, product::kSalesUnit, product::kStatisticsUnit}) {
                product_.set(unit, std::string_view(article_.unit));
            }
            product_.set(product::kGroup, std::string_view(article_.group));
        }
        if (isMain) {
            product_.set(product::kSupplier, kSupplier);
            product_.set(product::kArticleNumber, number);
            product_.set(product::kPriceDate, std::string_view(date_));
            product_.set(product::kPurchasePrice, settings_.roundedPurchase(gross));
            if (!rsk_) setSalesPrices(gross);
        }
        product_.set(product::kChangeDate, std::string_view(today_));
        product_.save();
    }

    void setSalesPrices(double gross) {
        const double net = gross - gross * product_.real(product::kPurchasePercent) / 100;
        for (int list = 1; list <= 9; ++list) {
            const double markup = product_.real(product::kMarkup + list);
            if (markup == 0) continue;
            product_.set(product::kSales + list, settings_.roundedSales(net * (1 + markup / 100)));
        }
    }

    bool rsk_;
    Settings settings_;
    DiscountLetters letters_;
    Row product_;
    Row priceList_;
    JoinedCommits commits_;
    std::string today_;
    Decoder decoded_{rsk_ ? CodePage::Oem850 : CodePage::Windows1252};
    Article article_;
    std::string date_;
};

}  // namespace

void loadEioRsk(Connection& company, const std::filesystem::path& folder, Format format) {
    PriceLines file(folder / kPriceFile);
    if (format == Format::Rsk) loadGroups(company, folder / kGroupFile);
    EioRsk loader(company, format);
    for (std::string line; file.next(line);) loader.line(line);
    loader.finish();
}

}  // namespace kolmera::bench
