#include "definitions/masksample.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "definitions/editorworld.h"
#include "lang/keys/masksample.h"

namespace kolmera {
namespace {

using test::EditorWorld;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(HeadingWords, KnowHeadingsAsSuppliersWriteThem) {
    const test::TemporaryFolder folder;
    HeadingWords words = HeadingWords::read(folder.path());
    const struct {
        const char* fault;
        std::string_view heading, target;
    } cases[] = {
        {"signs and letter case count", "ART. NR", "Levartikelnr"},
        {"Swedish capitals are other letters", "BENÄMNING", "Benämning"},
        {"a letter with a combining mark is another one", "Bena\xCC\x88mning", "Benämning"},
        {"a currency in brackets counts", "Bruttopris (SEK)", "Inpris"},
        {"endings count", "Pris exkl. moms SEK", "Inpris"},
        {"a longer word is taken for its ending", "Prisändringsorsak", ""},
        {"English is not known", "Item Number", "Levartikelnr"},
        {"the second of two names is taken for the first", "Benämning 2", "Benämning2"},
        {"a hard blank counts", "EAN\xC2\xA0kod", "alt:EAN"},
        {"an empty heading means something", " ", ""},
        {"an ending alone is a heading", "SEK", ""},
        {"what a price is for makes another word of it", "Pris/enhet", "Inpris"},
        {"so do the words for it", "Pris per enhet", "Inpris"},
        {"a slash cuts a heading", "Pris/Netto", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        const auto targets = words.targets(c.heading);
        EXPECT_EQ(targets.empty() ? "" : targets.front(), c.target);
    }
    folder.write(kOwnHeadingWords, "# ours\nheading\ttarget\nPris\t2Utpris\nHylla\tLagerplats\n");
    words = HeadingWords::read(folder.path());
    EXPECT_THAT(words.targets("pris"), ElementsAre("2Utpris", "Inpris")) << "the built-in row first";
    EXPECT_THAT(words.targets("Hylla"), ElementsAre("Lagerplats"));
}

TEST(Ean, NeedsThirteenDigitsAndTheRightLastOne) {
    EXPECT_TRUE(isEan("7310865004703"));
    for (const char* wrong : {"7310865004702", "0000000000000", "731086500470", "73108650047O3", ""}) {
        EXPECT_FALSE(isEan(wrong)) << wrong;
    }
}

TEST(Ruler, IsSuggestedBehindBlankColumns) {
    const struct {
        const char* fault;
        std::vector<std::string> records;
        std::vector<int> boundaries;
    } cases[] = {
        {"a blank within one record cuts", {"ab c", "abcd"}, {}},
        {"cut at the first blank instead of behind the last", {"ab  cd", "a   cd"}, {5}},
        {"right-aligned numbers are cut apart", {"A     5", "B   125"}, {5}},
        {"blanks at the beginning and the end are pieces", {"  ab cd  "}, {6}},
        {"a short record makes the rest blank", {"ab cd ef", "ab"}, {4, 7}},
        {"line ends and NUL are text", {std::string("ab\0cd\r\n", 7)}, {4}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        EXPECT_EQ(boundariesBehindBlanks(c.records, 9), c.boundaries);
    }
}

/// A mask editor and its try-out, in a company with the heading EAN and the supplier 1010.
class MaskSampleTest : public testing::Test {
  protected:
    MaskSample& open(std::string_view file, char structure, const char* length = "", char SkapaNya = 'N') {
        if (!editor) {
            world.add("Prodaltrubrik", {{"Nummer", std::int64_t{1}}, {"Rubrik", "EAN"}});
            world.add("Leverantör", {{"Nummer", "1010"}, {"Söknamn", "El"}});
        }
        world.rawPriceFile(file);
        EXPECT_TRUE(world.openCompany());
        editor.emplace(world.texts(), world.boxes, world.data(), world.data() / "pris.txt", SampleLook());
        EXPECT_TRUE(editor->open(world.state.sql, 0));
        editor->setSkapaNya(SkapaNya);
        editor->setPostlängd(length);
        editor->setAntalRader(length);
        editor->setFilTyp(structure);
        sample.emplace(openMaskSample(world.state.sql, world.texts(), world.boxes, world.data(), *editor, SampleRun()));
        return *sample;
    }
    static std::string shown(const Relation& each) {
        return fmt::format("{}>{} {}{}", each.Källa, each.Mål, each.TypKod, each.Division);
    }
    std::vector<std::string> relations() {
        std::vector<std::string> rows;
        for (const EditedRelation& edited : editor->relations()) rows.push_back(shown(edited.relation));
        return rows;
    }
    std::vector<std::string> pieces() {
        std::vector<std::string> rows;
        for (const EditedRelation& each : editor->relations()) {
            rows.push_back(fmt::format("{}+{}", each.relation.FrånPos, each.relation.Längd));
        }
        return rows;
    }
    void chooseTarget(int code) { sample->setTarget(editor->targetList().row(code)); }

    EditorWorld world;
    std::optional<MaskEditor> editor;
    std::optional<MaskSample> sample;
};

TEST_F(MaskSampleTest, SuggestsTargets) {
    const struct {
        const char* fault;
        std::string_view file;
        char SkapaNya;
        std::vector<std::string> relations;
    } cases[] = {
        {"headings are not read",
         "Art.nr\tBen\xE4mning\tBruttopris\tEAN\tRabattgrupp\r\nA1\tSkruv\t5\t\tR\r\n",
         'N',
         {"1>4 US", "2>6 UI", "3>21 UI", "4>138 UI", "5>134 IR"}},
        {"the products of a mask that makes them have no number",
         "Name\tItem no\r\nx\ty\r\n",
         'J',
         {"2>1 US", "1>6 UI", "2>4 UI"}},
        {"the second price takes the first one's target", "Artnr\tPris\tNettopris\r\n", 'N', {"1>4 US", "2>21 UI"}},
        {"one known word makes headings of a record", "Pris\tSkruv\r\nx\ty\r\n", 'N', {}},
        {"contents are not looked at",
         "7310865004703\t1010\t2026-01-31\t12,50\r\n7310865004703\t1010\t2026-02-01\t1 200,00\r\n"
         "7310865004703\t1010\t2026-02-02\t0.75\r\n",
         'N',
         {"1>138 US", "2>3 UI", "3>49 UI", "4>21 UI"}},
        {"two records are enough to guess by", "7310865004703\t12,50\r\n7310865004703\t12,50\r\n", 'N', {}},
        {"one in five that is none does not count", "12,50\r\n12,50\r\n12,50\r\n12,50\r\nslut\r\n", 'N', {}},
        {"whole numbers are prices, digits dates", "20261341\t12\r\n20260230\t13\r\n99999999\t14\r\n", 'N', {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        open(c.file, 'T', "", c.SkapaNya);
        EXPECT_EQ(sample->suggestions(), c.relations.size());
        EXPECT_TRUE(editor->relations().empty()) << "suggestions are relations";
        sample->acceptAll();
        EXPECT_EQ(relations(), c.relations);
        EXPECT_EQ(sample->suggestions(), 0U);
    }
}

TEST_F(MaskSampleTest, ShowsEachFieldWithItsTargets) {
    open("Art.nr\tHylla\tPris\r\nA1\tH\t5\r\n", 'T');
    EXPECT_EQ(sample->record(), 1) << "the headings are tried as a record";
    EXPECT_EQ(sample->columnCaption(0), "1 Art.nr\nLevartikelnr?");
    EXPECT_EQ(sample->columnCaption(1), "2 Hylla\n–");
    EXPECT_EQ(sample->rows()[1].raw, "H");
    sample->accept();
    EXPECT_EQ(sample->chosen(), 2) << "not on the next suggestion";
    EXPECT_THAT(sample->remark(), HasSubstr("Inpris"));
    EXPECT_EQ(sample->rows()[0].rule, "Uppdatera alltid, Söknyckel");
    EXPECT_EQ(sample->columnCaption(0), "1 Art.nr\nLevartikelnr");
    sample->chooseField(1);
    chooseTarget(4);
    EXPECT_EQ(sample->remark(), world.texts().ModulTextMed(text::masksample::kTargetTaken, "Levartikelnr"));
    chooseTarget(59);
    EXPECT_EQ(sample->chosenTarget(), editor->targetList().row(59));
    chooseTarget(9);
    EXPECT_THAT(relations(), ElementsAre("1>4 US", "2>9 UI"));
    chooseTarget(0);
    EXPECT_THAT(relations(), ElementsAre("1>4 US"));
    sample->chooseRecord(2);
    EXPECT_EQ(sample->record(), 1) << "a record behind the last";
}

TEST_F(MaskSampleTest, KeepsRelationsInPlaceUnderTheRuler) {
    open("4711  Skruv   1050\n4712  Mutter    50\n", 'P', "18");
    EXPECT_THAT(sample->lines(), ElementsAre("4711  Skruv   1050", "4712  Mutter    50"));
    sample->suggestBoundaries();
    EXPECT_THAT(sample->ruler().boundaries(), ElementsAre(7, 15));
    sample->choosePieceAt(8);
    chooseTarget(6);
    sample->choosePieceAt(15);
    chooseTarget(21);
    EXPECT_THAT(pieces(), ElementsAre("7+8", "15+4"));
    sample->moveBoundary(15, 13);
    EXPECT_THAT(pieces(), ElementsAre("7+6", "13+6")) << "the pieces at both sides do not follow";
    sample->moveBoundary(13, 7);
    EXPECT_THAT(pieces(), ElementsAre("7+6", "13+6")) << "moved onto the next boundary";
    sample->toggleBoundary(13);
    EXPECT_THAT(pieces(), ElementsAre("7+6", "13+6")) << "two that are read are joined";
    EXPECT_EQ(sample->remark(), world.texts().ModulText(text::masksample::kBothRead));
    sample->toggleBoundary(10);
    EXPECT_THAT(pieces(), ElementsAre("7+3", "13+6")) << "a cut relation keeps all";
    sample->toggleBoundary(10);
    sample->toggleBoundary(7);
    EXPECT_THAT(pieces(), ElementsAre("1+12", "13+6")) << "the piece before does not join";
    sample->suggestBoundaries();
    EXPECT_THAT(sample->ruler().boundaries(), ElementsAre(13)) << "a piece that is read is cut";
    EXPECT_THAT(relations(), ElementsAre("1>6 UI", "2>21 UI"));
}

TEST_F(MaskSampleTest, SuggestsTheLengthOfRecordsWithTheirBoundaries) {
    std::string file;
    for (int i = 0; i < 50; ++i) file += fmt::format("{:04}  Skruv   {:4}\n", i * 77, i * 31);
    open(file, 'P', "100");
    sample->suggestBoundaries();
    EXPECT_EQ(editor->mask().Postlängd, "18");
    EXPECT_EQ(sample->lines()[1], "0077  Skruv     31");
    EXPECT_THAT(sample->ruler().boundaries(), ElementsAre(7, 15));
}

TEST_F(MaskSampleTest, ShowsRelationsThatOverlap) {
    Mask mask{.Namn = "Lapp", .FilTyp = 'P', .AntalRader = "1", .Postlängd = "6"};
    MaskFile(world.data())
        .save(mask, {{.Källa = 1, .Mål = 1, .FrånPos = 1, .Längd = 4, .TypKod = 'U', .Division = 'S'},
                     {.Källa = 2, .Mål = 6, .FrånPos = 3, .Längd = 9, .TypKod = 'U'}});
    world.rawPriceFile("abcdef\n");
    ASSERT_TRUE(world.openCompany());
    editor.emplace(world.texts(), world.boxes, world.data(), world.data() / "pris.txt", SampleLook());
    ASSERT_TRUE(editor->open(world.state.sql, 1));
    sample.emplace(openMaskSample(world.state.sql, world.texts(), world.boxes, world.data(), *editor, SampleRun()));
    std::vector<std::string> rows;
    for (const MaskSample::Row& row : sample->rows()) rows.push_back(row.field + ":" + row.raw + ":" + row.target);
    EXPECT_THAT(rows, ElementsAre("1-2:ab:", "3-4:cd:", "5-6:ef:", "1-4:abcd:Nummer", "3-11:cdef:Benämning"));
    EXPECT_FALSE(editor->changed());
}

}  // namespace
}  // namespace kolmera
