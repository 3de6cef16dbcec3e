#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
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
struct FullDiskWorld : World {
    FullDiskWorld() {
        mask({.relations = {{1, "Nummer", 'S'}, {2, "Anteckning"}}});
        std::string file;
        for (int line = 0; line < 4000; ++line) file += std::to_string(line) + "\t" + std::string(4000, 'x') + "\r\n";
        rawPriceFile(file);
        // So slow that batches reach the disk before it is full.
        port.onEvents = [] { std::this_thread::sleep_for(std::chrono::milliseconds(30)); };
    }
    RunSummary runUntilFull(ModuleKey told) {
        port.expectBeginning(texts().ModulTextMed(told, "").substr(0, 15), texts().ModulText(text::run::kStoppedTitle));
        return run();
    }
    void expectWholeBatches(const RunSummary& summary) const {
        EXPECT_FALSE(summary.completed);
        EXPECT_LT(summary.records, 4000);
        const std::string numbers = rows("Produkt", "Nummer");
        const auto kept = std::ranges::count(numbers, '\n');
        EXPECT_GT(kept, 0);
        EXPECT_LE(kept, summary.records);
        EXPECT_EQ(kept % 25, 0) << kept << " products";
    }
};

TEST(FullDisk, AFileThatCannotGrowKeepsWholeBatches) {
    FullDiskWorld world;
    RunSummary summary;
    {
        const FileSizeLimit limit(2'000'000);
        summary = world.runUntilFull(text::run::kDatabaseStopped);
    }
    world.expectWholeBatches(summary);
}

/// Puts the folder on a disk of its own with that much room left, for this process alone. Whether the system lets it.
bool moveToSmallDisk(const std::filesystem::path& folder, std::uintmax_t room) {
    const std::filesystem::path kept = folder.string() + "-kept";
    std::uintmax_t size = room;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file()) size += entry.file_size();
    }
    std::filesystem::copy(folder, kept, std::filesystem::copy_options::recursive);
    if (unshare(CLONE_NEWNS | (geteuid() == 0 ? 0 : CLONE_NEWUSER)) != 0) return false;
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return false;
    if (mount("tmpfs", folder.c_str(), "tmpfs", 0, fmt::format("size={}", size).c_str()) != 0) return false;
    std::filesystem::copy(kept, folder, std::filesystem::copy_options::recursive);
    return true;
}

TEST(FullDisk, ADiskWithoutRoomKeepsWholeBatches) {
    enum { Passed, Failed, NoDisk };
    FullDiskWorld world;
    const pid_t child = fork();
    if (child == 0) {
        if (!moveToSmallDisk(world.data(), 2'000'000)) _exit(NoDisk);
        const RunSummary summary = world.runUntilFull(text::run::kDiskFull);
        EXPECT_LT(std::filesystem::space(world.data()).available, 100'000U) << "the disk was not full";
        std::filesystem::remove(world.data() / "pris.txt");  // a full disk cannot even be opened for reading
        world.expectWholeBatches(summary);
        _exit(testing::Test::HasFailure() ? Failed : Passed);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == NoDisk) GTEST_SKIP() << "this system lets nobody mount a small disk";
    EXPECT_EQ(WEXITSTATUS(status), Passed);
}

}  // namespace
}  // namespace kolmera::test
