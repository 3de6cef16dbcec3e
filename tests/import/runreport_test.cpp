#include "import/run/runreport.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "import/run/runmessage.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

/// Every remark a line: kind and count, and of each example where it is and what the file says.
std::string shown(const RunReport& report) {
    std::string text;
    for (const RemarkKind& kind : kRemarks) {
        const RunReport::Tally& tally = report.tally(kind.remark);
        if (tally.count == 0) continue;
        text += fmt::format("{} {}:", kind.name, tally.count);
        for (const RunReport::Example& example : tally.examples) {
            text += fmt::format(" [{} {} {} '{}']", example.record, example.product, example.column, example.text);
        }
        text += '\n';
    }
    for (const RunReport::Failure& failure : report.failures()) {
        text += fmt::format("failed {}: {} {} [{} {}]\n", failure.count, failure.statement, failure.error.number(),
                            failure.record, failure.product);
    }
    return text;
}

TEST(RunReport, TellsWhatMaskRecordsDidNotBring) {
    const struct {
        const char* fault;
        MaskSpec mask;
        const char *file, *expected;
    } cases[] = {
        {"a zero of the price list alone goes unseen",
         {.supplierPrices = true, .relations = {{1, "Nummer", 'S'}, {2, "Inpris", 'I', 'I'}}},
         "A\t12,50 kr\r\n",
         "not_numbers 1: [1 A Levprislista.Inpris '12,50 kr']\n"},
        {"a zero in a row without a product goes unseen",
         {.createNew = false, .supplierPrices = true, .relations = {{1, "Levartikelnr", 'S'}, {2, "Inpris"}}},
         "Y\t1O\r\n",
         "not_numbers 1: [1 Y Levprislista.Inpris '1O']\n"},
        {"one text in two tables counts twice",
         {.supplierPrices = true, .relations = {{1, "Nummer", 'S'}, {2, "Inpris"}, {3, "1Utpris"}}},
         "A\t1O\tx\r\n",
         "not_numbers 2: [1 A Produkt.Inpris '1O'] [1 A Produkt.1Utpris 'x']\n"},
        {"the product's discount is not written, the price list's is",
         {.supplierPrices = true, .relations = {{1, "Nummer", 'S'}, {2, "Inpris"}, {3, "Rabatt", 'I', 'X'}}},
         "A\t10\ttio\r\n",
         "not_numbers 1: [1 A Levprislista.Rabatt 'tio']\n"},
        {"the next record's zeros are taken for the first one's",
         {.relations = {{1, "Nummer", 'S'}, {2, "Inpris"}}},
         "A\tx\r\nB\ty\r\n",
         "not_numbers 2: [1 A Produkt.Inpris 'x'] [2 B Produkt.Inpris 'y']\n"},
        {"an empty cell of another column is no missing price",
         {.relations = {{1, "Nummer", 'S'}, {2, "Vikt"}, {3, "Rabatt"}, {4, "2Utpris"}}},
         "A\t\t\t\r\n",
         "missing_prices 1: [1 A Produkt.2Utpris '']\n"},
        {"a price that is there already is not missing",
         {.relations = {{1, "Nummer", 'S'}, {2, "Inpris", 'I', 'S'}}},
         "OLD\t\r\n",
         ""},
        {"an empty line at the end takes the price of the product before it",
         {.relations = {{1, "Nummer", 'S'}, {2, "Inpris"}}},
         "A\t5\r\n\r\n",
         "missing_prices 1: [2 A Produkt.Inpris '']\nuneven_records 1: [2 A  '']\n"},
        {"a last record without its price",
         {.structure = 'P', .length = 4, .relations = {{1, "Nummer", 'S', 'U', 1, 2}, {2, "Inpris", 'I', 'U', 3, 2}}},
         "A 12\nB ",
         "missing_prices 1: [2 B Produkt.Inpris '']\nuneven_records 1: [2 B  '']\n"},
        {"an unknown product and a record without key are one",
         {.createNew = false, .relations = {{1, "Nummer", 'S'}, {2, "Vikt"}}},
         "X\t1\r\n\t1\r\nOLD\t1\r\n",
         "no_product 1: [1 X  '']\nno_key 1: [2   '']\n"},
        {"an empty search name changes a product in silence",
         {.relations = {{1, "Söknamn", 'S'}, {2, "Vikt"}}},
         "\t1\r\n",
         "empty_keys 1: [1   '']\n"},
        {"a failed statement without its record",
         {.relations = {{1, "Nummer", 'S'}, {2, "SenasteInköp"}}},
         "A\t20260105\r\nB\tsnart\r\nC\tsnart\r\n",
         "failed 2: Produkt.SenasteInköp 3421 [2 B]\n"},
        {"control characters and endless texts",
         {.relations = {{1, "Nummer", 'S'}, {2, "Inpris"}}},
         "A\t\x1B[2J567890123456789012345678901234567890123456789012345678901234567890\r\n",
         "not_numbers 1: [1 A Produkt.Inpris '\\x1B[2J56789012345678901234567890123456789012345678901234567890...']\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        World world;
        world.add("Leverantör", {{"Nummer", "L1"}});
        world.add("Produkt", {{"Nummer", "OLD"}, {"Inpris", 7.0}});
        world.add("Levprislista", {{"Produktnr", "GONE"}, {"Leverantör", "L1"}, {"Levartikelnr", "Y"}});
        world.job.supplier = "L1";
        world.mask(c.mask);
        world.priceFile(c.file);
        EXPECT_EQ(shown(world.run().report), c.expected);
    }
}

TEST(RunReport, KeepsCountsNotTheFile) {
    RunReport report;
    for (int record = 1; record <= 1000; ++record) {
        report.at(record);
        report.remark(Remark::NoProduct);
        report.uncoupled(fmt::format("K{}", record));
        report.note("Produkt", PlatformError(3022, "Duplicate " + std::to_string(record)));
    }
    EXPECT_EQ(report.count(Remark::NoProduct), 1000);
    EXPECT_EQ(report.tally(Remark::NoProduct).examples.size(), 20U);
    EXPECT_EQ(report.uncoupledCodes().size(), 100U);
    EXPECT_EQ(report.skipped(), 2000);
    report.remark(Remark::EmptyKey);
    LanguageTexts texts;
    EXPECT_EQ(skipReasons(texts, report).size(), 2U) << "a remark that skips nothing is a reason";
    EXPECT_EQ(report.failed(), 1000);
    ASSERT_EQ(report.failures().size(), 101U);
    EXPECT_EQ(report.failures().back().count, 900);
}

}  // namespace
}  // namespace kolmera::test
