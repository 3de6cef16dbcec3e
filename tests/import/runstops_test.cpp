#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "lang/keys/company.h"
#include "lang/keys/mask.h"
#include "lang/keys/prismain.h"
#include "lang/keys/run.h"
#include "lang/keys/shared.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

constexpr const char* kBreaks = "\r\n\r\n";
const MaskSpec kSimple{.relations = {{1, "Nummer", 'S'}, {2, "Vikt"}}};
const MaskSpec kOfSupplier{.supplierPrices = true, .relations = {{1, "Nummer", 'S'}, {2, "Vikt"}}};

std::string withMask(World& world, FormKey key) { return world.texts().FormulärSträngMed1(key, "Testmask"); }

/// Appends a relation to PRISMPOS.TXT as another program may have left it there.
void appendRelation(const World& world, const std::string& fields) {
    std::ofstream(world.data() / "PRISMPOS.TXT", std::ios::binary | std::ios::app)
        << fields << std::string(9, '\0') << "\r\n";
}

struct StopCase {
    const char* fault;
    void (*arrange)(World&);
    Answer answer = Answer::OK;
    int confirmations = 0;
};

TEST(RunStops, EachWithItsMessage) {
    const StopCase cases[] = {
        {"a mask that does not exist, settings wanted",
         [](World& w) {
             w.mask(kSimple);
             w.job.mask = "testmask";  // letter case counts
             w.port.expect(w.texts().FormulärSträngMed1(text::prismain::kAskForOtherMask, "testmask"),
                           w.text(text::prismain::kMaskMissingTitle), Answer::Yes);
         },
         Answer::Yes},
        {"a mask that does not exist, settings not wanted",
         [](World& w) {
             w.port.expect(withMask(w, text::prismain::kAskForOtherMask), w.text(text::prismain::kMaskMissingTitle),
                           Answer::No);
         },
         Answer::No},
        {"relations of another mask only",
         [](World& w) {
             w.mask({.relations = {}});
             appendRelation(w, "00200100100000000US1");
             w.port.expect(withMask(w, text::prismain::kNoRelations), w.text(text::prismain::kMaskIncompleteTitle));
         }},
        {"a file of masks that cannot be read",
         [](World& w) {
             std::filesystem::remove(w.data() / "PRISMASK.TXT");
             std::filesystem::create_directory(w.data() / "PRISMASK.TXT");
             w.port.expect(
                 w.texts().ModulTextMed(text::run::kUnreadableFile, "Det är en mapp och ingen fil: PRISMASK.TXT."),
                 w.texts().ModulText(text::run::kCannotRunTitle));
         }},
        {"no search key",
         [](World& w) {
             w.mask({.relations = {{1, "Nummer"}, {2, "Vikt"}}});
             w.port.expect(withMask(w, text::prismain::kNoSearchKey), w.text(text::prismain::kMaskIncompleteTitle));
         }},
        {"no lines in a record",
         [](World& w) {
             w.mask({.structure = 'F', .lines = 0, .relations = kSimple.relations});
             w.port.expect(w.texts().ModulTextMed(text::mask::kNoLines, "Testmask"),
                           w.texts().ModulText(text::run::kCannotRunTitle));
         }},
        {"no bytes in a record",
         [](World& w) {
             w.mask({.structure = 'P', .length = 0, .relations = kSimple.relations});
             w.port.expect(w.texts().ModulTextMed(text::mask::kNoRecordLength, "Testmask"),
                           w.texts().ModulText(text::run::kCannotRunTitle));
         }},
        {"no supplier, settings wanted",
         [](World& w) {
             w.mask(kOfSupplier);
             w.port.expect(withMask(w, text::prismain::kUpdatesSupplierPrices) + kBreaks +
                               w.text(text::prismain::kAskForSupplier),
                           w.text(text::prismain::kSupplierMissingTitle), Answer::Yes);
         },
         Answer::Yes},
        {"an unknown supplier",
         [](World& w) {
             w.add("Leverantör", {{"Nummer", "L1"}});
             w.job.supplier = "L2";
             w.mask(kOfSupplier);
             w.port.expect(withMask(w, text::prismain::kUpdatesSupplierPrices) + kBreaks +
                               w.text(text::prismain::kAskForOtherSupplier),
                           w.text(text::prismain::kSupplierMissingTitle), Answer::No);
         },
         Answer::No},
        {"not confirmed",
         [](World& w) {
             w.mask(kSimple);
             w.port.confirmation.confirmed = false;
         },
         Answer::OK, 1},
        {"a preparation that cannot be started",
         [](World& w) {
             w.mask(kSimple);
             w.job.command = "true";
             std::ofstream(w.program() / "Filer") << "no folder";
             std::ofstream(w.data() / "Filer") << "no folder";
             w.port.expectBeginning(w.text(text::prismain::kCannotStartCommand) + " true." + kBreaks,
                                    w.text(text::prismain::kCannotStartCommand));
         },
         Answer::OK, 1},
        {"a price file that does not exist",
         [](World& w) {
             w.mask(kSimple);
             w.job.priceFile = "X:\\priser\\p.txt";
             w.port.expect(w.text(text::prismain::kCannotFindPriceFile) + " X:\\priser\\p.txt.",
                           w.text(text::prismain::kCannotFindPriceFile));
         },
         Answer::OK, 1},
        {"no price file named",
         [](World& w) {
             w.mask(kSimple);
             w.job.priceFile = "";
             w.port.expect(w.text(text::prismain::kCannotFindPriceFile) + " .",
                           w.text(text::prismain::kCannotFindPriceFile));
         },
         Answer::OK, 1},
        {"a price file that is a folder",
         [](World& w) {
             w.mask(kSimple);
             std::filesystem::create_directory(w.data() / "pris.txt");
             w.port.expectBeginning(w.text(text::prismain::kCannotOpenPriceFile) + " pris.txt." + kBreaks,
                                    w.text(text::prismain::kCannotOpenPriceFile));
         },
         Answer::OK, 1},
    };
    for (const StopCase& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.add("Produkt", {{"Nummer", "A"}});
        c.arrange(world);
        const RunSummary summary = world.run();
        EXPECT_FALSE(summary.completed);
        EXPECT_EQ(summary.records, 0);
        EXPECT_EQ(world.port.jobSettingsOpened, c.answer == Answer::Yes ? 1 : 0);
        EXPECT_EQ(world.port.confirmations.size(), static_cast<std::size_t>(c.confirmations));
        EXPECT_EQ(world.rows("Produkt", "Nummer, Vikt"), "A 0\n");
    }
}

