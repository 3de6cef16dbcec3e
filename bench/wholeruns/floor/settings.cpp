#include "wholeruns/floor/settings.h"

#include <fmt/format.h>

#include <cmath>
#include <sstream>

#include "wholeruns/floor/product.h"

namespace kolmera::bench {

namespace {

/// Where the defaults of a new product come from, beside the markups.
constexpr struct {
    int column;
    const char* setting;
} kDefaults[] = {{product::kGroup, "PGrupp"},
                 {product::kPurchaseFactor, "PInköpsfaktor"},
                 {product::kSalesFactor, "PFörsäljfaktor"},
                 {product::kStatisticsFactor, "PStatistikfaktor"},
                 {product::kPurchaseUnit, "PInköpsenhet"},
                 {product::kSalesUnit, "PFörsäljenhet"},
                 {product::kStatisticsUnit, "PStatistikenhet"},
                 {product::kVatCode, "PMomsKod"},
                 {product::kStockValue, "PLagervärde"},
                 {product::kCurrency, "PValutakod"},
                 {product::kPriceList, "PPrislista"},
                 {product::kStocked, "PLagerArtikel"}};

double swedishNumber(std::string text) {
    for (char& sign : text) {
        if (sign == ',') sign = '.';
    }
    return text.empty() ? 0 : std::stod(text);
}

}  // namespace

double roundTo(double value, int decimals) {
    static constexpr double kPowers[] = {1, 10, 100, 1000, 10000};
    return std::nearbyint(value * kPowers[decimals]) / kPowers[decimals];
}

Settings::Settings(Connection& connection) {
    Statement second(connection, "SELECT PDecInpris, PDecUtpris, PPrisAvrund, PUtprisKopplaMot FROM Syinställningar2");
    second.step();
    purchaseDecimals = static_cast<int>(second.integer(0));
    salesDecimals = static_cast<int>(second.integer(1));
    std::istringstream bounds{std::string(second.text(2))};
    for (Range& range : ranges_) {
        std::string from;
        std::string to;
        std::getline(bounds, from);
        std::getline(bounds, to);
        range = {swedishNumber(from), swedishNumber(to)};
    }
    coupledTo.fill('I');
    std::istringstream couplings{std::string(second.text(3))};
    for (std::string entry; std::getline(couplings, entry, ';');) {
        coupledTo.at(static_cast<std::size_t>(entry.at(0) - '0')) = entry.at(2);
        if (entry[2] != '-' && entry[2] != 'I') someCoupled = true;
    }

    std::string columns = "\"1OMomsproc\"";
    for (const auto& entry : kDefaults) columns += fmt::format(", {}", entry.setting);
    for (int list = 1; list <= 9; ++list) columns += fmt::format(", PFaktor{}", list);
    Statement first(connection, "SELECT " + columns + " FROM Syinställningar");
    first.step();
    vatRate1 = first.real(0);
    const auto take = [&](int at, int column) {
        if (first.isNull(at)) return;
        if (first.isText(at)) {
            productDefaults.emplace_back(column, std::string(first.text(at)));
        } else if (first.real(at) != 0) {
            productDefaults.emplace_back(column, first.real(at));
        }
    };
    int at = 0;
    for (const auto& entry : kDefaults) take(++at, entry.column);
    for (int list = 1; list <= 9; ++list) take(++at, product::kMarkup + list);
    productDefaults.emplace_back(product::kKind, std::string("1"));
    productDefaults.emplace_back(product::kValuationLevel, 9.0);
}

double Settings::roundedSales(double price) const {
    const auto contains = [&](std::size_t range) { return ranges_[range].from <= price && price <= ranges_[range].to; };
    if (contains(0)) return roundTo(price, 1);
    if (contains(1)) {
        const double whole = std::floor(price);
        const double rest = price - whole;
        return rest < 0.25 ? whole : rest < 0.75 ? whole + 0.5 : whole + 1;
    }
    if (contains(2)) return roundTo(price, 0);
    if (contains(3)) return roundTo(price / 10, 0) * 10;
    if (contains(4)) return roundTo(price / 100, 0) * 100;
    return roundTo(price, salesDecimals);
}

DiscountLetters::DiscountLetters(Connection& connection)
    : select_(connection,
              "SELECT \"1Rabatt\", \"2Rabatt\", \"3Rabatt\", \"4Rabatt\", \"5Rabatt\" FROM LevrabattBrev "
              "WHERE Leverantör = ?1 AND Rabattgrupp = ?2") {}

double DiscountLetters::fraction(std::string_view supplier, std::string_view code) {
    key_.assign(supplier).append(1, '\0').append(code);
    if (const auto at = known_.find(key_); at != known_.end()) return at->second;
    select_.bind(1, supplier);
    select_.bind(2, code);
    double remaining = 1;
    if (select_.step()) {
        for (int step = 0; step < 5; ++step) {
            if (const double percent = select_.real(step); percent != 0) remaining = (1 - percent / 100) * remaining;
        }
    }
    select_.reset();
    return known_[key_] = 1 - remaining;
}

double Currencies::home(double amount, std::string_view code) {
    if (code != code_) {
        code_ = code;
        select_.bind(1, std::string_view(code_));
        if (select_.step()) {
            rate_ = select_.real(0) != 0 ? select_.real(0) : 1;
            factor_ = select_.real(1) != 0 ? select_.real(1) : 1;
        }
        select_.reset();
    }
    return amount * rate_ / factor_;
}

}  // namespace kolmera::bench
