#include "history/changelist.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "db/productcolumns.h"
#include "history/changetable.h"

namespace kolmera {
namespace {

using namespace std::string_literals;

constexpr int kInpris = ordinal(kProdukt, "Inpris"), kUtpris = utprisOrdinal(1), kNumber = 1, kName = 6, kGroup = 5;
const Value kNone;

/// Four products: B2 new, A1 dearer in two prices, "ål" cheaper and renamed, C3 from 0; and A1's price list.
class Changes : public ::testing::Test {
  protected:
    Changes() {
        net.add({ChangeKind::Added,
                 "Produkt",
                 7,
                 1,
                 "",
                 {{kNumber, kNone, "B2"s}, {kName, kNone, "Öring"s}, {kInpris, kNone, 5.0}, {kUtpris, kNone, 0.0}}});
        net.add({ChangeKind::Changed, "Produkt", 3, 2, "A1", {{kInpris, 10.0, 12.5}, {kUtpris, 20.0, 21.0}}});
        net.add({ChangeKind::Changed, "Produkt", 4, 3, "ål", {{kInpris, 10.0, 5.0}, {kName, "Aal"s, "Ål, rökt"s}}});
        net.add({ChangeKind::Changed, "Produkt", 5, 4, "C3", {{kInpris, 0.0, 1.0}}});
        net.add({ChangeKind::Changed, "Levprislista", 1, 2, "A1", {{7, 10.0, 12.5}}});
        net.finish();
        net.nameProducts([](const auto& take) {
            take({.id = 3, .number = "A1", .name = "Sill"});
            take({.id = 4, .number = "ål", .name = "from the company"});
        });
    }

    /// The rows as "product column before>after", a heading as "[product column members]".
    std::string shown(const ChangeQuery& query) {
        ChangeList list(net, texts, Locale(Locale::Kind::Swedish));
        const std::int64_t skipped[] = {3, 9};
        list.mark(1, skipped);
        list.show(query);
        std::string text;
        for (const ChangeRow& row : list.rows(0, list.count())) {
            text += row.members > 0
                        ? fmt::format("[{}{} {}] ", row.product, row.caption, row.members)
                        : fmt::format("{} {} {}>{}; ", row.product, row.caption, row.beforeText, row.afterText);
        }
        EXPECT_EQ(list.count() - list.cells(), std::count(text.begin(), text.end(), '['));
        return text;
    }

    NetChanges net;
    LanguageTexts texts;
};

TEST_F(Changes, AreFiltered) {
    const std::string a1 = "A1 Inpris 10>12,5; A1 1Utpris 20>21; ", list = "A1 : Inpris 10>12,5; ";
    const struct {
        const char* fault;
        ChangeQuery query;
        std::string expected;
    } cases[] = {
        {"a new row's empty cell shown", {.text = "b2"}, "B2 Nummer >B2; B2 Benämning >Öring; B2 Inpris >5; "},
        {"upper case not found in å ä ö", {.text = "öRI"}, "B2 Nummer >B2; B2 Benämning >Öring; B2 Inpris >5; "},
        {"the company's name not searched", {.text = "sill"}, a1 + list},
        {"the record's own name lost to the company's",
         {.text = "rökt"},
         "ål Benämning Aal>Ål, rökt; ål Inpris 10>5; "},
        {"a number not found as it is written", {.text = "12,5"}, "A1 Inpris 10>12,5; " + list},
        {"one word enough", {.text = "A1 utpris"}, "A1 1Utpris 20>21; "},
        {"a price that was 0 left out", {.over = 50}, "C3 Inpris 0>1; "},
        {"a fall left out", {.over = 25}, "ål Inpris 10>5; C3 Inpris 0>1; "},
        {"changed rows shown", {.onlyNew = true}, "B2 Nummer >B2; B2 Benämning >Öring; B2 Inpris >5; "},
        {"records without mark shown", {.onlyMarked = true}, "ål Benämning Aal>Ål, rökt; ål Inpris 10>5; "},
        {"another's mark taken", {.mark = 2}, ""},
        {"the column of another table shown", {.column = {{1, 7}}}, list},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(shown(c.query), c.expected);
    }
}

TEST_F(Changes, AreSortedAndGrouped) {
    using Query = ChangeQuery;
    const struct {
        const char* fault;
        ChangeQuery query;
        std::string expected;
    } cases[] = {
        {"å sorted as a",
         {.text = "Inpris", .sort = Query::Sort::Product, .descending = true},
         "ål Inpris 10>5; C3 Inpris 0>1; B2 Inpris >5; A1 Inpris 10>12,5; A1 : Inpris 10>12,5; "},
        {"numbers sorted as texts",
         {.text = "Inpris", .sort = Query::Sort::After},
         "C3 Inpris 0>1; B2 Inpris >5; ål Inpris 10>5; A1 Inpris 10>12,5; A1 : Inpris 10>12,5; "},
        {"a rise from 0 not the largest",
         {.over = 0, .sort = Query::Sort::Percent, .descending = true},
         "C3 Inpris 0>1; A1 Inpris 10>12,5; A1 : Inpris 10>12,5; A1 1Utpris 20>21; ål Inpris 10>5; "},
        {"tables of one product apart",
         {.text = "a1", .group = Query::Group::Product, .sort = Query::Sort::After, .descending = true},
         "[A1 3] A1 1Utpris 20>21; A1 Inpris 10>12,5; A1 : Inpris 10>12,5; "},
        {"columns of two tables together",
         {.over = 0, .group = Query::Group::Column},
         "[1Utpris 1] A1 1Utpris 20>21; [: Inpris 1] A1 : Inpris 10>12,5; "
         "[Inpris 3] A1 Inpris 10>12,5; ål Inpris 10>5; C3 Inpris 0>1; "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(shown(c.query), c.expected);
    }
}

TEST_F(Changes, AreReadInWindows) {
    ChangeList list(net, texts, Locale(Locale::Kind::Swedish));
    list.show({.group = ChangeQuery::Group::Product});
    const std::vector<ChangeRow> all = list.rows(0, 100);
    ASSERT_EQ(list.count(), 13);
    for (std::int64_t place = 0; place < list.count(); ++place) {
        const std::vector<ChangeRow> one = list.rows(place, 1);
        ASSERT_EQ(one.size(), 1U);
        EXPECT_EQ(one[0].afterText, all[static_cast<std::size_t>(place)].afterText);
        EXPECT_EQ(one[0].members, all[static_cast<std::size_t>(place)].members);
    }
    EXPECT_TRUE(list.rows(13, 5).empty());
}

TEST(TabbedLine, KeepsSpreadsheetsFromTakingTextsForFormulas) {
    const Locale locale(Locale::Kind::Swedish);
    const struct {
        const char *fault, *cell, *expected;
    } cases[] = {{"a formula let through", "=1+1", "'=1+1"},      {"a call let through", "@SUM(A1)", "'@SUM(A1)"},
                 {"a text with a sign let through", "-a", "'-a"}, {"a negative number made a text", "-5,25", "-5,25"},
                 {"a change made a text", "+2,5 %", "+2,5 %"},    {"a dash made a text", "-", "-"},
                 {"a cell cut in two", "a\tb\r\nc", "a b  c"}};
    for (const auto& c : cases) {
        const std::string cells[] = {c.cell, "b"};
        EXPECT_EQ(tabbedLine(cells, locale), c.expected + "\tb"s) << c.fault;
    }
}

}  // namespace
}  // namespace kolmera