TEST(RunStops, NothingOfTheCompanyIsTouchedBeforeTheMaskIsKnown) {
    World world;
    std::filesystem::remove(world.company());
    world.port.expect(withMask(world, text::prismain::kAskForOtherMask), world.text(text::prismain::kMaskMissingTitle),
                      Answer::No);
    world.run();
    EXPECT_FALSE(std::filesystem::exists(world.company()));
}

TEST(RunStops, CompaniesThatCannotBeOpened) {
    const struct {
        const char *fault, *number;
        void (*arrange)(const std::filesystem::path& company);
    } cases[] = {
        {"missing", "3024", [](const auto& file) { std::filesystem::remove(file); }},
        {"no database", "3343",
         [](const auto& file) { std::ofstream(file, std::ios::binary) << std::string(10000, 'x'); }},
        {"empty", "3343", [](const auto& file) { std::ofstream(file, std::ios::binary | std::ios::trunc); }},
        {"damaged", "3049",
         [](const auto& file) {
             std::fstream bytes(file, std::ios::binary | std::ios::in | std::ios::out);
             bytes.seekp(4096);
             bytes << std::string(std::size_t{40} * 4096, 'x');
         }},
        {"another password", "3031",
         [](const auto& file) {
             std::filesystem::remove(file);
             createFileDatabase(file, {}, "hemligt");
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.mask(kSimple);
        world.priceFile("A\t5\r\n");
        c.arrange(world.company());
        const std::string title = world.texts().ResText(text::shared::kCannotOpenCompany);
        world.port.expectBeginning(title + " Ftg1.Mdb." + kBreaks + c.number + "\r\n", title);
        if (std::string(c.number) == "3049") {
            world.port.expectBeginning(
                title + " Ftg1.Mdb." + world.texts().ModulTextMed(text::company::kAskToRepair, "Ftg1.Mdb"), "Kolmera",
                Answer::No);
        }
        EXPECT_FALSE(world.run().completed);
    }
}

TEST(RunStops, OnlyTheFirstHundredRelationsAreUsed) {
    World world;
    world.mask({.relations = std::vector<Link>(99, Link{3, "Vikt", 'I', 'I'})});
    appendRelation(world, "00100100100000000US1");  // the hundredth: the key
    appendRelation(world, "00100301800000000UI1");  // Vikt
    world.priceFile("A\t5\r\n");
    world.port.expect(world.texts().ModulTextMed(text::mask::kRelationsLeftOut, "Testmask"),
                      world.text(text::prismain::kMaskIncompleteTitle));
    EXPECT_TRUE(world.run().completed);
    EXPECT_EQ(world.rows("Produkt", "Nummer, Vikt"), "A 0\n");
}

}  // namespace
}  // namespace kolmera::test
