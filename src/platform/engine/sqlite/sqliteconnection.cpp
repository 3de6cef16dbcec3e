#include "platform/engine/sqlite/sqliteconnection.h"

#include <fcntl.h>
#include <sqlite3.h>

#include <thread>
#include <utility>

#include "platform/engine/changelistener.h"
#include "platform/engine/sqlite/collation.h"
#include "platform/engine/sqlite/networklocks.h"
#include "platform/engine/sqlite/sqlitestatement.h"
#include "platform/engine/sqlitenames.h"
#include "platform/error.h"
#include "platform/privatefile.h"

namespace kolmera {

namespace {

constexpr auto kLockPause = std::chrono::milliseconds(20);
constexpr auto kLockPatience = std::chrono::seconds(10);

/// Nobody asks SQLite how much memory it uses, and counting it costs a mutex for every allocation. Has to be said once,
/// before the library is used for the first time; later it is refused, which does no harm.
void leaveMemoryUncounted() { static const int result [[maybe_unused]] = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0); }

/// Error numbers of SQLite's primary result codes; what is not listed is kInternal.
constexpr struct {
    int code, number;
} kErrorNumbers[] = {
    {SQLITE_BUSY, errors::kLocked},         {SQLITE_LOCKED, errors::kLocked},
    {SQLITE_FULL, errors::kDiskFull},       {SQLITE_CORRUPT, errors::kDamaged},
    {SQLITE_NOTADB, errors::kNotADatabase}, {SQLITE_CANTOPEN, errors::kFileNotFound},
    {SQLITE_TOOBIG, errors::kTextTooLong},
};

int numberOfConstraint(int extendedCode) {
    const bool unique = extendedCode == SQLITE_CONSTRAINT_UNIQUE || extendedCode == SQLITE_CONSTRAINT_PRIMARYKEY ||
                        extendedCode == SQLITE_CONSTRAINT_ROWID;
    return unique ? errors::kDuplicateKey : errors::kWrongType;
}

/// SQLite has no code of its own for unknown names, only a text.
int numberOfStatementError(std::string_view text) {
    if (text.starts_with("no such table")) return errors::kUnknownTable;
    if (text.starts_with("no such column")) return errors::kUnknownField;
    if (text.find("has no column named") != std::string_view::npos) return errors::kUnknownField;
    return errors::kInternal;
}

/// What stands behind the colon of "UNIQUE constraint failed: Produkt.Nummer" and "no such table: Produkt".
std::string namedThing(int number, std::string_view text) {
    const std::size_t colon = text.rfind(": ");
    const bool names =
        number == errors::kDuplicateKey || number == errors::kUnknownTable || number == errors::kUnknownField;
    return names && colon != std::string_view::npos ? std::string(text.substr(colon + 2)) : std::string();
}

int errorNumber(int extendedCode, std::string_view text) {
    const int code = extendedCode & 0xFF;
    if (code == SQLITE_CONSTRAINT) return numberOfConstraint(extendedCode);
    if (code == SQLITE_ERROR) return numberOfStatementError(text);
    for (const auto& row : kErrorNumbers) {
        if (row.code == code) return row.number;
    }
    return errors::kInternal;
}

/// What a file may make SQLite do through the statements that it holds, or through ours: other files are none of it.
int authorize(void* /*unused*/, int action, const char* /*name*/, const char* second, const char* /*database*/,
              const char* /*trigger*/) {
    switch (action) {
        case SQLITE_ATTACH:
        case SQLITE_DETACH:
        case SQLITE_CREATE_VTABLE:
        case SQLITE_DROP_VTABLE:
            return SQLITE_DENY;
        case SQLITE_FUNCTION:
            return std::string_view(second) == "load_extension" ? SQLITE_DENY : SQLITE_OK;
        default:
            return SQLITE_OK;
    }
}

/// The name of a file as a URI that says that the file cannot change.
std::string immutableUri(const std::filesystem::path& file) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string uri = "file:";
    for (const char c : std::filesystem::absolute(file).string()) {
        const bool plain = c != '?' && c != '#' && c != '%' && static_cast<unsigned char>(c) > 0x20;
        if (plain) {
            uri += c;
        } else {
            uri += '%';
            uri += digits[static_cast<unsigned char>(c) >> 4];
            uri += digits[static_cast<unsigned char>(c) & 0xF];
        }
    }
    return uri + "?immutable=1";
}

