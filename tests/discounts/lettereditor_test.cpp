#include "discounts/lettereditor.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <fstream>

#include "definitions/editorworld.h"
#include "discounts/lettermessages.h"
#include "lang/keys/company.h"
#include "lang/keys/files.h"
#include "lang/keys/letter.h"
#include "lang/keys/prisrab.h"
#include "lang/keys/shared.h"
#include "support/filesizelimit.h"

namespace kolmera {
namespace {

using test::EditorWorld;

constexpr const char* kTable = "LevrabattBrev";

class LetterEditorTest : public testing::Test {
  protected:
    LetterEditorTest() {
        for (const char* number : {"10", "20"}) {
            world.add("Leverantör", {{"Nummer", number}, {"Söknamn", "Lev " + std::string(number)}});
        }
        group("10", "A1", 10, 5.0, 2.0);
        group("10", "B2", 12.5);
        group("20", "A1", 50);
    }
    void group(const char* supplier, std::string_view code, const Value& first, const Value& second = Null(),
               const Value& third = Null()) {
        world.add(kTable, {{"Leverantör", supplier},
                           {"Rabattgrupp", std::string(code)},
                           {"1Rabatt", first},
                           {"2Rabatt", second},
                           {"3Rabatt", third}});
    }
    /// Opens the window's logic on a job of the company and that supplier.
    LetterEditor& open(const char* supplier = "10") {
        world.job.supplier = supplier;
        const int job = JobFile(world.data()).save(world.job);
        editor = std::make_unique<LetterEditor>(world.state, world.texts(), world.boxes, world.companies);
        editor->open(job);
        return *editor;
    }
    void type(std::initializer_list<std::string> fields) {
        int number = 0;
        for (const std::string& text : fields) editor->edit(number++, text);
    }
    std::string fields() const {
        std::string text;
        for (int number = 0; number < LetterEditor::kFields; ++number) text.append(editor->field(number)).append("|");
        return text + editor->TotalRabatt();
    }
    std::string row(int number) const {
        std::string text;
        for (int column = 0; column < LetterRows::kColumns; ++column) {
            if (column > 0) text += '|';
            text += editor->Lista().text(number, column);
        }
        return text;
    }
    std::string listed() const {
        std::string codes;
        for (int number = 0; number < editor->Lista().count(); ++number)
            codes.append(editor->Lista().text(number, 0)).append(" ");
        return codes;
    }
    std::string stored() {
        editor.reset();
        return world.rows(kTable, "Leverantör, Rabattgrupp, 1Rabatt, 2Rabatt");
    }
    std::filesystem::path write(const char* name, std::string_view content) {
        std::ofstream(world.data() / name, std::ios::binary) << content;
        return world.data() / name;
    }
    void expectBox(const std::string& text, const std::string& title, Answer answer = Answer::OK) {
        world.port.expect(text, title, answer);
    }
    [[nodiscard]] std::string formText(FormKey key) { return world.texts().FormulärSträng(key); }
    [[nodiscard]] std::string moduleText(ModuleKey key) { return world.texts().ModulText(key); }

