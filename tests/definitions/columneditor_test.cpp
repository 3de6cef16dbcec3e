#include "definitions/columneditor.h"

#include <gmock/gmock.h>

#include "definitions/convertedsample.h"
#include "definitions/editorworld.h"
#include "definitions/leftouteditor.h"
#include "platform/tsv.h"

namespace kolmera {
namespace {

using Name = ColumnProperty;
using test::EditorWorld;
using testing::ElementsAre;
using testing::HasSubstr;

class ColumnEditorTest : public testing::Test {
  protected:
    ColumnEditorTest() {
        settings.format.headings = true;
        settings.format.decimalSign = ',';
        settings.format.thousandsSign = " ";
        target.records = TargetLayout::Records::Tabs;
        target.columns.assign(3, {.use = ColumnUse::Text});
        world.rawPriceFile("Artnr;Pris;Datum\n 00A1 ;1 250,50 kr;24/12 2026\nA2;12,50-;\xE2\x82\xAC\xE2\x99\xA5\n");
    }
    ColumnEditor& open(int column) {
        editor.emplace(world.texts(), world.data() / "pris.txt", settings, target);
        editor->chooseColumn(column);
        return *editor;
    }
    std::vector<std::string> after() {
        std::vector<std::string> texts;
        for (const auto& shown : editor->shown()) texts.push_back(shown.after + (shown.fits ? "" : " !"));
        return texts;
    }

    EditorWorld world;
    SourceSettings settings;
    TargetLayout target;
    std::optional<ColumnEditor> editor;
};

TEST_F(ColumnEditorTest, ShowsWhatEachPropertyDoes) {
    const struct {
        const char* fault;
        int column;
        std::vector<std::pair<Name, int>> chosen;
        std::vector<std::pair<Name, std::string>> typed;
        std::vector<std::string> after;
    } cases[] = {
        {"blanks are kept", 0, {}, {}, {"00A1", "A2"}},
        {"blanks cannot be kept", 0, {{Name::Blanks, 1}}, {}, {" 00A1 ", "A2"}},
        {"zeros stay", 0, {{Name::Zeros, 1}}, {}, {"A1", "A2"}},
        {"zeros are not filled up", 0, {{Name::Zeros, 2}}, {{Name::Width, "5"}}, {"000A1", "000A2"}},
        {"a width of letters", 0, {{Name::Zeros, 2}}, {{Name::Width, "x"}}, {"00A1", "A2"}},
        {"prefixes",
         0,
         {},
         {{Name::DropPrefix, "00"}, {Name::AddPrefix, "L"}, {Name::AddSuffix, "/"}},
         {"LA1/", "LA2/"}},
        {"a suffix stays", 0, {}, {{Name::DropSuffix, "1"}}, {"00A", "A2"}},
        {"the cell goes before the fixed value", 0, {}, {{Name::Fixed, "X"}}, {"X", "X"}},
        {"columns are not joined", 0, {{Name::Join, 2}}, {{Name::JoinedBy, "-"}}, {"00A1 -1 250,50 kr", "A2-12,50-"}},
        {"no column", 0, {{Name::From, 0}}, {}, {"", ""}},
        {"another column", 0, {{Name::From, 2}}, {}, {"1 250,50 kr", "12,50-"}},
        {"currency and minus", 1, {{Name::Meaning, 2}}, {}, {"1250.50", "-12.50"}},
        {"signs are the file's", 1, {{Name::Meaning, 2}, {Name::DecimalSign, 2}}, {}, {"1 250,50 kr !", "12,50- !"}},
        {"dates as they stand", 2, {{Name::Meaning, 3}, {Name::DateOrder, 2}}, {}, {"20261224", "€? !"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        open(c.column);
        for (const auto& [name, choice] : c.chosen) editor->choose(name, choice);
        for (const auto& [name, text] : c.typed) editor->type(name, text);
        EXPECT_EQ(after(), c.after);
        EXPECT_EQ(editor->settings().columns.size(), c.chosen.empty() && c.typed.empty() ? 0U : 1U);
    }
    EXPECT_THAT(editor->remarks(), HasSubstr("1"));
}

TEST_F(ColumnEditorTest, BindsByHeadingUnlessToldOtherwise) {
    open(1).choose(Name::From, 3);
    EXPECT_EQ(editor->settings().columns.front().from, (ColumnName{.heading = "Datum", .number = 3}));
    editor->choose(Name::FoundBy, 1);
    EXPECT_EQ(editor->settings().columns.front().from, (ColumnName{.heading = "", .number = 3}));

    settings.columns = {{.column = 2, .from = {.heading = "Nettopris", .number = 2}}};
    open(0);
    editor.emplace(world.texts(), world.data() / "pris.txt", settings, target);
    EXPECT_EQ(editor->chosen(), 1) << "a heading that is gone is not shown first";
    EXPECT_THAT(editor->columns()[1], HasSubstr("Nettopris"));
    const auto& from = editor->properties().front();
    EXPECT_EQ(from.chosen, static_cast<int>(from.choices.size()) - 1);
    editor->choose(Name::From, from.chosen);
    EXPECT_EQ(editor->settings().columns, settings.columns) << "what is gone can be chosen anew";
    editor->choose(Name::From, 2);
    EXPECT_EQ(editor->settings().columns.front().from.heading, "Pris");
}

TEST_F(ColumnEditorTest, AddsAColumnThatTheFileHasNot) {
    open(0).addColumn();
    EXPECT_EQ(editor->chosen(), 3);
    EXPECT_THAT(after(), ElementsAre("", ""));
    editor->type(Name::Fixed, "3020");
    EXPECT_THAT(after(), ElementsAre("3020", "3020"));
    const ConvertedSample sample =
        convertSample(world.data() / "pris.txt", editor->settings(), std::nullopt, world.data());
    EXPECT_THAT(readWholeFile(sample.path), HasSubstr("\t3020\r\n"));
    target.records = TargetLayout::Records::Lines;
    open(0).addColumn();
    EXPECT_EQ(editor->columns().size(), 3U) << "a line of its own";
}

TEST_F(ColumnEditorTest, LeavesOutRowsByPattern) {
    world.rawPriceFile("Artnr;Text\nA1;Summaband\n;\nSumma grupp 1;\nA2;Bult\n;Totalt 2 rader\n");
    LeftOutEditor rows(world.texts(), world.data() / "pris.txt", settings);
    EXPECT_TRUE(rows.leftOut().empty());
    EXPECT_FALSE(rows.add(0, " "));
    EXPECT_TRUE(rows.suggest());
    ASSERT_EQ(rows.patterns().size(), 2U);
    EXPECT_EQ(rows.leftOut().size(), 3U) << "the article Summaband is one, until the column is named";
    rows.remove(0);
    rows.add(1, "summa*");
    EXPECT_EQ(rows.patterns().back().column, (ColumnName{.heading = "Artnr", .number = 1}));
    std::vector<std::uint64_t> left;
    for (const auto& row : rows.leftOut()) left.push_back(row.row);
    EXPECT_THAT(left, ElementsAre(4, 6));
    EXPECT_THAT(rows.lines().back(), HasSubstr("summa* (1)"));
}

}  // namespace
}  // namespace kolmera