bool hasLog(std::filesystem::path file) {
    file += "-wal";
    std::error_code none;
    const auto size = std::filesystem::file_size(file, none);
    return !none && size > 0;
}

}  // namespace

SqliteConnection::SqliteConnection(const std::filesystem::path& file, ConnectionOptions options)
    : options_(std::move(options)) {
    leaveMemoryUncounted();
    try {
        open(file);
    } catch (...) {
        sqlite3_close_v2(handle_);
        throw;
    }
}

SqliteConnection::~SqliteConnection() { close(); }

void SqliteConnection::open(const std::filesystem::path& file) {
    if (options_.onNetwork && !options_.readOnly && !fileLocksWork(std::filesystem::absolute(file).parent_path())) {
        throw PlatformError(errors::kInternal, "the network drive does not lock files: " + file.string());
    }
    // The last to close a file takes its log away, which who may only read cannot; a network drive has none.
    int flags = options_.readOnly && options_.onNetwork ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    if (options_.create) flags |= SQLITE_OPEN_CREATE;
    if (options_.alone) Descriptor(file, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, PrivateFile::kForOwner);
    connect(file.string(), flags);
    if (!options_.readOnly) return;
    if (!hasLog(file) && !canRead()) connect(immutableUri(file), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
    run("PRAGMA query_only=1");
}

void SqliteConnection::connect(const std::string& name, int flags) {
    sqlite3_close_v2(std::exchange(handle_, nullptr));
    const int code =
        sqlite3_open_v2(name.c_str(), &handle_, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
    if (code != SQLITE_OK) raise(code);
    trustNothing();
    if (sqlite3_busy_handler(handle_, waitForLock, this) != SQLITE_OK) raise(sqlite3_errcode(handle_));
    if (registerSwedishCollation(handle_) != SQLITE_OK) raise(sqlite3_errcode(handle_));
    // The log needs memory that all sessions share, which no network file system gives. Said before the first reading,
    // this makes SQLite do without.
    if (options_.onNetwork || options_.alone) run("PRAGMA locking_mode=EXCLUSIVE");
    if (options_.alone) run("PRAGMA journal_mode=MEMORY");
}

/// A file may come from anybody: nothing in it may reach beyond the file, nor change what SQLite keeps of it.
void SqliteConnection::trustNothing() {
    // An unknown column between double quotes is an error, not a text.
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    // A file that is being made has no journal, which would be refused.
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, options_.create ? 0 : 1, nullptr);
    if (sqlite3_set_authorizer(handle_, authorize, nullptr) != SQLITE_OK) raise(sqlite3_errcode(handle_));
}

/// A file that was closed with a log cannot be read by SQLite where no log can be made: in a folder that cannot be
/// written, and on a network drive without writing. When the log is empty the file itself can.
bool SqliteConnection::canRead() {
    const int code = sqlite3_exec(handle_, "PRAGMA schema_version", nullptr, nullptr, nullptr) & 0xFF;
    return code != SQLITE_CANTOPEN && code != SQLITE_IOERR && code != SQLITE_READONLY;
}

void SqliteConnection::close() noexcept {
    dataVersionQuery_ = SqliteStatement();
    sqlite3_busy_handler(handle_, nullptr, nullptr);  // closing waits for nobody
    if (transactionOpen_) sqlite3_exec(handle_, "ROLLBACK", nullptr, nullptr, nullptr);
    if (!options_.readOnly) {
        sqlite3_wal_checkpoint_v2(handle_, nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
    }
    sqlite3_close_v2(handle_);
}

void SqliteConnection::prepareForWork() {
    run("PRAGMA cache_size=-65536");
    run("PRAGMA temp_store=MEMORY");
    if (options_.alone) {
        workAlone();
    } else if (options_.onNetwork) {
        shareOnNetwork();
    } else if (!options_.readOnly) {
        useWriteAheadLog();
    }
    if (options_.exclusive && !options_.readOnly) takeExclusively();
}

void SqliteConnection::prepareForRecord() {
    run("PRAGMA cache_size=-2048");
    run("PRAGMA temp_store=MEMORY");
    if (options_.onNetwork) {
        shareOnNetwork();
    } else {
        run("PRAGMA journal_mode=WAL");
        run("PRAGMA wal_autocheckpoint=4000");
    }
    run("PRAGMA synchronous=NORMAL");
}

void SqliteConnection::prepareForMaking() {
    run("PRAGMA journal_mode=OFF");
    run("PRAGMA synchronous=OFF");
    run("PRAGMA cache_size=-65536");
    begin();
    run("PRAGMA application_id = " + std::to_string(kApplicationId));
    run("PRAGMA user_version = " + std::to_string(kUserVersion));
}

void SqliteConnection::takeExclusively() {
    run("PRAGMA locking_mode=EXCLUSIVE");
    run("BEGIN EXCLUSIVE");
    run("COMMIT");
}

/// Gives up the log that the file may have come with, and the lock that went with it.
void SqliteConnection::shareOnNetwork() {
    if (!options_.readOnly && text("PRAGMA journal_mode=DELETE") != "delete") {
        throw PlatformError(errors::kLocked,
                            "the database is open elsewhere with a log that a network drive cannot share");
    }
    run("PRAGMA synchronous=FULL");
    run("PRAGMA locking_mode=NORMAL");
    number("PRAGMA schema_version");
}

/// A copy of a file with a log opens with a log, which needs the file's name: it is given up first.
void SqliteConnection::workAlone() {
    run("PRAGMA synchronous=OFF");
    const std::filesystem::path name = sqlite3_db_filename(handle_, "main");
    if (text("PRAGMA journal_mode=MEMORY") != "memory") throw PlatformError(errors::kLocked, "the copy has a log");
    std::error_code stays;
    std::filesystem::remove(name, stays);
}

void SqliteConnection::useWriteAheadLog() {
    run("PRAGMA journal_mode=WAL");
    // Every commit syncs the log: a checkpoint, which would do it too, may have to wait for other programs' readers.
    run("PRAGMA synchronous=FULL");
    run("PRAGMA wal_autocheckpoint=16000");
}

void SqliteConnection::run(const std::string& statement) { SqliteStatement(*this, statement).run(); }

std::int64_t SqliteConnection::number(const std::string& statement) {
    SqliteStatement query(*this, statement);
    return query.step() ? query.integer(0) : 0;
}

std::string SqliteConnection::text(const std::string& statement) {
    SqliteStatement query(*this, statement);
    return query.step() ? std::string(query.text(0)) : std::string();
}

void SqliteConnection::begin() {
    run("BEGIN IMMEDIATE");
    transactionOpen_ = true;
    lookForOthers();
}

void SqliteConnection::commit() {
    if (listener_ != nullptr) listener_->kept();
    run("COMMIT");
    transactionOpen_ = false;
    if (listener_ != nullptr) listener_->stands();
}

void SqliteConnection::rollback() {
    transactionOpen_ = false;
    startEpoch();
    run("ROLLBACK");
    if (listener_ != nullptr) listener_->undone();
}

void SqliteConnection::lookForOthers() {
    if (!dataVersionQuery_.prepared()) dataVersionQuery_ = SqliteStatement(*this, "PRAGMA data_version");
    const StatementUse use(dataVersionQuery_);
    const std::int64_t version = dataVersionQuery_.step() ? dataVersionQuery_.integer(0) : 0;
    if (version != dataVersion_) startEpoch();
    dataVersion_ = version;
}

void SqliteConnection::raise(int code) {
    const std::string text = handle_ != nullptr ? sqlite3_errmsg(handle_) : sqlite3_errstr(code);
    const int number = errorNumber(code, text);
    bool endsRun = number == errors::kLocked || number == errors::kDamaged;
    if (transactionOpen_ && sqlite3_get_autocommit(handle_) != 0) {
        transactionOpen_ = false;
        startEpoch();
        endsRun = true;
        if (listener_ != nullptr) listener_->undone();
    }
    throw PlatformError(number, text, endsRun).about(namedThing(number, text));
}

int SqliteConnection::waitForLock(void* self, int calls) {
    return static_cast<SqliteConnection*>(self)->keepWaiting(calls) ? 1 : 0;
}

bool SqliteConnection::keepWaiting(int calls) {
    if (calls == 0) waitBegan_ = std::chrono::steady_clock::now();
    if (options_.wait) {
        if (!options_.wait()) return false;
    } else if (std::chrono::steady_clock::now() - waitBegan_ > kLockPatience) {
        return false;
    }
    std::this_thread::sleep_for(kLockPause);
    return true;
}

}  // namespace kolmera