    EditorWorld world;
    std::unique_ptr<LetterEditor> editor;
};

TEST_F(LetterEditorTest, BeginsWithTheJobsCompanyAndSupplier) {
    open("20");
    EXPECT_EQ(editor->chosenCompany(), 0);
    EXPECT_EQ(editor->chosenSupplier(), 1);
    EXPECT_EQ(editor->captionSuffix(), " - 20 - Lev 20");
    EXPECT_EQ(listed(), "A1 ");

    open("99");
    EXPECT_EQ(editor->suppliers().size(), 2U);
    EXPECT_EQ(editor->chosenSupplier(), -1);
    EXPECT_EQ(editor->captionSuffix(), "");
    EXPECT_EQ(listed(), "");

    editor->open(0);
    LetterEditor fresh(world.state, world.texts(), world.boxes, world.companies);
    fresh.open(0);
    EXPECT_EQ(fresh.chosenCompany(), -1) << "a company without a job";
    EXPECT_EQ(fresh.companies().size(), 1U);
}

TEST_F(LetterEditorTest, OpensACompanyOnAServer) {
    world.moveToServer();
    open("10");
    EXPECT_EQ(editor->chosenCompany(), 1);
    EXPECT_EQ(editor->captionSuffix(), " - 10 - Lev 10");
    std::filesystem::remove(world.data() / "DVSQLSvr.ini");
    world.port.expectBeginning(world.texts().ResText(text::shared::kCannotOpenCompany) + " SQL;TEST.",
                               world.texts().ResText(text::shared::kCannotOpenCompany));
    EXPECT_FALSE(editor->chooseCompany(1));
    EXPECT_TRUE(editor->suppliers().empty()) << "the suppliers of a company that is closed";
    EXPECT_EQ(listed(), "");
}

TEST_F(LetterEditorTest, ListsAndShowsGroups) {
    open();
    EXPECT_EQ(row(0), "A1|10,00|5,00|2,00|||16,21");
    EXPECT_EQ(row(1), "B2|12,50|||||12,50");
    editor->chooseRow(0);
    EXPECT_EQ(fields(), "A1|10|5|2|||16,21");
    editor->chooseRow(1);
    EXPECT_EQ(fields(), "B2|12,5|||||12,50") << "what the group before had stays";
    editor->Avbryt();
    EXPECT_EQ(fields(), "||||||");
    editor->chooseSupplier(1);
    editor->chooseRow(0);
    EXPECT_EQ(fields(), "A1|50|||||50,00");
    editor->chooseSupplier(0);
    EXPECT_EQ(fields(), "||||||") << "another supplier's group would be saved here";
}

TEST_F(LetterEditorTest, LeavingAFieldCountsAndLooksUp) {
    open();
    type({"new", "10", "-10"});
    EXPECT_EQ(editor->TotalRabatt(), "") << "counted while typing";
    editor->leave(2);
    EXPECT_EQ(editor->TotalRabatt(), "1,00");
    editor->edit(0, "b2");
    editor->leave(0);
    EXPECT_EQ(fields(), "B2|12,5|||||12,50");
    EXPECT_EQ(editor->chosenRow(), 1);
    editor->edit(1, "99");
    editor->leave(1);
    editor->leave(0);
    EXPECT_EQ(editor->field(1), "99") << "an unchanged code is looked up again";
    for (const char* unknown : {"", "x", "O'\"x"}) {
        editor->edit(0, unknown);
        editor->leave(0);
        EXPECT_EQ(editor->field(1), "99") << unknown;
    }
}

TEST_F(LetterEditorTest, SavesNewAndChangedGroups) {
    open();
    type({"C'3", "7,5", "", "", "", "2"});
    EXPECT_EQ(editor->Spara(), 0);
    EXPECT_EQ(fields(), "||||||");
    EXPECT_EQ(row(2), "C'3|7,50||||2,00|9,35");
    EXPECT_EQ(editor->chosenRow(), 2);
    type({"a1", "11", ""});
    EXPECT_EQ(editor->Spara(), 0);
    EXPECT_EQ(listed(), "B2 C'3 a1 ") << "a changed group goes to the end";
    EXPECT_EQ(editor->chosenRow(), 2);
    EXPECT_EQ(stored(), "10 a1 11 -\n10 B2 12.5 -\n20 A1 50 -\n10 C'3 7.5 -\n");
}

TEST_F(LetterEditorTest, SavesNothingThatIsWrong) {
    open();
    EXPECT_EQ(editor->Spara(), std::nullopt) << "nothing is asked for";
    type({" ", "5"});
    expectBox(moduleText(text::letter::kNoCode), "Kolmera");
    EXPECT_EQ(editor->Spara(), 0) << "without a code";
    for (const char* slip : {"100,1", "-250"}) {
        type({"X", "5", slip});
        expectBox(world.texts().ModulTextMed(text::letter::kAskBeyond, slip), "Kolmera", Answer::No);
        EXPECT_EQ(editor->Spara(), 2);
    }
    editor->edit(2, "");
    type({"X", "5", "", "1x"});
    expectBox(world.texts().ModulTextMed(text::letter::kNoNumber, "1x"), "Kolmera");
    EXPECT_EQ(editor->Spara(), 3);
    EXPECT_EQ(editor->field(3), "1x") << "the user's text is gone";
    type({"A CODE TOO LONG", "5", "", ""});
    world.port.expectBeginning(moduleText(text::letter::kCannotSave), "Kolmera");
    EXPECT_EQ(editor->Spara(), std::nullopt);
    open("99");
    type({"X", "5"});
    expectBox(moduleText(text::letter::kChooseSupplier), "Kolmera");
    EXPECT_EQ(editor->Spara(), std::nullopt) << "without a supplier";
    EXPECT_EQ(stored(), "10 A1 10 5\n10 B2 12.5 -\n20 A1 50 -\n");
}

TEST_F(LetterEditorTest, DeletesTheGroupOfTheCode) {
    open();
    EXPECT_FALSE(editor->canDelete());
    editor->chooseRow(0);
    editor->edit(0, "none");
    editor->TaBort();
    EXPECT_EQ(listed(), "A1 B2 ") << "another group than the one that is named";
    editor->edit(0, "b2");
    const std::string question = world.texts().FormulärSträngMed1(text::prisrab::kAskToDelete, "b2");
    expectBox(question, formText(text::prisrab::kDeleteTitle), Answer::No);
    editor->TaBort();
    EXPECT_EQ(listed(), "A1 B2 ");
    expectBox(question, formText(text::prisrab::kDeleteTitle), Answer::Yes);
    editor->TaBort();
    EXPECT_EQ(listed(), "A1 ");
    EXPECT_EQ(fields(), "||||||");
    EXPECT_EQ(stored(), "10 A1 10 5\n20 A1 50 -\n");
}

TEST_F(LetterEditorTest, DeletesAGroupWithoutACode) {
    group("10", "", 7);
    open();
    editor->chooseRow(listed().starts_with(" ") ? 0 : 2);
    EXPECT_EQ(editor->field(1), "7");
    EXPECT_TRUE(editor->canDelete());
    expectBox(moduleText(text::letter::kAskToDeleteNameless), formText(text::prisrab::kDeleteTitle), Answer::Yes);
    editor->TaBort();
    EXPECT_EQ(listed(), "A1 B2 ");
    EXPECT_EQ(stored(), "10 A1 10 5\n10 B2 12.5 -\n20 A1 50 -\n");
}

TEST_F(LetterEditorTest, WaitsForALockUntilTheUserGivesUp) {
    open();
    const auto other = openFileDatabase(world.company(), OpenOptions());
    other->begin();
    int asked = 0, over = 0;
    editor->keepWaiting = [&](const std::string& text) {
        EXPECT_EQ(text, world.texts().ModulTextMed(text::company::kWaiting, "FTG1.MDB"));
        return ++asked % 3 != 0;
    };
    editor->waited = [&] { ++over; };
    type({"X", "5"});
    EXPECT_EQ(editor->Spara(), std::nullopt);
    EXPECT_EQ(asked, 3);
    EXPECT_EQ(over, 1) << "the window stays closed to the user";
    EXPECT_EQ(editor->field(0), "X") << "the user's text is gone";
    const auto file = write("brev.txt", "N1\t5\r\n");
    expectBox(formText(text::prisrab::kAskToReplace), formText(text::prisrab::kReadTitle));
    expectBox(moduleText(text::letter::kCancelledRestored), formText(text::prisrab::kReadTitle));
    editor->LäsFil(file);
    EXPECT_EQ(asked, 6) << "giving up once is not enough";
    other->commit();
    type({"X", "5"});
    EXPECT_EQ(editor->Spara(), 0);
    EXPECT_EQ(stored(), "10 A1 10 5\n10 B2 12.5 -\n20 A1 50 -\n10 X 5 -\n");
}

// Files.

TEST_F(LetterEditorTest, ReplacesTheLetterBehindOK) {
    const auto file = write("brev.txt", "A1\t5\r\nA1\t7\r\nG2\t9,5\t5\r\n");
    open();
    expectBox(formText(text::prisrab::kAskToReplace), formText(text::prisrab::kReadTitle), Answer::Cancel);
    editor->LäsFil(file);
    EXPECT_EQ(listed(), "A1 B2 ") << "Cancel has deleted groups";
    expectBox(formText(text::prisrab::kAskToReplace), formText(text::prisrab::kReadTitle), Answer::OK);
    expectBox(world.texts().ModulTextMed(text::letter::kLinesPassedOver, "1 (A1)"),
              formText(text::prisrab::kReadTitle));
    editor->LäsFil(file);
    EXPECT_FALSE(world.port.hourglassShown);
    EXPECT_EQ(row(1), "G2|9,50|5,00||||14,03");
}

TEST_F(LetterEditorTest, ABadFileCostsNothing) {
    open();
    const auto none = world.data() / "none.txt";
    world.port.expectBeginning(world.texts().ResText(text::shared::kCannotOpenFile) + " " + none.string() + ".",
                               formText(text::prisrab::kReadTitle));
    editor->LäsFil(none);
    const auto empty = write("tom.txt", "");
    expectBox(noGroups(world.texts(), empty), formText(text::prisrab::kReadTitle));
    editor->LäsFil(empty);
    EXPECT_EQ(listed(), "A1 B2 ");
}

TEST_F(LetterEditorTest, ADatabaseThatCannotGrowKeepsTheOldLetter) {
    std::string lines;
    for (int i = 0; i < 50000; ++i) lines += fmt::format("N{}\t5\r\n", i);
    const auto file = write("brev.txt", lines);
    open();
    expectBox(formText(text::prisrab::kAskToReplace), formText(text::prisrab::kReadTitle));
    const std::string stopped = world.texts().ModulTextMed(text::letter::kStoppedRestored, "\n");
    world.port.expectBeginning(stopped.substr(0, stopped.find('\n')), formText(text::prisrab::kReadTitle));
    {
        const test::FileSizeLimit limit(static_cast<rlim_t>(std::filesystem::file_size(world.company()) + 200'000));
        editor->LäsFil(file);
    }
    EXPECT_FALSE(world.port.hourglassShown);
    EXPECT_EQ(stored(), "10 A1 10 5\n10 B2 12.5 -\n20 A1 50 -\n");
}

TEST_F(LetterEditorTest, WritesALetter) {
    open();
    EXPECT_EQ(editor->proposedFile(), world.data() / "Rabattbrev1.txt");
    write("RABATTBREV7.TXT", "");
    write("Rabattbrev.doc", "");
    EXPECT_EQ(editor->proposedFile(), world.data() / "Rabattbrev2.txt");
    expectBox(world.texts().ModulTextMed(text::files::kUnwritableSheet, "brev.xls"),
              formText(text::prisrab::kWriteTitle));
    editor->SkapaFil(world.data() / "brev.xls");
    type({"Ω"});
    editor->Spara();
    expectBox(world.texts().ModulTextMed(text::letter::kQuestionMarks, "1 (Ω)"), formText(text::prisrab::kWriteTitle));
    editor->SkapaFil(world.data() / "brev.txt");
}

}  // namespace
}  // namespace kolmera
