#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/climachine.h"
#include "platform/engine/database.h"
#include "platform/systemuser.h"
#include "platform/tsv.h"

namespace kolmera::test {
namespace {

// What the jobs of the demo do when they are run in the order of the list, worked out by hand from the price files
// (their wrong records are listed in data/demo/README.md).
struct DemoJob {
    const char* job;
    int exitCode;
    std::int64_t records, newProducts, changed, skipped, priceList, alternatives, documents, passedOver, notNumbers;
};

constexpr DemoJob kDemoJobs[] = {
    {"(EIO)", 3, 575, 207, 10, 22, 322, 0, 0, 5, 0},
    {"(RSK)", 3, 606, 220, 9, 19, 340, 0, 0, 17, 0},
    {"(FINFO)", 3, 211, 181, 8, 21, 190, 380, 0, 6, 0},
    {"Smedhult verktyg", 3, 254, 243, 8, 1, 0, 244, 51, 4, 2},
    {"Bruknäs skruv och beslag", 3, 242, 234, 5, 0, 242, 0, 0, 1, 2},
    {"Lindåsby färg", 3, 214, 206, 6, 1, 213, 208, 0, 2, 2},
    {"Tassby julkampanj", 3, 201, 0, 181, 18, 183, 0, 0, 6, 2},
    {"Pärmnäs kontor", 3, 214, 207, 5, 0, 0, 0, 0, 0, 2},
    {"Direktimport", 3, 293, 286, 6, 0, 293, 0, 0, 3, 1},
    {"Fjordhamna prisjustering", 3, 209, 0, 156, 48, 161, 0, 0, 2, 1},
    {"Ekhult semikolonlista", 3, 20, 20, 0, 0, 0, 0, 0, 0, 1},
    {"Granlid arbetsbok", 0, 20, 20, 0, 0, 0, 0, 0, 0, 0},
};

double price(Recordset& product, const char* column) { return std::get<double>(product.value(column)); }

}  // namespace

TEST(Demo, JobsDoWhatTheirFilesSay) {
    DemoMachine machine;
    for (const DemoJob& expected : kDemoJobs) {
        SCOPED_TRACE(expected.job);
        EXPECT_EQ(machine.runJob(expected.job, {"--summary", machine.file("summary.json")}), expected.exitCode);
        const auto summary = nlohmann::json::parse(readWholeFile(machine.file("summary.json")));
        EXPECT_EQ(summary["job"], expected.job);
        EXPECT_EQ(summary["records"], expected.records);
        EXPECT_EQ(summary["new"], expected.newProducts);
        EXPECT_EQ(summary["changed"], expected.changed);
        EXPECT_EQ(summary["skipped"], expected.skipped);
        EXPECT_EQ(summary["pricelist"], expected.priceList);
        EXPECT_EQ(summary["alternatives"], expected.alternatives);
        EXPECT_EQ(summary["documents"], expected.documents);
        EXPECT_EQ(summary["passed_over"], expected.passedOver);
        EXPECT_EQ(summary["not_numbers"], expected.notNumbers);
        EXPECT_EQ(summary["cancelled"], false);
    }
}

TEST(Demo, AListWithSlippedDecimalsIsStoppedByItsLimits) {
    DemoMachine machine;
    machine.runJob("Bruknäs skruv och beslag");
    const auto prices = [&] {
        const auto database = machine.open();
        const auto products = database->open("SELECT Inpris FROM Produkt ORDER BY ID", RecordsetType::Snapshot);
        double sum = 0;
        for (; !products->eof(); products->moveNext()) sum += std::get<double>(products->value(0));
        return sum;
    };
    const double before = prices();
    EXPECT_EQ(machine.runJob("Bruknäs höstlista"), 4) << machine.err();
    EXPECT_NE(machine.err().find("25,9 (gränsen är 10)"), std::string::npos) << machine.err();
    EXPECT_EQ(prices(), before);
    EXPECT_EQ(machine.runJob("Bruknäs höstlista", {"--force"}), 0) << machine.err();
    EXPECT_GT(prices(), 1.5 * before);
}

TEST(Demo, RejectsAreWrittenUnlessOverThePriceFile) {
    DemoMachine machine;
    const std::string file = machine.file("rejects.txt"), priceFile = machine.data() + "/Prisfiler/FINFO.TXT";
    EXPECT_EQ(machine.runJob("(FINFO)", {"--rejects", priceFile}), 1);
    EXPECT_EQ(machine.run({"history", "--data", machine.data(), "--json"}), 0);
    EXPECT_EQ(machine.out(), "[]\n") << "the job has run all the same";
    EXPECT_EQ(machine.runJob("(FINFO)", {"--rejects", file}), 3) << machine.err();
    EXPECT_EQ(machine.run({"history", "--data", machine.data(), "--json"}), 0);
    EXPECT_EQ(nlohmann::json::parse(machine.out())[0]["user"], SystemUser::current().login);
    const std::string rejects = readWholeFile(file);
    EXPECT_EQ(std::ranges::count(rejects, '\n'), 10) << rejects;
    EXPECT_EQ(machine.run({"show", "last", "--data", machine.data(), "--rejects", file + "2"}), 0) << machine.err();
    EXPECT_EQ(readWholeFile(file + "2"), rejects);
    EXPECT_EQ(machine.runJob("(EIO)", {"--rejects", machine.file("missing/rejects.txt")}), 1)
        << "rejects that could not be written are passed over in silence";
}

// Worked out by hand from the settings of the demo company.
TEST(Demo, PricesAreRight) {
    DemoMachine machine;
    machine.runJob("(EIO)");

    const auto database = machine.open();
    const auto product = database->open("Produkt", RecordsetType::Table);
    product->setIndex("Nummer");
    const Value number = "0400203";
    product->seek("=", {&number, 1});
    ASSERT_FALSE(product->noMatch());
    EXPECT_EQ(price(*product, "Inpris"), 582.35);
    EXPECT_EQ(price(*product, "1Utpris"), 844);     // 45 per cent: 844.4075, to whole units in its range
    EXPECT_EQ(price(*product, "2Utpris"), 669.70);  // 15 per cent: 669.7025, not rounded by ranges
}

}  // namespace kolmera::test
