#include "import/tradeformats/tradetables.h"

#include <string>
#include <utility>

#include "db/productcolumns.h"
#include "platform/locale.h"

namespace kolmera {
namespace {

template <std::size_t... level>
std::array<Column, sizeof...(level)> levelColumns(const RowWriter& row, int (*ordinal)(int),
                                                  std::index_sequence<level...>) {
    return {row.columnAt(ordinal(static_cast<int>(level) + 1))...};
}

constexpr auto kLevels = std::make_index_sequence<kPriceLists>();

}  // namespace

ProductRows::ProductRows(SqlLayer& sql, PassedOver& passedOver)
    : row(sql, passedOver, "Produkt", "Nummer"),
      Utpris_(levelColumns(row, utprisOrdinal, kLevels)),
      Pålägg_(levelColumns(row, påläggOrdinal, kLevels)) {}

double ProductRows::netCost(double purchasePrice) {
    const double percent = row.number(InprisProc);
    const double net = purchasePrice - purchasePrice * percent / 100;
    if (trace) {
        startFrom(*trace, PriceTrace::kNetCost, Inpris.statement, purchasePrice);
        trace->step({.step = PriceStep::Deduction, .value = net, .operand = percent});
    }
    return net;
}

double ProductRows::markedUp(double netCost, int level) {
    const double percent = row.number(Pålägg(level));
    const double price = netCost * (1 + percent / 100);
    if (trace) {
        startFrom(*trace, Utpris(level).statement, PriceTrace::kNetCost, netCost);
        trace->step({.step = PriceStep::Markup, .value = price, .operand = percent});
    }
    return price;
}

TradeTables::TradeTables(const Parts& parts) : parts_(parts) {
    parts_.supplierPrices.row.countIn(parts_.summary.priceList);
    if (parts_.alternatives) parts_.alternatives->row.countIn(parts_.summary.alternatives);
    parts_.products.trace = parts_.trace;
    parts_.products.row.tellTo(parts_.trace);
    parts_.supplierPrices.row.tellTo(parts_.trace);
}

void TradeTables::lookOnly(bool on) {
    looksOnly_ = on;
    parts_.products.row.lookOnly(on);
    parts_.supplierPrices.row.lookOnly(on);
    if (parts_.alternatives) parts_.alternatives->row.lookOnly(on);
}

double TradeTables::discounted(double price, double discount) const {
    const double net = price - price * discount;
    if (parts_.trace) parts_.trace->step({.step = PriceStep::Deduction, .value = net, .operand = discount * 100});
    return net;
}

double TradeTables::roundedInpris(double price) const {
    return looksOnly_ ? price : parts_.prices.Avrunda(ordinal(kProdukt, "Inpris"), price);
}

double TradeTables::roundedUtpris(double price, int level) const {
    return looksOnly_ ? price : parts_.prices.Avrunda(utprisOrdinal(level), price);
}

RowWriter::Row TradeTables::editOrAddProduct(std::string_view number) {
    RowWriter& row = parts_.products.row;
    const RowWriter::Row found = row.editOrAdd(number);
    if (found == RowWriter::Row::New && !looksOnly_) parts_.defaults.SättNyProduktStandard(row.rows());
    return found;
}

void TradeTables::saveProduct(std::string_view number, RowWriter::Row row) {
    if (looksOnly_) return;
    ProductRows& products = parts_.products;
    products.row.write(products.Förändringsdatum, parts_.Idag);
    if (!products.row.save()) return;
    parts_.summary.productSaved(number, row == RowWriter::Row::New);
}

bool TradeTables::editOrAddSupplierPrice(std::string_view product, std::string_view supplier) {
    SupplierPriceRows& prices = parts_.supplierPrices;
    const RowWriter::Row found = prices.row.editOrAdd(product, supplier);
    if (found == RowWriter::Row::New) prices.name(product, supplier, product);
    return found != RowWriter::Row::Unreachable;
}

void TradeTables::saveSupplierPrice() { parts_.supplierPrices.row.save(); }

void TradeTables::putAlternative(std::string_view product, int heading, std::string_view alternative) {
    if (parts_.alternatives) parts_.alternatives->put(product, heading, alternative);
}

}  // namespace kolmera
