#include "wholeruns/floor/product.h"

#include <cmath>

#include "wholeruns/floor/settings.h"

namespace kolmera::bench {

namespace {

std::vector<std::string> columnNames() {
    std::vector<std::string> names(product::kCount);
    const auto name = [&](int place) -> std::string& { return names[static_cast<std::size_t>(place)]; };
    name(product::kNumber) = "Nummer";
    name(product::kSupplier) = "Leverantör";
    name(product::kArticleNumber) = "Levartikelnr";
    name(product::kGroup) = "Grupp";
    name(product::kName) = "Benämning";
    name(product::kName2) = "Benämning2";
    name(product::kPurchasePrice) = "Inpris";
    name(product::kPurchasePercent) = "InprisProc";
    name(product::kWeightedPrice) = "Vägtinpris";
    for (int list = 1; list <= 9; ++list) {
        name(product::kSales + list) = std::to_string(list) + "Utpris";
        name(product::kMarkup + list) = std::to_string(list) + "Pålägg";
    }
    name(product::kPurchaseFactor) = "Inköpsfaktor";
    name(product::kCurrency) = "Valutakod";
    name(product::kPriceDate) = "Prisändrdat";
    name(product::kChangeDate) = "Förändringsdatum";
    name(product::kPurchaseUnit) = "InköpsEnhet";
    name(product::kSalesUnit) = "Försäljenhet";
    name(product::kStatisticsUnit) = "Statistikenhet";
    name(product::kQuantity1) = "Antal1";
    name(product::kHeading0) = "Rubrik0";
    name(product::kHeading1) = "Rubrik1";
    name(product::kSale) = "Försäljning";
    name(product::kSalesFactor) = "Försäljfaktor";
    name(product::kStatisticsFactor) = "Statistikfaktor";
    name(product::kKind) = "Produkttyp";
    name(product::kVatCode) = "Momskod";
    name(product::kStockValue) = "Lagervärde";
    name(product::kValuationLevel) = "Värderingsnivå";
    name(product::kPriceList) = "Prislista";
    name(product::kStocked) = "LagerArtikel";
    return names;
}

bool isUnset(const Row& product, int column, bool text) {
    if (!product.isSet(column)) return true;
    return text ? product.text(column).empty() : product.real(column) == 0;
}

}  // namespace

Row productRow(Connection& connection, const std::string& keyColumn, std::span<const int> read) {
    return {connection, "Produkt", columnNames(), read, keyColumn + " = ?1"};
}

std::vector<int> withCoupling(std::vector<int> read) {
    read.insert(read.end(), {product::kPurchasePercent, product::kPurchaseFactor, product::kCurrency,
                             product::kPriceDate, product::kChangeDate});
    for (int list = 1; list <= 9; ++list) read.insert(read.end(), {product::kSales + list, product::kMarkup + list});
    return read;
}

void applyDefaults(Row& product, const Settings& settings) {
    for (const auto& [column, value] : settings.productDefaults) {
        if (const auto* text = std::get_if<std::string>(&value)) {
            if (isUnset(product, column, true)) product.set(column, std::string_view(*text));
        } else if (isUnset(product, column, false)) {
            product.set(column, std::get<double>(value));
        }
    }
}

bool nearlyEqual(double a, double b) { return b + 0.001 >= a && a + 0.001 >= b; }

void couplePrices(Row& product, const Settings& settings, Currencies& currencies, std::string_view today) {
    const auto markup = [&](int list) { return product.real(product::kMarkup + list); };
    bool coupled = settings.someCoupled;
    for (int list = 1; list <= 9; ++list) coupled = coupled || markup(list) != 0;
    if (!coupled) return;

    double net = currencies.home(product.real(product::kPurchasePrice), product.text(product::kCurrency));
    net = net - net * product.real(product::kPurchasePercent) / 100;
    if (const double factor = product.real(product::kPurchaseFactor); factor != 0) net = net / factor;

    for (int list = 1; list <= 9; ++list) {
        const char to = settings.coupledTo[static_cast<std::size_t>(list)];
        if (to == '-' || markup(list) == 0) continue;
        const double base = to == 'I' ? net : product.real(product::kSales + (to - '0'));
        if (base == 0) continue;
        const double price = settings.roundedSales(markup(list) * base / 100 + base);
        if (!nearlyEqual(product.real(product::kSales + list), price)) product.set(product::kPriceDate, today);
        product.set(product::kSales + list, price);
    }
}

}  // namespace kolmera::bench
