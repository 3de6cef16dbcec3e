#include <fcntl.h>

#include <system_error>

#include "platform/descriptor.h"
#include "platform/engine/database.h"
#include "platform/engine/pages/pagefile.h"
#include "platform/engine/repair/rebuilding.h"
#include "platform/engine/sqlite/openchecks.h"
#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/error.h"
#include "platform/privatefile.h"

namespace kolmera {

namespace {

namespace fs = std::filesystem;

fs::path withSuffix(fs::path file, const std::string& suffix) { return file += suffix; }

/// Lets SQLite bring into the file what was committed to the log or left half done in a journal, as far as it still
/// can, and keeps others out as long as it lives. What SQLite cannot read is read page by page.
std::unique_ptr<SqliteConnection> mergeLog(const fs::path& file, const OpenOptions& options) {
    try {
        auto connection =
            std::make_unique<SqliteConnection>(file, ConnectionOptions{.exclusive = true, .wait = options.wait});
        connection->run("PRAGMA locking_mode=EXCLUSIVE");
        connection->run("BEGIN EXCLUSIVE");
        connection->run("COMMIT");
        connection->run("PRAGMA wal_checkpoint(TRUNCATE)");
        return connection;
    } catch (const PlatformError& error) {
        if (error.number() == errors::kLocked) throw;
        return nullptr;
    }
}

RepairReport rebuild(const fs::path& damaged, const fs::path& newFile, const OpenOptions& options) {
    const auto known = options.knownTables ? options.knownTables() : std::vector<TableDef>();
    // The lock goes with the first of our descriptors of the file that is closed: the pages must stay open longer.
    std::unique_ptr<SqliteConnection> lock = mergeLog(damaged, options);
    const PageFile pages(damaged);
    RepairReport report = Rebuilding(newFile, pages, known).bringOver();
    lock.reset();
    return report;
}

/// A second name for the damaged file, so that the new one can take its place in one step.
fs::path keepDamaged(const fs::path& file) {
    for (int number = 1;; ++number) {
        fs::path kept = withSuffix(file, ".damaged-" + std::to_string(number));
        std::error_code noLink;
        fs::create_hard_link(file, kept, noLink);
        if (noLink == std::errc::file_exists) continue;
        if (noLink) fs::copy_file(file, kept);
        return kept;
    }
}

/// A log or journal that SQLite could not merge belongs to the damaged file. It must not be there when the new file is
/// opened: SQLite would write its pages over the new ones.
void moveLogAside(const fs::path& file, const fs::path& kept) {
    for (const char* suffix : {"-wal", "-shm", "-journal"}) {
        if (fs::exists(withSuffix(file, suffix))) fs::rename(withSuffix(file, suffix), withSuffix(kept, suffix));
    }
}

fs::path replace(const fs::path& file, const fs::path& newFile) {
    const Descriptor finished(newFile, O_RDWR | O_CLOEXEC);
    finished.copyRights(Descriptor(file, O_RDONLY | O_CLOEXEC));
    fs::path kept = keepDamaged(file);
    moveLogAside(file, kept);
    moveOver(finished, newFile, file);
    return kept;
}

}  // namespace

RepairReport repairFileDatabase(const fs::path& file, const OpenOptions& options) {
    if (!fs::exists(file)) throw PlatformError(errors::kFileNotFound, "the file does not exist").about(file.string());
    const PrivateFile newFile(file, ".repaired");
    try {
        RepairReport report = rebuild(file, newFile.path(), options);
        report.original = replace(file, newFile.path());
        return report;
    } catch (const fs::filesystem_error& error) {
        throw PlatformError(errors::kInternal, error.what());
    }
}

bool isSound(const fs::path& file, const OpenOptions& options) {
    try {
        SqliteConnection connection(file, {.readOnly = true, .wait = options.wait});
        checkHeader(connection, file, options.knownTables);
        return findsNoDamage(connection, "integrity_check");
    } catch (const PlatformError& error) {
        if (error.number() == errors::kDamaged) return false;
        throw;
    }
}

}  // namespace kolmera
