#include "definitions/sourceeditor.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include "definitions/editorworld.h"
#include "platform/encodings.h"
#include "spreadsheet/workbookparts.h"

namespace kolmera {
namespace {

using Name = SourceEditor::Property::Name;
using test::EditorWorld;
using testing::ElementsAre;
using testing::HasSubstr;

class SourceEditorTest : public testing::Test {
  protected:
    SourceEditor& open(std::string_view bytes, const std::optional<SourceSettings>& stored = std::nullopt) {
        world.rawPriceFile(bytes);
        editor.emplace(world.texts(), world.data() / "pris.txt", stored);
        EXPECT_TRUE(editor->detect()) << editor->error();
        return *editor;
    }
    std::vector<std::string> rows() {
        std::vector<std::string> rows;
        for (const SampleRow& row : editor->rows()) rows.push_back(fmt::format("{}", fmt::join(row.cells, "|")));
        return rows;
    }
    const SourceEditor::Property* property(Name name) {
        const auto found = std::ranges::find(editor->properties(), name, &SourceEditor::Property::name);
        return found == editor->properties().end() ? nullptr : &*found;
    }

    EditorWorld world;
    std::optional<SourceEditor> editor;
};

constexpr std::string_view kSemicolons =
    "Prislista 2026;;\nArtikelnr;Ben\xC3\xA4mning;Pris\nA1;Skruv;1 250,50\nA2;Mutter;12,50\nA3;Bult;3,00\n";

TEST_F(SourceEditorTest, TakesWhatTheUserSaysAndFindsTheRest) {
    open(kSemicolons);
    EXPECT_THAT(rows(),
                ElementsAre("Artikelnr|Benämning|Pris", "A1|Skruv|1 250,50", "A2|Mutter|12,50", "A3|Bult|3,00"));
    EXPECT_THAT(editor->words(), HasSubstr("utf-8"));
    EXPECT_FALSE(editor->maskMayReadIt());
    EXPECT_EQ(property(Name::Sheet), nullptr) << "a text has sheets";
    ASSERT_NE(property(Name::Skip), nullptr);
    EXPECT_EQ(property(Name::Skip)->text, "1");

    editor->type(Name::Skip, "2");
    EXPECT_EQ(rows().front(), "A1|Skruv|1 250,50");
    editor->type(Name::Skip, "x");
    EXPECT_EQ(editor->format().skip, 2U) << "what is no number is taken for one";
    editor->choose(Name::Headings, 0);
    EXPECT_FALSE(editor->format().headings);
    editor->choose(Name::Delimiter, 3);
    EXPECT_EQ(rows().front(), "A1;Skruv;1 250,50");
    EXPECT_EQ(editor->format().skip, 2U) << "what was said before is forgotten";
    editor->choose(Name::Kind, 1);
    EXPECT_EQ(editor->format().kind, SourceKind::Fixed);
    EXPECT_EQ(editor->format().headings, editor->format().skip > 0 || editor->format().headings)
        << "what was said of another kind of file is kept";
    editor->type(Name::Starts, "1, 4, 3");
    const auto starts = editor->format().starts;
    editor->type(Name::Starts, "1, 4, 9");
    EXPECT_THAT(editor->format().starts, ElementsAre(0, 3, 8));
    EXPECT_NE(starts, (std::vector<std::size_t>{0, 3, 2})) << "descending";
}

TEST_F(SourceEditorTest, CutsRecordsThatNothingParts) {
    std::string records;
    for (int i = 0; i < 20; ++i) records += fmt::format("A{:<8}Skruv      {:>8}", i, i * i);
    open(records);
    ASSERT_NE(property(Name::Length), nullptr);
    EXPECT_EQ(property(Name::Length)->text, "28");
    editor->type(Name::Length, "14");
    EXPECT_EQ(editor->format().length, 14U);
    EXPECT_EQ(editor->rows().size(), 40U);
}

TEST_F(SourceEditorTest, KeepsWhatTheJobHas) {
    SourceFormat stored;
    stored.delimiter = ',';
    stored.skip = 3;
    stored.thousandsSign = " ";
    SourceSettings settings{.format = stored};
    settings.columns = {{.column = 1, .from = {.heading = "Artikelnr", .number = 1}}};
    settings.leaveOut = {{.column = {.heading = "Pris", .number = 3}, .pattern = "Summa*"}};
    open(kSemicolons, settings);
    EXPECT_EQ(editor->format(), stored);
    EXPECT_EQ(editor->settings().leaveOut.front().column.heading, "")
        << "a job without headings looks for one, and stops";
    EXPECT_EQ(editor->settings().columns.front().from, (ColumnName{.heading = "", .number = 1}));
    for (const auto& each : editor->properties()) EXPECT_TRUE(each.sure || each.name == Name::Record) << each.caption;
}

TEST_F(SourceEditorTest, OffersPatternsForTheFilesOfAnArchive) {
    test::writeZip(world.data() / "pris.txt",
                   {{"oktober.csv", std::string(kSemicolons)}, {"villkor.txt", "Priser"}, {"mer.txt", "text"}});
    editor.emplace(world.texts(), world.data() / "pris.txt", std::nullopt);
    ASSERT_TRUE(editor->detect()) << editor->error();
    ASSERT_NE(property(Name::Member), nullptr);
    const std::vector<std::string> choices = property(Name::Member)->choices;
    EXPECT_THAT(choices, testing::UnorderedElementsAre("oktober.csv", "villkor.txt", "mer.txt", "*.csv"));
    editor->choose(Name::Member, static_cast<int>(choices.size()) - 1);
    EXPECT_EQ(editor->format().member, "*.csv");
    EXPECT_EQ(rows().front(), "Artikelnr|Benämning|Pris");
    EXPECT_EQ(property(Name::Member)->chosen, static_cast<int>(choices.size()) - 1);
}

TEST_F(SourceEditorTest, NamesHeadingsThatAreGone) {
    SourceSettings settings;
    settings.columns = {{.column = 1, .from = {.heading = "Art.nr", .number = 1}}};
    settings.format.skip = 1;
    settings.format.headings = true;
    open(kSemicolons, settings);
    EXPECT_THAT(editor->words(), HasSubstr("Art.nr"));
    EXPECT_EQ(editor->settings().columns, settings.columns);
}

TEST_F(SourceEditorTest, LetsTheMaskReadFilesThatItCan) {
    const struct {
        const char* fault;
        std::string_view file;
        bool mayRead;
    } cases[] = {
        {"tabs are converted", "A1\tm\xF6rk\t1,50\r\nA2\tl\xF6s\t2,50\r\nA3\tr\xF6r\t3,50\r\n", true},
        {"fixed positions are converted", "A1   m\xF6rk    1050\r\nA2   l\xF6s     2050\r\nA3   r\xF6r     3050\r\n",
         true},
        {"fixed positions in UTF-8 are read as they are",
         "A1   m\xC3\xB6rk    1050\r\nA2   l\xC3\xB6s     2050\r\nA3   r\xC3\xB6r     3050\r\n", false},
        {"fixed positions of ASCII are converted", "A1   mork    1050\r\nA2   los     2050\r\nA3   ror     3050\r\n",
         true},
        {"semicolons are not", "A1;m\xF6rk;1,50\r\nA2;l\xF6s;2,50\r\nA3;r\xF6r;3,50\r\n", false},
        {"UTF-8 is read as it is", "A1\tm\xC3\xB6rk\t1,50\r\nA2\tl\xC3\xB6s\t2,50\r\nA3\tr\xC3\xB6r\t3,50\r\n", false},
    };
    for (const auto& c : cases) {
        open(c.file);
        EXPECT_EQ(editor->maskMayReadIt(), c.mayRead) << c.fault << ": " << editor->words();
    }
    test::writeZip(world.data() / "pris.txt", {{"p.txt", std::string(cases[1].file)}});
    editor.emplace(world.texts(), world.data() / "pris.txt", std::nullopt);
    ASSERT_TRUE(editor->detect());
    EXPECT_FALSE(editor->maskMayReadIt()) << "a zip is read as it is";
}

TEST_F(SourceEditorTest, ShowsReadingsSideBySideWhereTheyDiffer) {
    open("Nr;Text;Pris\n1;1\xBD;1,50\n2;\x94l;2,50\n3;same;3,50\n");
    ASSERT_EQ(editor->decodings().size(), 3U) << editor->words();
    for (const auto& decoding : editor->decodings()) {
        EXPECT_EQ(decoding.lines.size(), 2U) << "a line that reads the same everywhere";
    }
    EXPECT_NE(editor->decodings()[0].lines, editor->decodings()[1].lines);
    editor->chooseCharacters(CharacterSet::Oem850);
    EXPECT_TRUE(editor->decodings().empty()) << "asked again of what was said";
    EXPECT_THAT(rows(), testing::Contains("2|öl|2,50"));
}

TEST_F(SourceEditorTest, SaysWhyAFileCannotBeRead) {
    world.rawPriceFile("PK\x03\x04 no archive");
    editor.emplace(world.texts(), world.data() / "pris.txt", std::nullopt);
    const bool read = editor->detect();
    EXPECT_EQ(read, editor->error().empty());
    editor.emplace(world.texts(), world.data() / "saknas.txt", std::nullopt);
    EXPECT_FALSE(editor->detect());
    EXPECT_EQ(editor->words(), editor->error());
}

}  // namespace
}  // namespace kolmera
