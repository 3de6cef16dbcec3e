#include <fcntl.h>

#include <cerrno>
#include <optional>
#include <system_error>

#include "platform/descriptor.h"
#include "platform/engine/privatedatabase.h"
#include "platform/engine/sqlite/openchecks.h"
#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/error.h"

namespace kolmera {

namespace fs = std::filesystem;

namespace {

/// Keeps others out of a company and brings its log into the file, so that none is left that could be taken for the new
/// file's.
void lock(SqliteConnection& company, const fs::path& file, const OpenOptions& options) {
    checkHeader(company, file, options.knownTables);
    company.run("PRAGMA locking_mode=EXCLUSIVE");
    company.run("BEGIN EXCLUSIVE");
    company.run("COMMIT");
    company.run("PRAGMA journal_mode=DELETE");
}

}  // namespace

void placeFileDatabase(const fs::path& finished, const fs::path& company, bool replace, const OpenOptions& options) {
    const Descriptor file(finished, O_RDWR | O_CLOEXEC);
    std::error_code unreadable;
    std::optional<SqliteConnection> replaced;
    if (fs::exists(fs::symlink_status(company, unreadable))) {
        if (!replace) throw PlatformError(errors::kInternal, "the file exists already").ofSystem(EEXIST);
        if (fs::is_symlink(fs::symlink_status(company, unreadable))) {
            throw PlatformError(errors::kInvalidPath, "a link to another file").about(company.string());
        }
        file.copyRights(Descriptor(company, O_RDONLY | O_CLOEXEC));  // closed before the lock, which would go with it
        replaced.emplace(company, ConnectionOptions{.exclusive = true, .wait = options.wait});
        lock(*replaced, company, options);
    }
    moveOver(file, finished, company);
}

}  // namespace kolmera
