#include "platform/engine/privatedatabase.h"

#include <sqlite3.h>

#include <system_error>

#include "platform/engine/sqlite/companylayout.h"
#include "platform/engine/sqlite/filedatabase.h"
#include "platform/engine/sqlite/sqliteschema.h"
#include "platform/engine/sqlite/sqlitestatement.h"
#include "platform/error.h"

namespace kolmera {
namespace {

/// What a connection reads stays as it is while this object lives.
class ReadSnapshot {
  public:
    explicit ReadSnapshot(SqliteConnection& connection) : connection_(connection) {
        connection_.run("BEGIN");
        connection_.number("SELECT count(*) FROM sqlite_master");
    }
    ReadSnapshot(const ReadSnapshot&) = delete;
    ReadSnapshot& operator=(const ReadSnapshot&) = delete;
    ~ReadSnapshot() { sqlite3_exec(connection_.handle(), "COMMIT", nullptr, nullptr, nullptr); }

  private:
    SqliteConnection& connection_;
};

/// Copies all pages. A log lets others write while it is read. Without one they would wait, so the lock is given back
/// after each portion; what they write then begins the copy again, until that has happened too often.
class PageCopy {
  public:
    PageCopy(SqliteConnection& from, SqliteConnection& to) : from_(from), to_(to) {
        if (!from.onNetwork()) snapshot_.emplace(from);
        backup_ = sqlite3_backup_init(to.handle(), "main", from.handle(), "main");
        if (backup_ == nullptr) to.raise(sqlite3_errcode(to.handle()));
    }
    PageCopy(const PageCopy&) = delete;
    PageCopy& operator=(const PageCopy&) = delete;
    ~PageCopy() { sqlite3_backup_finish(backup_); }

    /// False when `goOn` has ended it.
    bool run(const std::function<bool()>& goOn) {
        constexpr int kPortion = 2048;
        for (;;) {
            if (!goOn()) return false;
            const int before = sqlite3_backup_remaining(backup_);
            const int code = sqlite3_backup_step(backup_, kPortion);
            if (code == SQLITE_DONE) return true;
            if (code != SQLITE_OK) to_.raise(code);
            if (before > 0 && sqlite3_backup_remaining(backup_) >= before) noteRestart();
        }
    }

  private:
    void noteRestart() {
        constexpr int kMostRestarts = 3;
        if (++restarts_ == kMostRestarts && !snapshot_) snapshot_.emplace(from_);
    }

    SqliteConnection& from_;
    SqliteConnection& to_;
    std::optional<ReadSnapshot> snapshot_;
    sqlite3_backup* backup_ = nullptr;
    int restarts_ = 0;
};

}  // namespace

std::unique_ptr<Database> FileDatabase::privateCopy(const std::filesystem::path& copy,
                                                    const std::function<bool()>& goOn) {
    bool whole = false;
    const auto fill = [&](SqliteConnection& to) { whole = PageCopy(session_.connection, to).run(goOn); };
    auto made = std::make_unique<FileDatabase>(copy, session_.locale, fill);
    return whole ? std::move(made) : nullptr;
}

std::unique_ptr<Database> openPrivateCopy(const std::filesystem::path& file, const OpenOptions& options,
                                          const std::filesystem::path& copy, const std::function<bool()>& goOn) {
    OpenOptions reading = options;
    reading.readOnly = true;
    requireFile(file);
    return FileDatabase(file, reading).privateCopy(copy, goOn);
}

namespace {

/// The file keeps in mind which IDs it has given, as servers do.
void makeTable(SqliteConnection& connection, const PrivateTable& table) {
    constexpr std::string_view kKey = "PRIMARY KEY";
    std::string statement = createTableStatement(table.definition);
    if (const auto key = statement.find(kKey); key != std::string::npos)
        statement.insert(key + kKey.size(), " AUTOINCREMENT");
    connection.run(statement);
    makeIndexes(connection, table.definition);
    SqliteStatement given(connection, "INSERT INTO sqlite_sequence (name, seq) VALUES (?1, ?2)");
    given.bind(1, std::string_view(table.definition.name));
    given.bind(2, table.lastId);
    given.run();
}

}  // namespace

std::unique_ptr<Database> makePrivateDatabase(const std::filesystem::path& file, std::span<const PrivateTable> tables,
                                              const Locale& locale) {
    return std::make_unique<FileDatabase>(file, locale, [&](SqliteConnection& connection) {
        connection.prepareForMaking();
        for (const PrivateTable& table : tables) makeTable(connection, table);
        connection.commit();
    });
}

}  // namespace kolmera
