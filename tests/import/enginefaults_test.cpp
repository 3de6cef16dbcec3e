#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <thread>
#include <utility>

#include "lang/keys/company.h"
#include "lang/keys/repair.h"
#include "lang/keys/run.h"
#include "lang/keys/shared.h"
#include "support/filesizelimit.h"
#include "support/world.h"

namespace kolmera::test {
namespace {

using ::testing::IsEmpty;

/// Another session that writes to the company until it is told to let go.
class Occupier {
  public:
    explicit Occupier(const World& world) : database_(world.open()) {
        database_->begin();
        database_->execute("UPDATE Syinställningar SET Produktnummer = '1'");
    }
    void letGo() { database_->commit(); }

  private:
    std::unique_ptr<Database> database_;
};

struct BusyWorld : World {
    BusyWorld() {
        mask({.relations = {{1, "Nummer", 'S'}, {2, "Vikt"}}});
        priceFile("A\t5\r\n");
    }
};

TEST(LockedCompany, IsWaitedFor) {
    BusyWorld world;
    Occupier other(world);
    int waits = 0;
    world.port.onEvents = [&] {
        if (++waits == 20) other.letGo();
    };
    const RunSummary summary = world.run();
    EXPECT_TRUE(summary.completed);
    EXPECT_GE(waits, 20) << "the run did not wait";
    EXPECT_EQ(world.rows("Produkt", "Nummer, Vikt"), "A 5\n");
    EXPECT_THAT(world.port.passedOver, IsEmpty());
    EXPECT_THAT(world.port.statuses,
                ::testing::Contains(world.texts().ModulTextMed(text::company::kWaiting, "Ftg1.Mdb")));
}

TEST(LockedCompany, CancelEndsTheWait) {
    BusyWorld world;
    const Occupier other(world);
    int waits = 0;
    world.port.onEvents = [&] {
        if (++waits == 20) world.port.pressCancel();
    };
    const RunSummary summary = world.run();
    EXPECT_TRUE(summary.cancelled);
    EXPECT_FALSE(summary.completed);
    EXPECT_EQ(summary.records, 0);
}

TEST(BrokenCompany, ATableThatIsMissingEndsTheRun) {
    BusyWorld world;
    world.dropTable("Prodaltprodnr");
    world.port.expectBeginning(world.texts().ModulTextMed(text::run::kDatabaseStopped, "").substr(0, 20),
                               world.texts().ModulText(text::run::kStoppedTitle));
    EXPECT_FALSE(world.run().completed);
}

/// Zeroes the leaves of tables that hold a text.
void loseRows(const std::filesystem::path& file, const std::string& text) {
    constexpr std::size_t kPage = 4096;
    std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
    std::string page(kPage, '\0');
    for (std::size_t at = 0; stream.seekg(static_cast<std::streamoff>(at)).read(page.data(), kPage); at += kPage) {
        if (page[0] != '\x0D' || page.find(text) == std::string::npos) continue;
        stream.seekp(static_cast<std::streamoff>(at)) << std::string(kPage, '\0');
    }
}

TEST(BrokenCompany, DamageEndsTheRunAndIsOfferedToBeRepaired) {
    BusyWorld world;
    for (int i = 0; i < 100; ++i) world.add("Produkt", {{"Nummer", "LOST" + std::to_string(i)}});
    world.priceFile("LOST7\t5\r\nLOST8\t5\r\n");
    bool lost = false;
    world.port.onEvents = [&] {
        if (std::exchange(lost, true)) return;
        world.open()->execute("UPDATE Syinställningar SET Produktnummer = '1'");  // what was read is read again
        loseRows(world.company(), "LOST");
    };
    const std::string title = world.texts().ResText(text::shared::kCannotOpenCompany);
    world.port.expectBeginning(world.texts().ModulTextMed(text::run::kDatabaseStopped, "").substr(0, 20),
                               world.texts().ModulText(text::run::kStoppedTitle));
    world.port.expectBeginning(
        title + " Ftg1.Mdb." + world.texts().ModulTextMed(text::company::kAskToRepair, "Ftg1.Mdb"), "Kolmera",
        Answer::Yes);
    world.port.expectBeginning(world.texts().ModulTextMed(text::repair::kRepaired, "FTG1.mdb.damaged-1"), "Kolmera");
    EXPECT_FALSE(world.run().completed);
    EXPECT_THAT(world.port.passedOver, IsEmpty());
}

/// Thousands of records with long texts, into a company that has no room for them.
TEST(FullDisk, KeepsWholeBatches) {
    World world;
    world.mask({.relations = {{1, "Nummer", 'S'}, {2, "Anteckning"}}});
    std::string file;
    for (int line = 0; line < 4000; ++line) file += std::to_string(line) + "\t" + std::string(4000, 'x') + "\r\n";
    world.rawPriceFile(file);
    // So slow that batches reach the disk before it is full.
    world.port.onEvents = [] { std::this_thread::sleep_for(std::chrono::milliseconds(30)); };
    world.port.expectBeginning(world.texts().ModulTextMed(text::run::kDatabaseStopped, "").substr(0, 15),
                               world.texts().ModulText(text::run::kStoppedTitle));
    RunSummary summary;
    {
        const FileSizeLimit limit(2'000'000);
        summary = world.run();
    }
    EXPECT_FALSE(summary.completed);
    EXPECT_LT(summary.records, 4000);
    const std::string numbers = world.rows("Produkt", "Nummer");
    const auto kept = std::ranges::count(numbers, '\n');
    EXPECT_GT(kept, 0);
    EXPECT_LE(kept, summary.records);
    EXPECT_EQ(kept % 25, 0) << kept << " products";
}

}  // namespace
}  // namespace kolmera::test
