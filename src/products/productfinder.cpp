#include "products/productfinder.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <set>

#include "db/conversions.h"
#include "platform/lettercase.h"
#include "platform/searchwords.h"

namespace kolmera {
namespace {

/// Where a number of a product stands: a column with an index, and the column that has the product's number.
struct Place {
    std::string_view table, column, product;
};
constexpr Place kPlaces[] = {{"Produkt", "Nummer", "Nummer"},
                             {"Produkt", "Levartikelnr", "Nummer"},
                             {"Produkt", "Söknamn", "Nummer"},
                             {"Levprislista", "Levartikelnr", "Produktnr"},
                             {"Prodaltprodnr", "Alternativnr", "Produktnr"}};
constexpr std::string_view kColumns = "Nummer, Söknamn, Benämning, Leverantör, Levartikelnr";

/// Behind every letter in the orders of the files and of the servers.
constexpr std::string_view kLast = "\uFFFF";

FoundProduct productOf(Recordset& row, const Locale& locale) {
    const auto text = [&](int column) { return TillText(row.value(column), locale); };
    FoundProduct product;
    product.number = text(0);
    product.searchName = text(1);
    product.name = text(2);
    product.supplier = text(3);
    product.article = text(4);
    return product;
}

}  // namespace

/// The products that are found, each once, up to a number of them.
class ProductFinder::Found {
  public:
    explicit Found(std::size_t most) : most_(most) {}

    [[nodiscard]] bool full() const { return products.size() >= most_; }
    [[nodiscard]] bool has(std::string_view number) const { return numbers_.contains(upperCase(number)); }
    void add(FoundProduct product) {
        if (!full() && numbers_.insert(upperCase(product.number)).second) products.push_back(std::move(product));
    }
    std::vector<FoundProduct> products;

  private:
    std::size_t most_;
    std::set<std::string> numbers_;
};

std::vector<FoundProduct> ProductFinder::find(std::string_view typed, std::size_t most) {
    const std::string_view wanted = trimmed(typed);
    Found found(most);
    if (wanted.empty()) return {};
    byNumbers(wanted, found);
    if (!found.full()) byWords(wanted, found);
    return std::move(found.products);
}

void ProductFinder::byNumbers(std::string_view typed, Found& found) {
    const std::string low = SqlLayer::SQLText(typed);
    const std::string high = SqlLayer::SQLText(fmt::format("{}{}", typed, kLast));
    std::vector<std::string> exact, others;
    for (const Place& place : kPlaces) {
        const auto rows = sql_.SQLÖppnaRs(fmt::format("SELECT {0}, {1} FROM {2} WHERE {0} >= {3} AND {0} <= {4} "
                                                      "ORDER BY {0}",
                                                      place.column, place.product, place.table, low, high),
                                          RecordsetType::Snapshot, options::kReadOnly);
        for (std::size_t taken = 0; !rows->eof() && !found.full() && taken < 1000; rows->moveNext(), ++taken) {
            const std::string number = TillText(rows->value(0), sql_.locale());
            if (!startsWithNoCase(number, typed)) continue;
            (equalNoCase(trimmed(number), typed) ? exact : others).push_back(TillText(rows->value(1), sql_.locale()));
        }
    }
    exact.insert(exact.end(), others.begin(), others.end());
    for (const std::string& number : exact) {
        if (found.full()) return;
        if (found.has(number)) continue;
        const auto row = sql_.SQLÖppnaRs(
            fmt::format("SELECT {} FROM Produkt WHERE Nummer = {}", kColumns, SqlLayer::SQLText(number)),
            RecordsetType::Snapshot, options::kReadOnly);
        if (!row->eof()) found.add(productOf(*row, sql_.locale()));
    }
}

void ProductFinder::byWords(std::string_view typed, Found& found) {
    readNames();
    const SearchWords words(typed);
    for (const FoundProduct& each : names_) {
        if (found.full()) return;
        if (words.in(fmt::format("{} {} {} {}", each.number, each.searchName, each.name, each.article)))
            found.add(each);
    }
}

void ProductFinder::readNames() {
    const std::uint64_t stamp = sql_.FtgDB->stamp("Produkt");
    if (stamp_ == stamp) return;
    names_.clear();
    const auto rows = sql_.SQLÖppnaRs(fmt::format("SELECT {} FROM Produkt ORDER BY Nummer", kColumns),
                                      RecordsetType::Snapshot, options::kReadOnly);
    for (; !rows->eof(); rows->moveNext()) names_.push_back(productOf(*rows, sql_.locale()));
    stamp_ = stamp;
}

std::vector<std::string> ProductFinder::named(std::string_view number) {
    const std::string wanted = SqlLayer::SQLText(trimmed(number));
    std::vector<std::string> products;
    for (const Place& place : kPlaces) {
        const auto rows = sql_.SQLÖppnaRs(
            fmt::format("SELECT {} FROM {} WHERE {} = {}", place.product, place.table, place.column, wanted),
            RecordsetType::Snapshot, options::kReadOnly);
        for (; !rows->eof(); rows->moveNext()) {
            std::string product = TillText(rows->value(0), sql_.locale());
            const bool known =
                std::ranges::any_of(products, [&](const auto& one) { return equalNoCase(one, product); });
            if (!known) products.push_back(std::move(product));
        }
        if (place.column == "Nummer" && !products.empty()) break;
    }
    return products;
}

}  // namespace kolmera
