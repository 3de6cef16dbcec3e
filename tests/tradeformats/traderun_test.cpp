#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "platform/lettercase.h"
#include "tradeformats/tradeworld.h"

namespace kolmera::test {
namespace {

/// `count` articles, each with a price line: numbers from 1000001.
std::string eioFile(int count) {
    std::string file;
    for (int number = 1; number <= count; ++number) {
        file += "10" + std::to_string(1000000 + number) + "Artikel\r\n2AB00010000\r\n";
    }
    return file;
}

/// A record of PRISLEV.TXT as another program may have written it.
void appendCoupling(const World& world, std::string_view code, std::string_view supplier) {
    std::string record(242, ' ');
    record.replace(0, world.job.name.size(), world.job.name);
    record.replace(100, code.size(), code);
    record.replace(120, supplier.size(), supplier);
    record.replace(240, 2, "\r\n");
    std::ofstream(world.data() / "PRISLEV.TXT", std::ios::binary | std::ios::app) << record;
}

TEST(TradeRun, ShowsTheCouplingsThatItUses) {
    TradeWorld world("(EIO)");
    world.coupling("XX", "9999");  // the company has no such supplier
    appendCoupling(world, "AB", "1020");
    world.priceFile(eioFile(1));
    world.run();
    ASSERT_EQ(world.port.confirmations.size(), 1U);
    const Confirmation& asked = world.port.confirmations[0];
    EXPECT_TRUE(asked.tradeFormat);
    EXPECT_EQ(asked.captionSuffix, " (EIO)");
    EXPECT_EQ(asked.couplings, (std::vector<std::string>{
                                   "AB\t-->\t1010\t" + world.texts().FormulärSträng("PrisUtFa", 3) + "\tGrossisten",
                                   "CD\t-->\t1020\t\tLyskällan", "AB\t-->\t1020\t\tLyskällan"}));
    // Of two couplings of one code the first counts.
    EXPECT_EQ(world.rows("Levprislista", "Leverantör"), "1010\n");
}

TEST(TradeRun, StopsWithoutCoupledSupplier) {
    World world;
    world.job.name = "(RSK)";
    world.add("Leverantör", {{"Nummer", "1010"}});
    world.coupling("AB", "1010", true);  // of another job
    world.job.name = "(FINFO)";
    world.coupling("CD", "1020");  // the company has no such supplier
    world.port.expect(
        world.texts().FormulärSträngMed2("PrisMain", 24, "Testbolaget (" + world.shownCompany() + ")", "(FINFO)"),
        world.text(25));
    EXPECT_FALSE(world.run().completed);
    EXPECT_TRUE(world.port.confirmations.empty());
}

TEST(TradeRun, StopsWhenTheCouplingsCannotBeRead) {
    TradeWorld world("(EIO)");
    std::filesystem::remove(world.data() / "PRISLEV.TXT");
    std::filesystem::create_directory(world.data() / "PRISLEV.TXT");
    world.port.expect(world.texts().ModulTextMed("KMR", 320, "Det är en mapp och ingen fil: PRISLEV.TXT."),
                      world.texts().ModulText("KMR", 100));
    EXPECT_FALSE(world.run().completed);
}

TEST(TradeRun, TellsOfLineFeedsWhereLinesShouldEnd) {
    TradeWorld world("(EIO)");
    world.rawPriceFile(replaceAll(eioFile(100), "\r", ""));
    world.port.expect(world.texts().ModulTextMed("KMR", 321, "pris.txt"), world.texts().ModulText("KMR", 322));
    EXPECT_EQ(world.run().records, 1);
}

TEST(TradeRun, TouchesNothingUnlessConfirmed) {
    TradeWorld world("(EIO)");
    world.priceFile(eioFile(1));
    world.port.confirmation = {.confirmed = false};
    EXPECT_FALSE(world.run().completed);
    EXPECT_EQ(world.rows("Produkt", "Nummer"), "");
}

TEST(TradeRun, TellsOfAMissingPriceFile) {
    TradeWorld world("(RSK)");
    world.job.priceFile = "borta.txt";
    world.port.expect(world.text(26) + " borta.txt.", world.text(26));
    EXPECT_FALSE(world.run().completed);
}

TEST(TradeRun, CancelKeepsWhatWasRead) {
    TradeWorld world("(EIO)");
    world.priceFile(eioFile(60));
    world.port.cancelAtStatus = world.text(29) + " 100 ....";
    const RunSummary summary = world.run();
    EXPECT_TRUE(summary.cancelled);
    EXPECT_TRUE(summary.completed);
    EXPECT_EQ(summary.records, 100);
    // Two whole batches: the 50 price records among 100 lines.
    EXPECT_EQ(count(world.rows("Produkt", "Nummer")), 50);
    EXPECT_EQ(count(world.rows("Levprislista", "Produktnr")), 50);
}

TEST(TradeRun, CancelIsHeardBehindEveryLine) {
    TradeWorld world("(EIO)");
    world.priceFile(eioFile(20));
    int line = 0;
    world.port.onEvents = [&] {
        // Run mode lets events run once before the first line.
        if (++line == 1 + 6) world.port.pressCancel();
    };
    EXPECT_EQ(world.run().records, 6);
    // The rest of an unfinished batch is kept.
    EXPECT_EQ(world.rows("Produkt", "Nummer"), "1000001\n1000002\n1000003\n");
}

TEST(TradeRun, IsNotStoppedByAnOldCancel) {
    TradeWorld world("(EIO)");
    world.priceFile(eioFile(1));
    world.port.pressCancel();
    EXPECT_FALSE(world.run().cancelled);
}

TEST(TradeRun, CommitsEveryTwentyFivePriceRecords) {
    TradeWorld world("(EIO)");
    world.priceFile(eioFile(30));
    int events = 0;
    std::string seenByOthers;
    world.port.onEvents = [&] {
        ++events;
        // Long enough for the next commit not to be joined with a later one.
        if (events == 10) std::this_thread::sleep_for(std::chrono::milliseconds(300));
        if (events == 1 + 54) seenByOthers = world.rows("Produkt", "Nummer");
    };
    world.run();
    EXPECT_EQ(count(seenByOthers), 25);
    EXPECT_EQ(count(world.rows("Produkt", "Nummer")), 30);
}

TEST(TradeRun, ShowsEveryFiftiethLine) {
    TradeWorld world("(EIO)");
    world.priceFile(eioFile(60));
    EXPECT_EQ(world.run().records, 120);
    EXPECT_EQ(world.port.statuses,
              (std::vector<std::string>{world.text(28), world.text(29) + " 50 ....", world.text(29) + " 100 ...."}));
    EXPECT_EQ(count(world.rows("Produkt", "Nummer")), 60);
}

TEST(TradeRun, EmptiesTheTablesFirst) {
    for (const char* job : {"(EIO)", "(RSK)", "(FINFO)"}) {
        SCOPED_TRACE(job);
        TradeWorld world(job);
        world.add("Produkt", {{"Nummer", "GAMMAL"}});
        world.add("Levprislista", {{"Produktnr", "GAMMAL"}, {"Leverantör", "1010"}});
        world.add("Prodaltprodnr", {{"Produktnr", "GAMMAL"}, {"Nummer", std::int64_t{1}}, {"Alternativnr", "7"}});
        world.port.confirmation.emptyTables = true;
        world.priceFile(job == std::string_view("(FINFO)") ? "" : eioFile(1));
        world.run();
        EXPECT_EQ(count(world.rows("Produkt", "Nummer")), job == std::string_view("(FINFO)") ? 0 : 1);
        EXPECT_EQ(world.rows("Produkt", "Nummer").find("GAMMAL"), std::string::npos);
        EXPECT_EQ(world.rows("Levprislista", "Produktnr").find("GAMMAL"), std::string::npos);
        EXPECT_EQ(world.rows("Prodaltprodnr", "Produktnr"), "");
    }
}

TEST(TradeRun, GoesOnWhenARowCannotBeSaved) {
    TradeWorld world("(EIO)");
    world.refuse("Produkt", "Nummer", "'1000002', '1000003'");
    world.refuse("Levprislista", "Produktnr", "'1000003'");
    world.priceFile(eioFile(4));
    const RunSummary summary = world.run();
    EXPECT_EQ(world.rows("Produkt", "Nummer"), "1000001\n1000004\n");
    EXPECT_EQ(summary.newProducts, 2);
    EXPECT_EQ(summary.priceList, 3);
    EXPECT_EQ(summary.skipped, 1) << "lines that wrote nothing";
    EXPECT_EQ(world.port.passedOver.size(), 3U + 4 * 2);  // and the dates that the articles do not have
}

}  // namespace
}  // namespace kolmera::test
