#include <fstream>
#include <map>

#include "engine/enginetest.h"

namespace kolmera::test {
namespace {

/// What the disk surely holds: each file as it was when it was synced last.
using SyncedFiles = std::map<std::filesystem::path, std::string>;
SyncedFiles* onDisk = nullptr;

void noteSync(int descriptor) {
    const std::filesystem::path file = std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor));
    if (!std::filesystem::is_regular_file(file)) return;
    std::ifstream bytes(file, std::ios::binary);
    (*onDisk)[file] = {std::istreambuf_iterator<char>(bytes), {}};
}

}  // namespace
}  // namespace kolmera::test

// SQLite finds these before the system's.
extern "C" int fdatasync(int descriptor) {
    if (kolmera::test::onDisk != nullptr) kolmera::test::noteSync(descriptor);
    return 0;
}
extern "C" int fsync(int descriptor) { return fdatasync(descriptor); }

namespace kolmera::test {
namespace {

class PowerCut : public EngineTest {
  protected:
    PowerCut() { onDisk = &synced_; }
    ~PowerCut() override { onDisk = nullptr; }

    /// The articles that are left when the power goes now.
    [[nodiscard]] std::string left() {
        const TemporaryFolder after;
        for (const char* name : {"FTG1.mdb", "FTG1.mdb-wal"}) after.write(name, synced_[folder / name]);
        return select(*openFileDatabase(after / "FTG1.mdb", OpenOptions()), "SELECT Nummer FROM Artikel");
    }

  private:
    SyncedFiles synced_;
};

TEST_F(PowerCut, WhatIsCommittedIsOnTheDisk) {
    const auto database = open();
    database->begin();
    add(*database, "1");
    database->commit();
    EXPECT_EQ(left(), "'1'") << "a commit waits for a checkpoint";
    add(*database, "2");
    EXPECT_EQ(left(), "'1'; '2'") << "a write without a transaction";
    database->begin();
    add(*database, "3");
    database->commitJoined();
    database->settle();
    EXPECT_EQ(left(), "'1'; '2'; '3'") << "joined commits before the program waits";
}

}  // namespace
}  // namespace kolmera::test
