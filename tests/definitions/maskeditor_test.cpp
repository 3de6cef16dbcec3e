#include "definitions/maskeditor.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>

#include <fstream>
#include <map>

#include "definitions/editorworld.h"
#include "definitions/relationtable.h"
#include "import/masks/masklook.h"
#include "lang/keys/definitions.h"
#include "lang/keys/files.h"
#include "lang/keys/look.h"
#include "lang/keys/mask.h"
#include "lang/keys/masksample.h"
#include "lang/keys/prismtyp.h"

namespace kolmera {
namespace {

using test::EditorWorld;
using testing::ElementsAre;

/// An editor against a sample, in a world of its own.
class MaskEditorTest : public testing::Test {
  protected:
    MaskEditor& open(std::string_view sample, int maskNumber = 0, const char* language = "SE") {
        world.rawPriceFile(sample);
        world.texts().InitSpråkOrd(language);
        EXPECT_TRUE(world.openCompany());
        editor.emplace(world.texts(), world.boxes, world.data(), world.data() / "pris.txt",
                       [this](const Mask& mask, const std::vector<Relation>& relations, const auto& file) {
                           return misreadSample(world.texts(), mask, relations, file);
                       });
        EXPECT_TRUE(editor->open(world.state.sql, maskNumber));
        return *editor;
    }
    void chooseTarget(int code) { editor->chooseTarget(rowOf(code)); }
    int rowOf(int code) {
        const auto& targets = editor->targets();
        const auto found = std::ranges::find(targets, code, &Target::code);
        return found == targets.end() ? -1 : static_cast<int>(found - targets.begin());
    }
    /// Joins a source (from 1) to a target with the rules that are preselected.
    void join(int source, int code) {
        editor->chooseSource(source - 1);
        chooseTarget(code);
        editor->createRelation();
    }
    std::vector<std::string> sources() {
        std::vector<std::string> texts;
        for (const SourceField& field : editor->sources()) texts.push_back(field.text);
        return texts;
    }
    /// "source>target" of each relation in list order, with its rule letters.
    std::vector<std::string> relations() {
        std::vector<std::string> rows;
        for (const EditedRelation& edited : editor->relations()) rows.push_back(shown(edited.relation));
        return rows;
    }
    static std::string shown(const Relation& relation) {
        return std::to_string(relation.Källa) + ">" + std::to_string(relation.Mål) + " " + relation.TypKod +
               relation.Division;
    }
    std::vector<std::string> stored(int mask) {
        std::vector<std::string> rows;
        const WholeMask whole = *MaskFile(world.data()).read(mask);
        for (const Relation& relation : whole.relations) rows.push_back(shown(relation));
        return rows;
    }

