#include "history/changefigures.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "db/productcolumns.h"

namespace kolmera {
namespace {

using namespace std::string_literals;

constexpr int kInpris = ordinal(kProdukt, "Inpris"), kUtpris = utprisOrdinal(1), kName = 6;

RowChange product(ChangeKind kind, std::int64_t id, std::vector<CellChange> cells) {
    return {.kind = kind,
            .table = "Produkt",
            .id = id,
            .record = id,
            .label = fmt::format("P{}", id),
            .cells = std::move(cells)};
}

RowChange repriced(std::int64_t id, double before, double after, int column = kInpris) {
    return product(ChangeKind::Changed, id, {{column, before, after}});
}

ChangeFigures figuresOf(const std::vector<RowChange>& changes, const std::string& counts = {}) {
    NetChanges net;
    for (const RowChange& change : changes) net.add(change);
    net.finish();
    return changeFigures(net, counts);
}

TEST(ChangeFigures, ManyChangesOfOneRowAreOne) {
    const Value none;
    const RowChange priced = product(ChangeKind::Added, 1, {{kInpris, none, 10.0}});
    const RowChange unpriced = product(ChangeKind::Removed, 1, {{kInpris, 10.0, none}});
    const RowChange emptied = product(ChangeKind::Removed, 1, {{kInpris, 0.0, none}});
    const RowChange filled = product(ChangeKind::Added, 1, {{kInpris, none, 0.0}});
    const struct {
        const char* fault;
        const char* expected;  ///< new, changed and removed products, raised and lowered prices
        std::vector<RowChange> changes;
    } cases[] = {{"each step counted by itself", "0 1 0 0 1", {repriced(1, 10, 20), repriced(1, 20, 5)}},
                 {"a price that came back counted", "0 0 0 0 0", {repriced(1, 10, 20), repriced(1, 20, 10)}},
                 {"a new product's price counted as raised", "1 0 0 0 0", {priced, repriced(1, 10, 20)}},
                 {"a product that came and went counted", "0 0 0 0 0", {priced, unpriced}},
                 {"a product that went counted as changed", "0 0 1 0 0", {repriced(1, 9, 10), unpriced}},
                 {"a product that was written anew counted as new", "0 0 0 0 0", {unpriced, priced}},
                 {"its new price not counted", "0 1 0 1 0", {unpriced, priced, repriced(1, 10, 11)}},
                 {"a 0 that was written anew counted as changed", "0 0 0 0 0", {emptied, filled}},
                 {"a price behind a 0 that was written anew not counted", "0 1 0 1 0", {emptied, priced}},
                 {"a name counted as a price", "0 1 0 0 0", {product(ChangeKind::Changed, 1, {{kName, "1"s, "2"s}})}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const ChangeFigures figures = figuresOf(c.changes);
        const PriceFigures still;
        const PriceFigures& price = figures.headline() == nullptr ? still : *figures.headline();
        EXPECT_EQ(fmt::format("{} {} {} {} {}", figures.newProducts, figures.changedProducts, figures.removedProducts,
                              price.raised, price.lowered),
                  c.expected);
    }
}

TEST(ChangeFigures, PricesInPerCent) {
    const ChangeFigures figures = figuresOf(
        {repriced(1, 100, 105), repriced(2, 100, 95), repriced(3, 100, 250), repriced(4, 0, 7), repriced(5, 8, 0),
         repriced(6, 100, 101)},
        R"({"records": 9, "changed": 8, "skipped": 1, "remarks": {"no_key": {"count": 1}, "not_saved": {"count": 0}}})");
    const PriceFigures& price = *figures.headline();
    EXPECT_EQ(price.raised, 4);
    EXPECT_EQ(price.lowered, 2);
    EXPECT_EQ(price.fromZero, 1);
    EXPECT_EQ(price.toZero, 1);
    EXPECT_DOUBLE_EQ(price.median.value(), 1);  // of -100, -5, 1, 5, 150
    EXPECT_DOUBLE_EQ(price.largestRise->percent, 150);
    EXPECT_EQ(price.largestRise->product, "P3");
    EXPECT_DOUBLE_EQ(price.largestFall->percent, -100);
    EXPECT_EQ(price.histogram, (decltype(price.histogram){1, 0, 0, 1, 0, 0, 1, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(figures.records, 9);
    EXPECT_EQ(figures.unchanged, 2);
    EXPECT_EQ(figures.skipped, 1);
    ASSERT_EQ(figures.remarks.size(), 1U);
    EXPECT_EQ(figures.remarks[0].name, "no_key");
}

TEST(ChangeFigures, TheHeadlineIsWhatTheRunWasAbout) {
    std::vector<RowChange> changes;
    for (int id = 1; id <= 11; ++id) changes.push_back(repriced(id, 10, 12, kUtpris));
    EXPECT_EQ(figuresOf(changes).headline()->column, kUtpris);
    changes.push_back(repriced(20, 10, 9));  // one of eleven: by the way
    EXPECT_EQ(figuresOf(changes).headline()->column, kUtpris);
    changes.push_back(repriced(21, 10, 9));
    EXPECT_EQ(figuresOf(changes).headline()->column, kInpris);
    EXPECT_DOUBLE_EQ(figuresOf({repriced(1, 100, 101), repriced(2, 100, 103)}).headline()->median.value(), 2);
    EXPECT_EQ(figuresOf({}).headline(), nullptr);
    EXPECT_EQ(figuresOf({}, "not JSON").records, std::nullopt);
}

}  // namespace
}  // namespace kolmera
