#include "history/changefigures.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "db/productcolumns.h"

namespace kolmera {
namespace {

constexpr std::string_view kProducts = "Produkt", kSupplierPrices = "Levprislista";
constexpr int kFirstPriceOfList = 7, kLastPriceOfList = 17;  ///< Inpris, InprisFöreRabatt, Utpris1 to Utpris9

/// The figures of a column while its cells are read.
struct Gathered {
    PriceFigures figures;
    std::vector<float> percents;  ///< for the median
    std::int64_t riseRow = 0, fallRow = 0;
};

void count(Gathered& gathered, const PriceFigures::Extreme& cell, std::int64_t row) {
    PriceFigures& figures = gathered.figures;
    ++(cell.percent > 0 ? figures.raised : figures.lowered);
    if (cell.before == 0) ++figures.fromZero;
    if (cell.after == 0) ++figures.toZero;
    if (!std::isfinite(cell.percent)) return;
    ++figures.histogram.at(histogramBar(cell.percent));
    gathered.percents.push_back(static_cast<float>(cell.percent));
    if (cell.percent > (figures.largestRise ? figures.largestRise->percent : 0)) {
        figures.largestRise = cell;
        gathered.riseRow = row;
    }
    if (cell.percent < (figures.largestFall ? figures.largestFall->percent : 0)) {
        figures.largestFall = cell;
        gathered.fallRow = row;
    }
}

std::optional<double> median(std::vector<float>& values) {
    if (values.empty()) return {};
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    if (values.size() % 2 == 1) return *middle;
    return (double{*std::max_element(values.begin(), middle)} + double{*middle}) / 2;
}

double number(const Value& value) {
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return static_cast<double>(*whole);
    const auto* real = std::get_if<double>(&value);
    return real != nullptr ? *real : 0;
}

class PriceReader {
  public:
    explicit PriceReader(NetChanges& changes) : changes_(changes) {}

    std::vector<PriceFigures> read() {
        SqliteStatement cells(
            changes_.connection(),
            fmt::format("SELECT cell.n, percent, before, after, row.tab FROM cell JOIN row ON row.n = cell.n >> {} "
                        "WHERE percent IS NOT NULL",
                        NetChanges::kColumnBits));
        while (cells.step()) take(cells);
        std::vector<PriceFigures> figures;
        for (auto& [place, gathered] : columns_) figures.push_back(finished(gathered));
        return figures;
    }

  private:
    void take(const SqliteStatement& cells) {
        const std::int64_t cell = cells.integer(0);
        const int column = NetChanges::columnOf(cell);
        const int table = static_cast<int>(cells.integer(4));
        const std::string& name = changes_.tables()[static_cast<std::size_t>(table)].name;
        if (!isPrice(name, column)) return;
        Gathered& gathered = columns_[{name != kProducts, column}];
        gathered.figures.table = name;
        gathered.figures.column = column;
        Value percent;
        Value before;
        Value after;
        cells.read(1, FieldType::Double, percent);
        cells.read(2, FieldType::Double, before);
        cells.read(3, FieldType::Double, after);
        count(gathered, {.percent = number(percent), .product = {}, .before = number(before), .after = number(after)},
              NetChanges::rowOf(cell));
    }

    PriceFigures finished(Gathered& gathered) {
        PriceFigures& figures = gathered.figures;
        figures.median = median(gathered.percents);
        if (figures.largestRise) figures.largestRise->product = productOf(gathered.riseRow);
        if (figures.largestFall) figures.largestFall->product = productOf(gathered.fallRow);
        return std::move(figures);
    }

    std::string productOf(std::int64_t row) {
        SqliteStatement query(changes_.connection(), "SELECT product FROM row WHERE n = ?1");
        query.bind(1, row);
        return query.step() ? std::string(query.text(0)) : std::string();
    }