    EditorWorld world;
    std::optional<MaskEditor> editor;
};

// The target list.

TEST_F(MaskEditorTest, OffersColumnsAndHeadingsByTheirCodes) {
    world.add("Prodaltrubrik", {{"Nummer", std::int64_t{3}}, {"Rubrik", "EAN"}});
    world.add("Prodaltrubrik", {{"Nummer", std::int64_t{100}}, {"Rubrik", "not to be told about"}});
    open("x\r\n");
    const auto textOf = [&](int code) {
        const int row = rowOf(code);
        return row < 0 ? std::string() : editor->targets()[static_cast<std::size_t>(row)].text;
    };
    EXPECT_EQ(textOf(0), "««\tIngen inläsning   »»");
    EXPECT_EQ(textOf(1), "1.\tNummer") << "code of a column is not its place";
    EXPECT_EQ(textOf(140), "140.\tEAN") << "heading counted by its row, not by its number";
    EXPECT_NE(textOf(201), "") << "column behind the headings not shifted";
    EXPECT_EQ(textOf(138) + textOf(206) + textOf(207), "") << "a heading that does not exist, or no column";
    EXPECT_EQ(editor->targets().back().code, 155 + 63);
}

TEST_F(MaskEditorTest, LeavesOutHeadingsThatWouldTakeTheCodesOfColumns) {
    for (const std::int64_t number : {63, 64, 99}) {
        world.add("Prodaltrubrik", {{"Nummer", number}, {"Rubrik", "R" + std::to_string(number)}});
    }
    world.port.expect(world.texts().ModulText(text::mask::kHeadingsLeftOut), "Kolmera");
    open("x\r\n");
    EXPECT_EQ(editor->targets()[static_cast<std::size_t>(rowOf(200))].text, "200.\tR63");
    EXPECT_THAT(editor->targets()[static_cast<std::size_t>(rowOf(201))].text, testing::Not(testing::HasSubstr("R64")));
}

TEST_F(MaskEditorTest, NamesColumnsInTheProgramsLanguage) {
    open("x\r\n", 0, "EN");
    EXPECT_EQ(editor->targets()[1].text, "1.\t" + world.texts().RegisterText("Produkt", 1));
    EXPECT_NE(editor->targets()[1].text, "1.\tNummer");
}

// The source list.

TEST_F(MaskEditorTest, CutsTheSampleAsTheUserTypes) {
    const std::string lines(100'000, 'x');
    const struct {
        const char* fault;
        std::string_view sample;
        char structure, characterSet;
        const char* size;
        std::vector<std::string> fields;
    } cases[] = {
        {"a line that the file lacks is left out", "ett\r\ntv\xE5", 'F', 'N', "3", {" 1.\tett", " 2.\ttvå", " 3.\t"}},
        {"text behind the last tab is lost", "a\tb\t\r\nc", 'T', 'N', "", {" 1.\ta", " 2.\tb", " 3.\t"}},
        {"a line without tabs has no column", "abc\r\n", 'T', 'N', "", {" 1.\tabc"}},
        {"line ends end a fixed record", "ab\r\ncdef", 'P', 'N', "6", {" 1.\tab ↵cd"}},
        {"a short file is read beyond its end", "ab", 'P', 'N', "6", {" 1.\tab"}},
        {"DOS letters taken for Windows ones", "\x86\x84\x94\r\n", 'T', 'J', "", {" 1.\tåäö"}},
        {"a row of a whole file without line ends", lines, 'F', 'N', "1", {" 1.\t" + std::string(500, 'x')}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        open(c.sample);
        editor->setTecken(c.characterSet);
        editor->setAntalRader(c.size);
        editor->setPostlängd(c.size);
        editor->setFilTyp(c.structure);
        EXPECT_EQ(sources(), c.fields);
    }
}

TEST_F(MaskEditorTest, SuggestsTheLengthAfterWhichRecordsRepeat) {
    const auto sample = [](std::string_view between) {
        std::string bytes;
        for (int i = 0; i < 50; ++i) bytes += fmt::format("{:06}{:20}{:8}{}", i * 77, "Skruv \xE5", i * i, between);
        return bytes;
    };
    const struct {
        const char* between;
        std::string bytes;
        std::optional<int> length;
    } cases[] = {{"CR", sample("\r"), 34},
                 {"CR LF", sample("\r\n"), 35},
                 {"nothing: a run drops a character all the same", sample(""), 33},
                 {"lines of any length", "4711\r\n", std::nullopt}};
    for (const auto& c : cases) {
        open(c.bytes);
        EXPECT_EQ(editor->mask().Postlängd, "100") << c.between;
        editor->setFilTyp('P');
        EXPECT_EQ(editor->suggestedLength(), c.length) << c.between;
        editor->setPostlängd("99");
        EXPECT_EQ(editor->suggestedLength(), std::nullopt) << "over what was typed";
    }
}

TEST_F(MaskEditorTest, CountsTheColumnsOfTheLastTabSample) {
    open("a\tb\tc\r\n");
    EXPECT_EQ(editor->mask().AntalKolumner, 0);
    editor->setFilTyp('T');
    EXPECT_EQ(editor->mask().AntalKolumner, 3);
    editor->setFilTyp('F');
    EXPECT_EQ(editor->mask().AntalKolumner, 3);
    open(std::string(1200, '\t'));
    editor->setFilTyp('T');
    EXPECT_EQ(editor->mask().AntalKolumner, 1201);
    EXPECT_EQ(sources().size(), 999U) << "a source that a relation's three digits cannot hold";
}

TEST_F(MaskEditorTest, ContinuesAFixedRecordWhereTheLastPieceEnded) {
    open("4711Skruv  1050");
    editor->setPostlängd("15");
    editor->setFilTyp('P');
    EXPECT_EQ(editor->FrånPos() + "+" + editor->Längd(), "1+15");
    editor->setLängd("4");
    chooseTarget(1);
    editor->createRelation();
    EXPECT_EQ(editor->FrånPos() + "+" + editor->Längd(), "5+11");
    editor->setLängd("7");
    chooseTarget(6);
    editor->createRelation();
    EXPECT_THAT(sources(), ElementsAre(" 1.\t4711", " 2.\tSkruv  ", " 3.\t1050"));

    // The first piece goes: the second becomes piece 1, which is what a run reads for the first relation.
    editor->chooseRelation(0);
    EXPECT_EQ(editor->FrånPos() + "+" + editor->Längd(), "1+4");
    editor->removeRelation();
    EXPECT_THAT(sources(), ElementsAre(" 1.\tSkruv  ", " 2.\t1050"));
    EXPECT_THAT(relations(), ElementsAre("1>6 UI"));
    // The freed slot is taken again: the new piece is cut first, and stands last in the list.
    editor->setFrånPos("1");
    editor->setLängd("4");
    chooseTarget(1);
    editor->createRelation();
    EXPECT_THAT(sources(), ElementsAre(" 1.\t4711", " 2.\tSkruv  ", " 3.\t1050"));
    EXPECT_THAT(relations(), ElementsAre("2>6 UI", "1>1 US"));
    editor->setNamn("Fast");
    EXPECT_EQ(editor->save(), MaskEditor::Saved::Yes);
    EXPECT_THAT(stored(1), ElementsAre("1>6 UI", "2>1 US"));
}

// Rules.

TEST_F(MaskEditorTest, OffersTheRulesOfATarget) {
    world.add("Prodaltrubrik", {{"Nummer", std::int64_t{1}}, {"Rubrik", "EAN"}});
    const struct {
        const char* fault;
        int code;
        const char *typKod, *division;
    } cases[] = {
        {"nothing to read offers a rule", 0, "I", "I"},
        {"product number cannot be a key", 1, "USI", "SI"},
        {"heading cannot be a key", 138, "USI", "SI"},
        {"supplier number can be a key", 3, "USI", "IR"},
        {"purchase price with VAT", 21, "USI", "I123"},
        {"first sales price without VAT", 24, "U123SI", "I123"},
        {"last sales price without VAT", 32, "U123SI", "I123"},
        {"column behind the sales prices with VAT", 33, "USI", "I123"},
    };
    // What the entries begin with in the other language: the file holds the same letters.
    const std::map<char, std::string> english = {{'U', "A"}, {'S', "WS"}, {'I', "N"}, {'R', "D"}};
    for (const char* language : {"SE", "EN"}) {
        open("x\r\n", 0, language);
        for (const auto& c : cases) {
            SCOPED_TRACE(std::string(language) + ": " + c.fault);
            chooseTarget(c.code);
            std::string typKod, division;
            for (const RuleEntry& entry : editor->updateRules()) typKod += entry.letter;
            for (const RuleEntry& entry : editor->divisions()) division += entry.letter;
            EXPECT_EQ(typKod, c.typKod);
            EXPECT_EQ(division, c.division);
            RuleEntries entries = editor->updateRules();
            entries.insert(entries.end(), editor->divisions().begin(), editor->divisions().end());
            for (const RuleEntry& entry : entries) {
                const auto other = english.find(entry.letter);
                const bool same = std::string_view(language) == "SE" || other == english.end();
                const std::string expected = same ? std::string(1, entry.letter) : other->second;
                EXPECT_NE(expected.find(entry.text.at(0)), std::string::npos) << entry.letter << ": " << entry.text;
            }
        }
    }
    chooseTarget(24);
    EXPECT_EQ(editor->updateRules()[3].text, "3 - Update and add VAT rate 3");
    EXPECT_EQ(editor->updateRules()[4].text, "Write only if the value is 0");
    EXPECT_EQ(editor->divisions()[2].text, "2 - Divide by 100");
    chooseTarget(6);
    EXPECT_EQ(editor->updateRules()[1].text, "Write only if the field is empty");
}

TEST_F(MaskEditorTest, PreselectsOneSearchKeyOnly) {
    open("a\tb\tc\r\n");
    editor->setFilTyp('T');
    join(1, 1);
    join(2, 4);
    EXPECT_THAT(relations(), ElementsAre("1>1 US", "2>4 UI"));
    editor->chooseRelation(0);
    editor->removeRelation();
    join(3, 2);
    EXPECT_THAT(relations(), ElementsAre("2>4 UI", "3>2 US"));
}

// Relations.

TEST_F(MaskEditorTest, DescribesARelation) {
    open("En l\xE5ng artikeltext\tb\r\n");
    editor->setFilTyp('T');
    join(1, 6);
    EXPECT_EQ(editor->relationText(editor->relations()[0]), " 1.\tEn lång ..\t-->  6.\t" +
                                                                world.state.sql.FtgDB->table("Produkt").fields[6].name +
                                                                "\tUppdatera alltid\tIngen rabattkod");
    EXPECT_EQ(editor->relations()[0].identity(), 1001001006);
}

TEST_F(MaskEditorTest, ShowsWhatARelationWasMadeOf) {
    open("a\tb\r\n", 0, "EN");
    editor->setFilTyp('T');
    editor->chooseSource(1);
    chooseTarget(134);
    editor->chooseUpdateRule(1);
    editor->chooseDivision(1);
    editor->createRelation();
    EXPECT_THAT(relations(), ElementsAre("2>134 SR"));
    editor->chooseSource(0);
    chooseTarget(1);
    editor->chooseRelation(0);
    EXPECT_EQ(editor->chosen().source, 1);
    EXPECT_EQ(editor->chosen().target, rowOf(134));
    EXPECT_EQ(editor->updateRules()[static_cast<std::size_t>(editor->chosen().updateRule)].text[0], 'W');
    EXPECT_EQ(editor->divisions()[static_cast<std::size_t>(editor->chosen().division)].text[0], 'D');
}

TEST_F(MaskEditorTest, GivesATargetToOneRelationOnly) {
    open("a\tb\tc\r\n");
    editor->setFilTyp('T');
    chooseTarget(6);
    editor->createRelation();
    EXPECT_TRUE(relations().empty()) << "made without a source";
    join(1, 6);
    join(2, 6);
    EXPECT_THAT(relations(), ElementsAre("1>6 UI")) << "added a second time";
    editor->chooseRelation(0);
    join(2, 6);
    EXPECT_THAT(relations(), ElementsAre("2>6 UI")) << "not replaced";
    join(1, 0);
    join(2, 0);
    EXPECT_THAT(relations(), ElementsAre("2>6 UI", "1>0 II", "2>0 II")) << "nothing, refused a second time";
    editor->chooseRelation(1);
    const std::string question = world.texts().ModulTextMed(text::definitions::kAskToReplaceRelation, "Benämning");
    for (const Answer answer : {Answer::No, Answer::Yes}) {
        world.port.expect(question, "Kolmera", answer);
        join(1, 6);
    }
    EXPECT_THAT(relations(), ElementsAre("2>6 UI", "2>0 II", "1>6 UI")) << "not the selected one, or without asking";
}

TEST_F(MaskEditorTest, RefusesTheHundredAndFirstRelation) {
    open("a\r\n");
    for (int i = 0; i < kMostRelations; ++i) join(1, 0);
    world.expect(text::prismtyp::kTooManyRelations);
    join(1, 0);
    EXPECT_EQ(relations().size(), 100U);
}

TEST_F(MaskEditorTest, TellsOfRelationsThatItCannotShow) {
    Mask mask;
    mask.Namn = "Annan";
    MaskFile(world.data()).save(mask, std::vector<Relation>(100));
    std::ofstream(world.data() / "PRISMPOS.TXT", std::ios::binary | std::ios::app)
        << "00100100100000000US1" << std::string(9, '\0') << "\r\n";
    world.port.expect(world.texts().ModulTextMed(text::mask::kRelationsLeftOut, "Annan"), "Kolmera");
    open("a\r\n", 1);
    EXPECT_EQ(relations().size(), 100U);
}

TEST_F(MaskEditorTest, TakesBackEveryChange) {
    using Column = RelationTable::Column;
    RelationTable* table = nullptr;
    const struct {
        const char* change;
        std::function<void()> make;
    } cases[] = {
        {"name", [&] { editor->setNamn("Annan"); }},
        {"structure", [&] { editor->setFilTyp('F'); }},
        {"structure with a count of columns", [&] { editor->setFilTyp('T'); }},
        {"characters", [&] { editor->setTecken('J'); }},
        {"new products", [&] { editor->setSkapaNya('J'); }},
        {"supplier's prices", [&] { editor->setUppdatLev(true); }},
        {"lines", [&] { editor->setAntalRader("3"); }},
        {"length", [&] { editor->setPostlängd("30"); }},
        {"new relation", [&] { join(3, 21); }},
        {"relation in place of another", [&] { editor->chooseRelation(0), join(3, 1); }},
        {"removed relation", [&] { editor->chooseRelation(0), editor->removeRelation(); }},
        {"removed relations, slots freed",
         [&] {
             editor->removeRelations({1, 0, 1});
         }},
        {"moved piece",
         [&] {
             editor->movePiece(0, {3, 1});
         }},
        {"start in its cell", [&] { table->type(1, Column::FrånPos, "2"); }},
        {"length in its cell", [&] { table->type(1, Column::Längd, "9"); }},
        {"target in its cell", [&] { table->choose(1, Column::Mål, rowOf(2)); }},
        {"rule in its cell", [&] { table->choose(1, Column::TypKod, 1); }},
        {"search key that moves", [&] { table->choose(1, Column::Division, 0); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.change);
        open("4711Skruv  1050");
        RelationTable relationTable(world.texts(), *editor);
        table = &relationTable;
        editor->setFilTyp('P');
        for (const int code : {1, 4}) editor->setLängd("4"), chooseTarget(code), editor->createRelation();
        const auto everything = [&] { return std::pair(editor->mask(), editor->relations()); };
        const auto before = everything();
        const std::vector<std::string> sourcesBefore = sources();
        c.make();
        const auto after = everything();
        EXPECT_NE(after, before) << "nothing happened";
        EXPECT_FALSE(editor->canRedo());
        editor->undo();
        EXPECT_EQ(everything(), before);
        EXPECT_EQ(sources(), sourcesBefore);
        editor->redo();
        EXPECT_EQ(everything(), after);
        while (editor->canUndo()) editor->undo();
        EXPECT_FALSE(editor->changed()) << "more than one step, or none";
    }
}

TEST_F(MaskEditorTest, TakesBackTypingAtOnce) {
    open("a\tb\r\n");
    for (const char* typed : {"S", "Sk", "Skruv"}) editor->setNamn(typed);
    editor->setNamn("Skruv");
    editor->undo();
    EXPECT_EQ(editor->mask().Namn, "") << "letter by letter";
    editor->redo();
    editor->setNamn("Mutter");
    EXPECT_FALSE(editor->canRedo());
    editor->undo();
    EXPECT_EQ(editor->mask().Namn, "Skruv") << "typing after taking back joined to what was done again";
}

TEST_F(MaskEditorTest, ChangesRelationsInTheirCells) {
    using Column = RelationTable::Column;
    world.add("Prodaltrubrik", {{"Nummer", std::int64_t{1}}, {"Rubrik", "EAN"}});
    const auto keyMoved = [&] { return world.texts().FormulärSträngMed1(text::prismtyp::kKeyMoved, "Nummer"); };
    const auto taken = [&] { return world.texts().ModulTextMed(text::masksample::kTargetTaken, "1Utpris"); };
    const auto noKey = [&] { return world.texts().FormulärSträng(text::prismtyp::kNoKeyLeft); };
    const struct {
        const char* fault;
        int row;
        Column column;
        int code;  ///< a target's, or a place
        std::string relations;
        std::function<std::string()> remark;
    } cases[] = {
        {"another field", 1, Column::Källa, 2, "1>1 US 3>24 U2 3>0 II", nullptr},
        {"a target twice", 0, Column::Mål, 24, "1>1 US 2>24 U2 3>0 II", taken},
        {"rules kept that the target has", 1, Column::Mål, 25, "1>1 US 2>25 U2 3>0 II", nullptr},
        {"a division of a text", 1, Column::Mål, 6, "1>1 US 2>6 UI 3>0 II", nullptr},
        {"a second search key by itself", 1, Column::Mål, 138, "1>1 US 2>138 UI 3>0 II", nullptr},
        {"a target at last, never updated", 2, Column::Mål, 6, "1>1 US 2>24 U2 3>6 UI", nullptr},
        {"the search key moves with its target", 0, Column::Mål, 4, "1>4 US 2>24 U2 3>0 II", nullptr},
        {"the search key goes unseen", 0, Column::Mål, 6, "1>6 UI 2>24 U2 3>0 II", noKey},
        {"no search key any more", 0, Column::Division, 1, "1>1 UI 2>24 U2 3>0 II", noKey},
        {"price without VAT", 1, Column::TypKod, 3, "1>1 US 2>24 32 3>0 II", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        open("a\tb\tc\r\n");
        editor->setFilTyp('T');
        join(1, 1), join(2, 24), join(3, 0);
        RelationTable table(world.texts(), *editor);
        table.choose(1, Column::Division, 2);
        table.choose(c.row, c.column, c.column == Column::Mål ? rowOf(c.code) : c.code);
        EXPECT_EQ(fmt::format("{}", fmt::join(relations(), " ")), c.relations);
        EXPECT_EQ(table.remark(), c.remark ? c.remark() : "");
    }
    RelationTable table(world.texts(), *editor);
    join(2, 138);
    table.choose(3, Column::Division, 0);
    EXPECT_THAT(relations(), ElementsAre("1>1 UI", "2>24 32", "3>0 II", "2>138 US"));
    EXPECT_EQ(table.remark(), keyMoved());
    EXPECT_EQ(table.text(1, Column::Källa) + "|" + table.text(1, Column::Mål) + "|" + table.text(1, Column::Exempel),
              " 2. b..|-->  24. 1Utpris|b");
}

TEST_F(MaskEditorTest, TakesWholeNumbersInCells) {
    open("4711Skruv  1050");
    editor->setFilTyp('P');
    chooseTarget(1), editor->createRelation();
    RelationTable table(world.texts(), *editor);
    EXPECT_FALSE(table.canChange(RelationTable::Column::Källa)) << "a piece is not chosen by its number";
    for (const char* wrong : {"", "0", "-1", "1,5", "4 x", "10000", "99999999999999999999"}) {
        EXPECT_FALSE(table.type(0, RelationTable::Column::Längd, wrong)) << wrong;
        EXPECT_NE(table.remark(), "") << wrong;
    }
    EXPECT_TRUE(table.type(0, RelationTable::Column::Längd, " 0004 "));
    EXPECT_THAT(sources(), ElementsAre(" 1.\t4711", " 2.\tSkruv  1050")) << "cut as before";
    EXPECT_EQ(table.remark(), "");
}

// Saving.

TEST_F(MaskEditorTest, SavesAndOpensAgain) {
    open("a\tb\r\n");
    editor->setNamn("  ");
    world.expect(text::prismtyp::kNameMissing);
    EXPECT_EQ(editor->save(), MaskEditor::Saved::WrongName);

    editor->setNamn(" Kontor ");
    editor->setFilTyp('T');
    editor->setSkapaNya('J');
    editor->setUppdatLev(true);
    join(1, 1);
    join(2, 6);
    EXPECT_EQ(editor->save(), MaskEditor::Saved::Yes);
    open("a\tb\r\n", 1);
    const Mask& mask = editor->mask();
    EXPECT_EQ(fmt::format("{}{}{}{}", mask.Namn, mask.SkapaNya, mask.UppdatLev, mask.AntalKolumner), "KontorJJ2");
    EXPECT_EQ(editor->caption(), "");
    EXPECT_EQ(editor->save(), MaskEditor::Saved::Yes);
    EXPECT_THAT(stored(1), ElementsAre("1>1 US", "2>6 UI")) << "a second set of relations";
    EXPECT_EQ(MaskFile(world.data()).all().size(), 1U);
}

TEST_F(MaskEditorTest, TellsWhatRunsWillDo) {
    open("a\tb\nc\td\ne\tf\n");
    editor->setNamn("Kontor");
    editor->setFilTyp('T');
    editor->setSkapaNya('J');
    join(1, 4);
    const std::string doubles = world.texts().ModulText(text::mask::kDoublesProducts);
    world.port.expect(doubles + "\r\n\r\n" + world.texts().ModulText(text::look::kLineFeeds), "Kolmera");
    EXPECT_EQ(editor->save(), MaskEditor::Saved::Yes);
    join(2, 3);
    world.port.expect(world.texts().ModulText(text::look::kLineFeeds), "Kolmera");
    EXPECT_EQ(editor->save(), MaskEditor::Saved::Yes) << "a supplier is read";
}

TEST_F(MaskEditorTest, RefusesNamesAndStaleMasks) {
    Mask other;
    other.Namn = "Kontor";
    other.FilTyp = other.Tecken = other.SkapaNya = other.UppdatLev = ' ';
    MaskFile(world.data()).save(other, {});
    open("a\r\n");
    EXPECT_EQ(editor->caption(), "Ny mask för prisfilen pris.txt");
    EXPECT_EQ(editor->mask().AntalRader + " " + editor->mask().Postlängd, "10 100");
    EXPECT_FALSE(editor->changed());
    const std::string cannotSave = world.texts().ModulText(text::files::kCannotSave);
    editor->setNamn("KONTOR");
    EXPECT_TRUE(editor->changed());
    world.port.expect(world.texts().ModulTextMed(text::definitions::kMaskNameTaken, "KONTOR"), cannotSave);
    EXPECT_EQ(editor->save(), MaskEditor::Saved::WrongName);
    editor->setNamn("łódź, łampa");
    world.port.expect(world.texts().ModulTextMed(text::definitions::kUnsavableCharacters, "ł ź"), "Kolmera");
    EXPECT_EQ(editor->save(), MaskEditor::Saved::WrongName);

    open("a\r\n", 1);
    EXPECT_EQ(editor->save(), MaskEditor::Saved::Yes);
    const Mask mask = MaskFile(world.data()).all().front();
    EXPECT_EQ((std::string{mask.FilTyp, mask.Tecken, mask.SkapaNya, mask.UppdatLev}), "PNNN") << "not as shown";
    MaskFile(world.data()).save(mask, {{.Källa = 1, .Mål = 1}});
    world.port.expect(world.texts().ModulTextMed(text::definitions::kMaskChangedNothingSaved, "Kontor"), cannotSave);
    EXPECT_EQ(editor->save(), MaskEditor::Saved::Failed);
    EXPECT_THAT(stored(1), ElementsAre("1>1 II"));
}

}  // namespace
}  // namespace kolmera
