#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "platform/engine/sqlite/sqlitestatement.h"

struct sqlite3;

namespace kolmera {

class ChangeListener;

/// How a file is opened.
struct ConnectionOptions {
    bool create = false;
    bool readOnly = false;
    bool exclusive = false;
    bool alone = false;               ///< a new file that nobody else ever sees: it loses its name before the work
    bool onNetwork = false;           ///< a rollback journal instead of the write-ahead log, which needs shared memory
    std::function<bool()> wait = {};  ///< see OpenOptions::wait
};

/// One connection to a SQLite file, with the collation SVENSKA. It knows the physical transaction: SQLite may roll one
/// back by itself, and an error that did so ends the run.
class SqliteConnection {
  public:
    SqliteConnection(const std::filesystem::path& file, ConnectionOptions options);
    SqliteConnection(const SqliteConnection&) = delete;
    SqliteConnection& operator=(const SqliteConnection&) = delete;
    /// Checkpoints the log with sync, as far as no other session is in the way. An open transaction is rolled back.
    ~SqliteConnection();

    [[nodiscard]] sqlite3* handle() const { return handle_; }
    [[nodiscard]] bool onNetwork() const { return options_.onNetwork; }

    /// Chooses journal, synchronisation and cache. To be called when the file is known to be a company's.
    void prepareForWork();
    /// Chooses them for a file that one program fills and others read: whole whatever happens, but the power going may
    /// cost the last commits.
    void prepareForRecord();
    /// For a new file that nobody sees before it is finished and synced: opens the transaction that makes it, without
    /// a journal, and marks it as a company file.
    void prepareForMaking();
    /// Runs a statement text of ours (no parameters, rows are passed over).
    void run(const std::string& statement);
    /// The first column of the first row as a whole number, 0 without a row.
    std::int64_t number(const std::string& statement);

    // The physical transaction.
    void begin();
    void commit();
    void rollback();
    [[nodiscard]] bool transactionOpen() const { return transactionOpen_; }

    /// Who is told of what is written; the connection itself tells of commits and of rolling back.
    void listen(ChangeListener* listener) { listener_ = listener; }
    [[nodiscard]] ChangeListener* listener() const { return listener_; }

    /// Counts what changes rows behind the back of those who hold copies: other sessions' commits (as far as noticed),
    /// rolling back, and statements from above.
    [[nodiscard]] std::uint64_t epoch() const { return epoch_; }
    void startEpoch() { ++epoch_; }
    /// Starts an epoch when another session has committed something. Inside a transaction nobody else can.
    void noticeOthers() {
        if (!transactionOpen_) lookForOthers();
    }

    /// Throws the PlatformError of a result code that is not OK, with SQLite's text.
    [[noreturn]] void raise(int code);

  private:
    void open(const std::filesystem::path& file);
    void close() noexcept;
    void connect(const std::string& name, int flags);
    void trustNothing();
    bool canRead();
    void shareOnNetwork();
    void workAlone();
    void useWriteAheadLog();
    void takeExclusively();
    std::string text(const std::string& statement);
    void lookForOthers();
    static int waitForLock(void* self, int calls);
    bool keepWaiting(int calls);

    ConnectionOptions options_;
    sqlite3* handle_ = nullptr;
    bool transactionOpen_ = false;
    ChangeListener* listener_ = nullptr;
    std::uint64_t epoch_ = 0;
    std::int64_t dataVersion_ = 0;  ///< SQLite's number for what other sessions have committed
    SqliteStatement dataVersionQuery_;
    std::chrono::steady_clock::time_point waitBegan_;
};

}  // namespace kolmera
