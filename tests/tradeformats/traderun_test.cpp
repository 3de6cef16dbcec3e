#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "lang/keys/prismain.h"
#include "lang/keys/prisutfa.h"
#include "lang/keys/run.h"
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

std::string finfoLine(std::string_view price, std::string_view quantity, std::string_view salesPrice) {
    return line({{1, "AB"}, {29, "15001234"}, {246, price}, {264, "20260105"}, {296, quantity}, {329, salesPrice}});
}

std::string goodRecord(std::string_view job) {
    if (job == "(FINFO)") return finfoLine("00010000", "00001000000", "00015000");
    const std::string header = job == "(RSK)" ? "0260105\r\n" : "";
    return header + line({{1, "101000001"}, {10, "Artikel"}, {35, "20260105"}}) + "2AB00010000\r\n";
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
    EXPECT_EQ(asked.couplings,
              (std::vector<std::string>{
                  "AB\t-->\t1010\t" + world.texts().FormulärSträng(text::prisutfa::kMainSupplier) + "\tGrossisten",
                  "CD\t-->\t1020\t\tLyskällan", "AB\t-->\t1020\t\tLyskällan"}));
    // Of two couplings of one code the first counts.
    EXPECT_EQ(world.rows("Levprislista", "Leverantör"), "1010\n");
}

TEST(TradeRun, StopsBeforeAnythingIsWritten) {
    const struct {
        const char* fault;
        void (*arrange)(TradeWorld&);
    } cases[] = {
        {"couplings of another job or of unknown suppliers count",
         [](TradeWorld& w) {
             w.job.name = "(FINFO)";
             w.coupling("CD", "9999");
             w.port.expect(w.texts().FormulärSträngMed2(text::prismain::kNoSupplierCoupled,
                                                        "Testbolaget (" + w.shownCompany() + ")", "(FINFO)"),
                           w.text(text::prismain::kNoCouplingTitle));
         }},
        {"couplings that cannot be read",
         [](TradeWorld& w) {
             std::filesystem::remove(w.data() / "PRISLEV.TXT");
             std::filesystem::create_directory(w.data() / "PRISLEV.TXT");
             w.port.expect(
                 w.texts().ModulTextMed(text::run::kUnreadableFile, "Det är en mapp och ingen fil: PRISLEV.TXT."),
                 w.texts().ModulText(text::run::kCannotRunTitle));
         }},
        {"not confirmed", [](TradeWorld& w) { w.port.confirmation = {.confirmed = false}; }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        TradeWorld world("(EIO)");
        world.priceFile(eioFile(1));
        c.arrange(world);
        EXPECT_FALSE(world.run().completed);
        EXPECT_EQ(world.rows("Produkt", "Nummer"), "");
    }
}

TEST(TradeRun, TellsOfLineFeedsWhereLinesShouldEnd) {
    TradeWorld world("(EIO)");
    world.rawPriceFile(replaceAll(eioFile(100), "\r", ""));
    EXPECT_EQ(world.run().records, 1);
    ASSERT_EQ(world.port.told.size(), 1U);
    EXPECT_EQ(world.port.told[0].find(world.texts().ModulTextMed(text::run::kReadAsOneLine, "pris.txt")), 0U);
}

TEST(TradeRun, TellsWhatLinesDidNotBring) {
    const struct {
        const char *fault, *job;
        std::string lines;  // behind a good record
        Remark remark;
        const char *product, *text;
        bool faulty;
    } cases[] = {
        {"blank price", "(EIO)", "2AB           R1\r\n", Remark::MissingPrice, "1000001", "", true},
        {"zeros for a price", "(EIO)", "2AB00000000 R1\r\n", Remark::MissingPrice, "1000001", "00000000", true},
        {"damaged price", "(EIO)", "2AB0001O000 R1\r\n", Remark::DamagedPrice, "1000001", "0001O000", true},
        {"price cut by the end of the line", "(RSK)", "2AB0001\r\n", Remark::DamagedPrice, "1000001", "0001", true},
        {"code of nobody", "(EIO)", "2\xC5Z00010000\r\n", Remark::UncoupledCode, "1000001", "ÅZ", false},
        {"other record type", "(EIO)", "9\x1B[2J\r\n", Remark::OtherLine, "", "9\\x1B[2J", false},
        {"article without number", "(EIO)", "1\r\n2AB00010000\r\n", Remark::NoKey, "", "", false},
        {"damaged sales price", "(FINFO)", finfoLine("00010000", "00001000000", "150,00"), Remark::NotNumber,
         "15001234", "150,00", true},
        {"damaged quantity", "(FINFO)", finfoLine("00010000", "0000l000000", "00015000"), Remark::DamagedQuantity,
         "15001234", "0000l000000", true},
        {"blank purchase price", "(FINFO)", finfoLine("", "00001000000", "00015000"), Remark::MissingPrice, "15001234",
         "", true},
        {"damaged purchase price", "(FINFO)", finfoLine("1O0", "00001000000", "00015000"), Remark::DamagedPrice,
         "15001234", "1O0", true},
        {"group of others", "(FINFO)", line({{1, "AB"}, {29, "20001234"}}), Remark::OutsideGroups, "", "20001234",
         false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        TradeWorld world(c.job);
        world.job.fromGroup = "1000";
        world.job.toGroup = "1999";
        world.rawPriceFile(goodRecord(c.job) + c.lines);
        const RunSummary summary = world.run();
        const RunReport::Tally& tally = summary.report.tally(c.remark);
        ASSERT_EQ(tally.count, 1);
        EXPECT_EQ(tally.examples[0].record, summary.records);
        EXPECT_EQ(tally.examples[0].product, c.product);
        EXPECT_EQ(tally.examples[0].text, c.text);
        EXPECT_EQ(summary.hasFaults(), c.faulty);
        EXPECT_EQ(world.port.told.size(), 1U);
    }
}

TEST(TradeRun, CancelKeepsWhatWasRead) {
    TradeWorld world("(EIO)");
    world.priceFile(eioFile(60));
    world.port.cancelAtStatus = world.text(text::prismain::kRecordsRead) + " 100 ....";
    const RunSummary summary = world.run();
    EXPECT_TRUE(summary.cancelled && summary.completed);
    EXPECT_EQ(summary.records, 100);
    EXPECT_EQ(world.port.statuses, (std::vector<std::string>{world.text(text::prismain::kReading),
                                                             world.text(text::prismain::kRecordsRead) + " 50 ....",
                                                             world.text(text::prismain::kRecordsRead) + " 100 ...."}));
    // Two whole batches: the 50 price records among 100 lines.
    EXPECT_EQ(count(world.rows("Produkt", "Nummer")), 50);

    world.port.cancelAtStatus.clear();
    world.port.pressCancel();
    EXPECT_EQ(world.run().records, 120) << "stopped by an old Cancel";
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

TEST(TradeRun, EmptiesTheTablesFirst) {
    TradeWorld world("(RSK)");
    world.add("Produkt", {{"Nummer", "GAMMAL"}});
    world.add("Levprislista", {{"Produktnr", "GAMMAL"}, {"Leverantör", "1010"}});
    world.add("Prodaltprodnr", {{"Produktnr", "GAMMAL"}, {"Nummer", std::int64_t{1}}, {"Alternativnr", "7"}});
    world.port.confirmation.emptyTables = true;
    world.priceFile(eioFile(1));
    world.run();
    EXPECT_EQ(world.rows("Produkt", "Nummer") + world.rows("Levprislista", "Produktnr") +
                  world.rows("Prodaltprodnr", "Produktnr"),
              "1000001\n1000001\n");
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
