#include "definitions/jobeditor.h"

#include <gmock/gmock.h>

#include <array>

#include "definitions/editorworld.h"
#include "lang/keys/definitions.h"
#include "lang/keys/files.h"
#include "lang/keys/prisstyr.h"
#include "platform/lettercase.h"
#include "platform/tsv.h"

namespace kolmera {
namespace {

using test::EditorWorld;
using testing::ElementsAre;
using Control = JobEditor::Control;

constexpr const char* kLongName = "FTG_ett_mycket_langt_namn_30.mdb";

class JobEditorTest : public testing::Test {
  protected:
    JobEditorTest() {
        for (const char* number : {"10", "20"}) {
            world.add("Leverantör", {{"Nummer", number}, {"Söknamn", "Lev " + std::string(number)}});
        }
        world.rawPriceFile("a\tb\r\n");
        world.mask({.structure = 'T', .relations = {{1, "Nummer", 'S'}}});
    }
    JobEditor& open(int number = 0, bool tradeFormat = false) {
        editor = std::make_unique<JobEditor>(world.state, world.texts(), world.boxes, world.companies);
        editor->open(number, tradeFormat);
        return *editor;
    }
    int jobNumber(const char* name) { return JobFile(world.data()).find(name)->number; }

    EditorWorld world;
    std::unique_ptr<JobEditor> editor;
};

TEST_F(JobEditorTest, ChecksAMaskJobInOrder) {
    open();
    const struct {
        FormKey text;
        Control focus;
        std::function<void()> mend;
    } steps[] = {
        {text::prisstyr::kNoName, Control::Namn, [&] { editor->job.name = " (FINFO) "; }},
        {text::prisstyr::kReservedName, Control::Namn, [&] { editor->job.name = "Kontor"; }},
        {text::prisstyr::kNoFile, Control::FilNamn, [&] { editor->job.priceFile = "pris.txt"; }},
        {text::prisstyr::kNoMask, Control::Mask_Lista, [&] { editor->chooseMask(0); }},
        {text::prisstyr::kNoCompany, Control::FTG_Lista, [&] { editor->chooseCompany(0); }},
    };
    const auto before = JobFile(world.data()).all().size();
    for (const auto& step : steps) {
        SCOPED_TRACE(step.text.number);
        world.expect(step.text);
        const JobEditor::Outcome outcome = editor->save();
        EXPECT_EQ(outcome.focus, step.focus);
        EXPECT_FALSE(outcome.JobbNr);
        step.mend();
    }
    EXPECT_EQ(JobFile(world.data()).all().size(), before) << "written before it was complete";
    editor->chooseSupplier(1);
    const auto saved = editor->save().JobbNr;
    ASSERT_TRUE(saved);
    EXPECT_EQ(*saved, static_cast<int>(before) + 1);
    const Job job = *JobFile(world.data()).read(*saved);
    EXPECT_EQ(job.name + "|" + job.mask + "|" + job.company + "|" + job.supplier + "|" + job.kind,
              "Kontor|Testmask|FTG1.MDB|20|");
}

TEST_F(JobEditorTest, ChecksATradeFormatJobInOrder) {
    open(jobNumber("(EIO)"), true);
    editor->job.priceFile = " ";
    world.expect(text::prisstyr::kNoFile);
    EXPECT_EQ(editor->save().focus, Control::FilNamn);
    editor->job.priceFile = "eio.txt";
    EXPECT_EQ(editor->save().JobbNr, jobNumber("(EIO)"));
    EXPECT_EQ(JobFile(world.data()).find("(EIO)")->kind, "E") << "the kind letter is not this window's";
}

TEST_F(JobEditorTest, KeepsALongCompanyName) {
    std::filesystem::copy_file(world.company(), world.data() / kLongName);
    open();
    ASSERT_EQ(editor->companies().size(), 2U);
    editor->chooseCompany(1);
    editor->job.name = "Lång";
    editor->job.priceFile = "pris.txt";
    editor->chooseMask(0);
    const auto saved = editor->save().JobbNr;
    ASSERT_TRUE(saved);
    open(*saved);
    EXPECT_EQ(editor->chosenCompany(), 1);
    EXPECT_EQ(editor->job.company, upperCase(kLongName));
}

TEST_F(JobEditorTest, ChoosesACompanyOnAServer) {
    world.moveToServer();
    world.job.supplier = "20";
    open(JobFile(world.data()).save(world.job));
    ASSERT_EQ(editor->companies().size(), 2U);
    EXPECT_EQ(editor->chosenCompany(), 1);
    EXPECT_EQ(editor->job.company, "SQL;TEST") << "the description behind the tab is no database";
    EXPECT_EQ(editor->chosenSupplier(), 1);
}

TEST_F(JobEditorTest, BeginsWithTheJobsOwnSettings) {
    world.state.StandardFöretag = "ftg1.MDB";
    open();
    EXPECT_EQ(editor->chosenCompany(), 0) << "a new job has the suite's current company";
    EXPECT_EQ(editor->caption(), "");
    EXPECT_EQ(editor->chosenSupplier(), -1) << "nobody has chosen a supplier yet";

    world.job.supplier = "20";
    const int number = JobFile(world.data()).save(world.job);
    world.state.StandardFöretag.clear();
    open(number);
    EXPECT_EQ(editor->caption(), "Inläsning - Test");
    EXPECT_EQ(editor->chosenCompany(), 0);
    EXPECT_EQ(editor->chosenMask(), 0);
    EXPECT_EQ(editor->chosenSupplier(), 1);
    EXPECT_EQ(editor->supplierCaption("Från &leverantör"), "Från &leverantör Testbolaget (Ftg1.Mdb)");
}

TEST_F(JobEditorTest, EnablesTheMaskButtons) {
    open();
    const auto enabled = [&] {
        return std::array{editor->canMakeMask(), editor->canOpenMask(), editor->canDeleteMask()};
    };
    editor->chooseMask(0);
    editor->job.priceFile = "pris.txt";
    EXPECT_THAT(enabled(), ElementsAre(false, false, true)) << "without a company";
    editor->chooseCompany(0);
    EXPECT_THAT(enabled(), ElementsAre(true, true, true));
    editor->job.priceFile.clear();
    EXPECT_THAT(enabled(), ElementsAre(false, false, true)) << "without a price file";
    editor->job.priceFile = "pris.txt";
    editor->chooseMask(-1);
    EXPECT_THAT(enabled(), ElementsAre(true, false, false)) << "without a mask";
}

TEST_F(JobEditorTest, NeedsASampleForTheMaskEditor) {
    open();
    EXPECT_FALSE(editor->sampleForMask());
    editor->chooseCompany(0);
    editor->job.priceFile = "saknas.txt";
    world.port.expect(world.texts().FormulärSträngMed1(text::prisstyr::kNoSample, "saknas.txt"),
                      world.texts().FormulärSträng(text::prisstyr::kNoSampleTitle));
    EXPECT_FALSE(editor->sampleForMask());
    editor->job.priceFile = "PRIS.TXT";
    EXPECT_EQ(editor->sampleForMask(), world.data() / "pris.txt");
}

TEST_F(JobEditorTest, KeepsTheFormatOfThePriceFileAndTheHeadingsOfItsColumns) {
    const auto linesOfSample = [&](bool newMask) {
        const auto sample = editor->sampleForMask(newMask);
        return sample ? readWholeFile(*sample) : std::string("no sample");
    };
    world.rawPriceFile("Prislista;;\nPris;Artikelnr;Pris\n1;A1;2\n3;A2;4\n");
    MaskFile(world.data())
        .save(MaskFile(world.data()).read(1)->mask,
              {{.Källa = 2, .Mål = 1, .TypKod = 'U', .Division = 'S'}, {.Källa = 1, .Mål = 21}});
    open();
    editor->job.name = "Semikolon";
    editor->job.priceFile = "pris.txt";
    editor->chooseMask(0);
    editor->chooseCompany(0);
    SourceFormat format;
    format.skip = 1;
    format.headings = true;
    format.decimalSign = ',';
    format.thousandsSign = ".";
    editor->source = SourceSettings{.format = format, .headings = {"Pris", "Artikelnr", "Pris"}};
    EXPECT_EQ(linesOfSample(true), "1\tA1\t2\r\n3\tA2\t4\r\n") << "a new mask is shown not all columns";
    EXPECT_THAT(editor->sampleHeadings(), ElementsAre("Pris", "Artikelnr", "Pris"));
    world.rawPriceFile("Prislista;;\nPris;Artikelnr;Pris\n1.250,00 kr;A1;2,00\n");
    WholeMask edited = *MaskFile(world.data()).read(1);
    EXPECT_THAT(readWholeFile(editor->sampleFor(edited)), testing::HasSubstr("1250"));
    edited.relations.pop_back();
    EXPECT_THAT(readWholeFile(editor->sampleFor(edited)), testing::HasSubstr("1.250,00 kr")) << "not converted anew";
    EXPECT_TRUE(editor->changed());
    const std::optional<int> number = editor->save().JobbNr;
    ASSERT_TRUE(number);

    open(*number);
    EXPECT_FALSE(editor->changed());
    ASSERT_TRUE(editor->source);
    ASSERT_EQ(editor->source->columns.size(), 1U) << "bound to a heading that is there twice, or to none";
    EXPECT_EQ(editor->source->columns[0].from, (ColumnName{.heading = "Artikelnr", .number = 2}));
    world.rawPriceFile("Prislista;;\nArtikelnr;Pris;Rabatt\nA1;1;2\n");
    EXPECT_THAT(linesOfSample(false), testing::HasSubstr("\tA1\t")) << "a column that moved is not followed";
    editor->source.reset();
    EXPECT_EQ(*editor->sampleForMask(), world.data() / "pris.txt");
    EXPECT_TRUE(editor->save().JobbNr);
    EXPECT_FALSE(JobOptionsFile(world.data()).source("Semikolon"));
}

TEST_F(JobEditorTest, BeginsToLookForFilesBesideThePriceFile) {
    std::filesystem::create_directory(world.data() / "Priser");
    open();
    EXPECT_EQ(editor->fileFolder(), world.data()) << "nowhere for a new job";
    editor->job.priceFile = "priser\\ny.txt";
    EXPECT_EQ(editor->fileFolder(), world.data() / "Priser");
    editor->job.priceFile = "X:\\borta\\ny.txt";
    EXPECT_EQ(editor->fileFolder(), world.data());
}

TEST_F(JobEditorTest, DeletesAMaskWhenTheUserAgrees) {
    MaskFile masks(world.data());
    Mask second;
    second.Namn = "Andra";
    masks.save(second, {{.Källa = 1, .Mål = 6}});
    open();
    editor->chooseMask(0);
    const std::string question = world.texts().FormulärSträngMed1(text::prisstyr::kAskToDeleteMask, "Testmask");
    world.port.expect(question, world.texts().FormulärSträng(text::prisstyr::kDeleteMaskTitle), Answer::No);
    editor->deleteMask();
    EXPECT_EQ(editor->masks().size(), 2U);
    world.job.name = "Kontor";
    world.job.mask = "Testmask";
    JobFile(world.data()).save(world.job);
    world.port.expect(question + "\r\n\r\n" + world.texts().ModulTextMed(text::definitions::kMaskUsedBy, "Kontor"),
                      world.texts().FormulärSträng(text::prisstyr::kDeleteMaskTitle), Answer::Yes);
    editor->deleteMask();
    ASSERT_EQ(editor->masks().size(), 1U);
    EXPECT_EQ(editor->masks()[0].Namn, "Andra");
    EXPECT_FALSE(editor->canDeleteMask());
    EXPECT_EQ(masks.read(1)->relations.size(), 1U);
}

TEST_F(JobEditorTest, RefusesWhatTheFileCannotHold) {
    open(jobNumber("(EIO)"), true);
    EXPECT_FALSE(editor->changed());
    const struct {
        std::string Job::*field;
        const char* typed;
        std::size_t times;
        ModuleKey text;
        std::string var1;
        Control focus;
    } cases[] = {
        {&Job::priceFile, "/łódź/", 1, text::definitions::kUnsavableCharacters, "ł ź", Control::FilNamn},
        {&Job::command, "x", 101, text::files::kTextTooLong, "100", Control::KompFilNamn},
        {&Job::toGroup, "1", 9, text::files::kTextTooLong, "8", Control::TomGrp},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.typed);
        open(jobNumber("(EIO)"), true);
        editor->job.priceFile = "a";
        std::string& field = editor->job.*c.field;
        field.clear();
        for (std::size_t i = 0; i < c.times; ++i) field += c.typed;
        EXPECT_TRUE(editor->changed());
        world.port.expect(world.texts().ModulTextMed(c.text, c.var1), "Kolmera");
        EXPECT_EQ(editor->save().focus, c.focus);
    }
    editor->job.toGroup.clear();
    editor->job.priceFile = "/A\u030A/" + std::string(97, 'x');
    EXPECT_TRUE(editor->save().JobbNr) << "hundred characters when composed";
    EXPECT_EQ(JobFile(world.data()).find("(EIO)")->priceFile, "/Å/" + std::string(97, 'x'));
}

TEST_F(JobEditorTest, DoesNotSaveOverWhatOthersHaveChanged) {
    world.job.name = "Kontor";
    world.job.priceFile = "pris.txt";
    world.job.mask = "Testmask";
    const int number = JobFile(world.data()).save(world.job);
    open(number);
    Job other = *JobFile(world.data()).read(number);
    other.supplier = "20";
    JobFile(world.data()).save(other);
    const std::string title = world.texts().ModulText(text::files::kCannotSave);
    world.port.expect(world.texts().ModulTextMed(text::definitions::kImportChangedNothingSaved, "Kontor"), title);
    EXPECT_FALSE(editor->save().JobbNr);
    EXPECT_EQ(JobFile(world.data()).read(number), other);

    open();
    editor->job = other;
    editor->job.number = 0;
    editor->job.name = "KONTOR";
    editor->chooseMask(0);
    editor->chooseCompany(0);
    world.port.expect(world.texts().ModulTextMed(text::definitions::kImportNameTaken, "KONTOR"), title);
    EXPECT_EQ(editor->save().focus, Control::Namn);

    Mask mask = editor->masks()[0];
    mask.SkapaNya = 'N';
    MaskFile(world.data()).save(mask, {});
    world.port.expect(world.texts().ModulTextMed(text::definitions::kMaskChangedNothingDone, "Testmask"), title);
    EXPECT_FALSE(editor->maskIsAsShown());
    EXPECT_EQ(editor->masks()[0].SkapaNya, 'N') << "not listed anew";
    EXPECT_TRUE(editor->maskIsAsShown());
}

TEST_F(JobEditorTest, OffersTheHeadingsOfFinfo) {
    for (const std::int64_t number : {3, 12, 100}) {
        world.add("Prodaltrubrik", {{"Nummer", number}, {"Rubrik", "R" + std::to_string(number)}});
    }
    world.add("Prodaltrubrik", {{"Nummer", std::int64_t{5}}, {"Rubrik", Null()}});
    Job job = *JobFile(world.data()).find("(FINFO)");
    job.heading1 = 12;
    job.heading2 = 7;
    JobFile(world.data()).save(job);
    open(job.number, true);
    editor->chooseCompany(0);
    std::vector<std::string> texts;
    for (const HeadingChoice& heading : editor->headings()) texts.push_back(heading.text);
    EXPECT_THAT(texts, ElementsAre("Läses inte in", "  3 R3", " 12 R12"));
    EXPECT_EQ(editor->headingRow(12), 2);
    editor->job.priceFile = "finfo.txt";
    ASSERT_TRUE(editor->save().JobbNr);
    const Job saved = *JobFile(world.data()).find("(FINFO)");
    EXPECT_EQ(saved.heading1, 12);
    EXPECT_EQ(saved.heading2, 0) << "a heading that the company does not have";
}

// Couplings.

class CouplingEditorTest : public JobEditorTest {
  protected:
    CouplingEditor& openCouplings() {
        open(jobNumber("(EIO)"), true);
        editor->chooseCompany(0);
        return editor->couplings;
    }
    void save(const char* code, const char* supplier, bool main = false) {
        CouplingEditor& couplings = editor->couplings;
        couplings.code = code;
        couplings.supplier = supplier;
        couplings.mainSupplier = main;
        EXPECT_TRUE(couplings.save());
    }
    std::vector<std::string> rows() {
        std::vector<std::string> texts;
        for (const CouplingEditor::Row& row : editor->couplings.rows()) texts.push_back(row.text);
        return texts;
    }
};

TEST_F(CouplingEditorTest, SavesListsAndSelects) {
    CouplingEditor& couplings = openCouplings();
    EXPECT_FALSE(couplings.save()) << "saved without a code";
    save("ahl", "10");
    const std::string question = world.texts().ModulTextMed(text::definitions::kAskWithUnknownSupplier, "99");
    world.port.expect(question, "Kolmera", Answer::No);
    couplings.code = "BEI";
    couplings.supplier = "99";
    EXPECT_FALSE(couplings.save());
    world.port.expect(question, "Kolmera", Answer::Yes);
    save("BEI", "99", true);
    EXPECT_THAT(rows(), ElementsAre("ahl\t-->\t10\t\tLev 10", "BEI\t-->\t99\tH\t(finns inte i FTG1.MDB)"));
    EXPECT_EQ(couplings.chosen(), 1);
    EXPECT_EQ(couplings.code + couplings.supplier, "") << "the boxes are cleared for the next coupling";
    save("AHL ", "20", true);
    EXPECT_THAT(rows(), ElementsAre("AHL\t-->\t20\tH\tLev 20", "BEI\t-->\t99\t\t(finns inte i FTG1.MDB)"));
    EXPECT_EQ(couplings.chosen(), 0);
    EXPECT_EQ(editor->couplingCaption(), "Leverantörskopplingar för (EIO) i Testbolaget");
}

TEST_F(CouplingEditorTest, LooksUpWhatIsTyped) {
    CouplingEditor& couplings = openCouplings();
    world.add("Leverantör", {{"Nummer", "Abc"}, {"Söknamn", "Alfa"}});
    save("AHL", "10", true);
    couplings.code = " ahl";
    couplings.codeEntered();
    EXPECT_EQ(couplings.code + couplings.supplier + couplings.searchName(), "AHL10Lev 10");
    EXPECT_TRUE(couplings.mainSupplier);
    couplings.supplier = "aBC";
    couplings.supplierEntered();
    EXPECT_EQ(couplings.supplier + couplings.searchName(), "AbcAlfa");
    couplings.supplier = "nej";
    couplings.supplierEntered();
    EXPECT_EQ(couplings.supplier + couplings.searchName(), "nej");
    couplings.cancel();
    EXPECT_EQ(couplings.code + couplings.supplier + couplings.searchName(), "");
    EXPECT_FALSE(couplings.mainSupplier);
}

TEST_F(CouplingEditorTest, DeletesTheChosenOneOnly) {
    CouplingFile(world.data()).save({.job = "(RSK)", .code = "X", .supplier = "1"});
    CouplingEditor& couplings = openCouplings();
    save("AHL", "10");
    CouplingFile(world.data()).save({.job = "(RSK)", .code = "Y", .supplier = "2"});
    couplings.choose(-1);
    couplings.remove();
    EXPECT_EQ(rows().size(), 1U);
    couplings.choose(0);
    world.expect(text::prisstyr::kAskToRemoveCoupling, &text::prisstyr::kRemoveCouplingTitle, Answer::No);
    couplings.remove();
    EXPECT_EQ(rows().size(), 1U);
    world.expect(text::prisstyr::kAskToRemoveCoupling, &text::prisstyr::kRemoveCouplingTitle, Answer::Yes);
    couplings.remove();
    EXPECT_TRUE(rows().empty());
    EXPECT_EQ(couplings.code, "");
    const auto others = CouplingFile(world.data()).ofJob("(RSK)");
    ASSERT_EQ(others.size(), 2U);
    EXPECT_EQ(others[0].code + others[1].code, "XY");
}

TEST_F(CouplingEditorTest, ListsAnewWhatOthersHaveChanged) {
    CouplingEditor& couplings = openCouplings();
    save("AHL", "10");
    CouplingFile(world.data()).save({.job = "(EIO)", .code = "BEI", .supplier = "20"});
    couplings.code = "ahl";
    couplings.supplier = "";
    world.port.expect(world.texts().ModulTextMed(text::definitions::kAskWithoutSupplier, "ahl"), "Kolmera",
                      Answer::Yes);
    const std::string title = world.texts().ModulText(text::files::kCannotSave);
    world.port.expect(world.texts().ModulTextMed(text::definitions::kCouplingsChanged, "(EIO)"), title);
    EXPECT_FALSE(couplings.save());
    EXPECT_THAT(rows(), ElementsAre("AHL\t-->\t10\t\tLev 10", "BEI\t-->\t20\t\tLev 20"));
    EXPECT_EQ(couplings.code, "ahl") << "what was typed is lost";
}

}  // namespace
}  // namespace kolmera