    NetChanges& changes_;
    std::map<std::pair<bool, int>, Gathered> columns_;  ///< by table and place
};

void countProducts(NetChanges& changes, ChangeFigures& figures) {
    const auto products = std::ranges::find(changes.tables(), kProducts, &NetChanges::Table::name);
    if (products == changes.tables().end()) return;
    SqliteStatement kinds(changes.connection(), "SELECT kind, count(*) FROM row WHERE tab = ?1 GROUP BY kind");
    kinds.bind(1, std::int64_t{products - changes.tables().begin()});
    std::int64_t* const counts[] = {&figures.newProducts, &figures.changedProducts, &figures.removedProducts};
    while (kinds.step()) *counts[kinds.integer(0)] = kinds.integer(1);
}

using Json = nlohmann::json;

std::optional<std::int64_t> whole(const Json& counts, const char* name) {
    const auto found = counts.find(name);
    if (found == counts.end() || !found->is_number_integer()) return {};
    return found->get<std::int64_t>();
}

void readRemarks(const Json& counts, ChangeFigures& figures) {
    const auto remarks = counts.find("remarks");
    if (remarks == counts.end() || !remarks->is_object()) return;
    for (const auto& [name, remark] : remarks->items()) {
        const std::optional<std::int64_t> times = remark.is_object() ? whole(remark, "count") : std::nullopt;
        if (times.value_or(0) > 0) figures.remarks.push_back({name, *times});
    }
}

void readCounts(const std::string& text, ChangeFigures& figures) {
    const Json counts = Json::parse(text, nullptr, false);
    if (!counts.is_object()) return;
    figures.records = whole(counts, "records");
    figures.skipped = whole(counts, "skipped");
    readRemarks(counts, figures);
    const std::optional<std::int64_t> saved = whole(counts, "changed");
    const PriceFigures* headline = figures.headline();
    if (!saved || (headline != nullptr && headline->table != kProducts)) return;
    const std::int64_t moved = headline == nullptr ? 0 : headline->raised + headline->lowered;
    figures.unchanged = std::max(*saved - moved, std::int64_t{0});
}

}  // namespace

bool isPrice(std::string_view table, int column) {
    if (table == kProducts) return column == ordinal(kProdukt, "Inpris") || priceListOf(column) != 0;
    return table == kSupplierPrices && column >= kFirstPriceOfList && column <= kLastPriceOfList;
}

std::int64_t rowsBeyond(NetChanges& changes, std::string_view table, double percent) {
    SqliteStatement cells(changes.connection(),
                          fmt::format("SELECT cell.n, percent, row.tab FROM cell JOIN row ON row.n = cell.n >> {} "
                                      "WHERE abs(percent) > ?1 ORDER BY cell.n",
                                      NetChanges::kColumnBits));
    cells.bind(1, Value(percent));
    std::int64_t rows = 0;
    std::int64_t counted = 0;  // rows count from 1
    while (cells.step()) {
        const std::int64_t cell = cells.integer(0);
        const std::int64_t row = NetChanges::rowOf(cell);
        const std::string& name = changes.tables()[static_cast<std::size_t>(cells.integer(2))].name;
        Value changed;
        cells.read(1, FieldType::Double, changed);
        const bool counts =
            name == table && isPrice(name, NetChanges::columnOf(cell)) && std::isfinite(number(changed));
        if (!counts || row == counted) continue;
        counted = row;
        ++rows;
    }
    return rows;
}

const PriceFigures* ChangeFigures::headline() const {
    constexpr std::int64_t kFew = 10;
    const auto changed = [](const PriceFigures& price) { return price.raised + price.lowered; };
    const auto most = std::ranges::max_element(prices, {}, changed);
    if (most == prices.end()) return nullptr;
    for (const PriceFigures& price : prices) {
        const bool purchase = price.table == kProducts && price.column == ordinal(kProdukt, "Inpris");
        if (purchase && changed(price) * kFew >= changed(*most)) return &price;
    }
    return &*most;
}

ChangeFigures changeFigures(NetChanges& changes, const std::string& counts) {
    ChangeFigures figures;
    figures.prices = PriceReader(changes).read();
    countProducts(changes, figures);
    readCounts(counts, figures);
    return figures;
}

}  // namespace kolmera
