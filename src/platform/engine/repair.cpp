#include <fcntl.h>

#include <system_error>

#include "platform/descriptor.h"
#include "platform/engine/database.h"
#include "platform/engine/pagefile.h"
#include "platform/engine/password.h"
#include "platform/engine/rebuilding.h"
#include "platform/engine/sqliteconnection.h"
#include "platform/error.h"

namespace kolmera {

namespace {

namespace fs = std::filesystem;

fs::path withSuffix(fs::path file, const std::string& suffix) { return file += suffix; }

/// Lets SQLite bring into the file what was committed to the log or left half done in a journal, as far as it still
/// can, and makes sure that nobody else works on the file.
void mergeLog(const fs::path& file, const OpenOptions& options) {
    try {
        SqliteConnection connection(file, {.exclusive = true, .wait = options.wait});
        connection.run("PRAGMA locking_mode=EXCLUSIVE");
        connection.run("BEGIN EXCLUSIVE");
        connection.run("COMMIT");
    } catch (const PlatformError& error) {
        if (error.number() == errors::kLocked) throw;
        // What SQLite cannot read is read page by page.
    }
}

RepairReport rebuild(const fs::path& damaged, const fs::path& newFile, const std::string& password) {
    const PageFile pages(damaged);
    Rebuilding rebuilding(newFile, pages);
    rebuilding.takeRows();
    checkPassword(rebuilding.connection(), password);
    rebuilding.makeIndexes();
    rebuilding.finish();
    return {{}, rebuilding.rows(), rebuilding.dropped()};
}

/// A second name for the damaged file, so that the new one can take its place in one step.
fs::path keepDamaged(const fs::path& file) {
    fs::path kept;
    for (int number = 1; kept.empty() || fs::exists(kept); ++number) {
        kept = withSuffix(file, ".damaged-" + std::to_string(number));
    }
    std::error_code noLinks;
    fs::create_hard_link(file, kept, noLinks);
    if (noLinks) fs::copy_file(file, kept);
    return kept;
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
    const fs::path newFile = withSuffix(file, ".repaired");
    try {
        fs::remove(newFile);
        mergeLog(file, options);
        RepairReport report = rebuild(file, newFile, options.password);
        report.original = replace(file, newFile);
        return report;
    } catch (const fs::filesystem_error& error) {
        std::error_code none;
        fs::remove(newFile, none);
        throw PlatformError(errors::kInternal, error.what());
    } catch (...) {
        std::error_code none;
        fs::remove(newFile, none);
        throw;
    }
}

}  // namespace kolmera
