#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/changelistener.h"
#include "platform/engine/recordset.h"
#include "platform/engine/schema.h"
#include "platform/locale.h"
#include "platform/paths.h"

namespace kolmera {

/// How a window of records has ended.
enum class WindowEnd {
    Kept,   ///< its records are committed
    Again,  ///< nothing of it has happened; done once more from its first record, it will be told more
    Alone,  ///< it has been rolled back: its records have to be done without a window
};

/// Ends the work in a window at once, for `endWindow` to say how it goes on. No PlatformError: it is nobody's to pass
/// over.
struct WindowBroken {};

/// An open database of one of the two kinds: a file (SQLite) or a database server (ODBC). Recordsets must be gone
/// before their database. Errors are PlatformError.
class Database {
  public:
    virtual ~Database() = default;

    /// The definition of a table, name without regard to letter case; throws kUnknownTable.
    [[nodiscard]] virtual const TableDef& table(std::string_view name) = 0;
    [[nodiscard]] virtual std::vector<std::string> tableNames() = 0;

    /// Opens a table (by name) or a SELECT statement. A table-type recordset takes a table name only.
    virtual std::unique_ptr<Recordset> open(std::string_view source, RecordsetType type, std::int32_t options = 0) = 0;

    /// Opens a SELECT statement on one table whose only values are "?", as a dynaset: the same text again costs no
    /// second look at it. Only where there are windows (`hasWindows`).
    virtual std::unique_ptr<Recordset> openWith(std::string_view select, std::span<const Value> /*parameters*/) {
        return open(select, RecordsetType::Dynaset);
    }

    /// Runs one action statement, with "?" parameters; returns the number of rows it touched.
    virtual std::int64_t execute(std::string_view statement, std::span<const Value> parameters = {},
                                 std::int32_t options = 0) = 0;

    /// Adds rows as they are, with their IDs, for copying a company: `columns` are ordinals of the table and every row
    /// has a value for each, in that order. IDs that the database gives afterwards are new ones. Inside a transaction
    /// an error leaves those of the rows that came before it.
    virtual void insertRows(std::string_view table, std::span<const int> columns,
                            std::span<const std::vector<Value>> rows) = 0;

    /// Tells a listener of every row that is written through this object from now on; nullptr ends it. The listener has
    /// to stay until then, or until the database is closed. Not inside a transaction of the program.
    virtual void listen(ChangeListener* listener) = 0;

    // Transactions. They do not nest; begin inside one is kInternal.
    virtual void begin() = 0;
    /// Begins a transaction that takes in all that follow by `commitJoined` and `begin`: until `commit` nobody else
    /// sees any of it or can write, and `rollback` takes back all of it. False where there is no such thing (a server):
    /// then a transaction like any other has begun.
    virtual bool beginWhole() {
        begin();
        return false;
    }
    /// Ends the transaction; everything is on the disk when it returns.
    virtual void commit() = 0;
    /// Ends the transaction, and lets the physical commit wait until 250 ms have passed since the last one, or until
    /// `commit`, `settle` or closing. A batch that follows cannot be rolled back alone, so `rollback` after it fails.
    virtual void commitJoined() = 0;
    virtual void rollback() = 0;
    [[nodiscard]] virtual bool inTransaction() const = 0;
    /// Commits physically what `commitJoined` left waiting. Call before the program waits, asks, reports or ends.
    virtual void settle() = 0;

    /// Begins a transaction for the work of many records, which a server is asked little for: what they look up is
    /// gathered and asked together, and what they write waits. So the work has to be fit for being done several times,
    /// each time from the same state: a first time nearly nothing is found, and what is written then is forgotten. Any
    /// call may throw WindowBroken. Only where there are windows; a file has none.
    virtual void beginWindow() { begin(); }
    [[nodiscard]] virtual bool hasWindows() const { return false; }
    /// Call when the work is done, or was broken off (not `complete`). `again` allows another time; then the window is
    /// open still. Otherwise no transaction is open any more.
    virtual WindowEnd endWindow(bool /*complete*/, bool /*again*/) { return WindowEnd::Alone; }

    /// Changes whenever somebody else may have changed the database, and with every write to `table` through
    /// this object: what was remembered under another stamp must be read anew.
    [[nodiscard]] virtual std::uint64_t stamp(std::string_view table) = 0;
};

/// What opening a database needs from its surroundings.
struct OpenOptions {
    Locale locale = Locale();
    std::string password = {};  ///< UTF-8; compared with the hash in the file
    bool readOnly = false;
    bool exclusive = false;
    /// Called again and again while another session holds a lock; lets events run and returns false to give up (then
    /// the statement ends with kLocked, ending the run). Without it a lock is waited for 10 seconds.
    std::function<bool()> wait = {};
    /// Tells the folders that lie on network file systems; such files are worked on with another kind of journal.
    std::function<bool(const std::filesystem::path& folder)> onNetwork = onNetworkFileSystem;
    /// The tables that a company is known to have, for a damaged file that does not tell any more.
    std::function<std::vector<TableDef>()> knownTables = {};
};

/// Opens a company file. Throws kFileNotFound, kNotADatabase, kDamaged, kWrongPassword, kLocked.
std::unique_ptr<Database> openFileDatabase(const std::filesystem::path& file, const OpenOptions& options);

/// Makes a new, empty database file with these tables; an existing file is an error. `password` may be empty.
void createFileDatabase(const std::filesystem::path& file, std::span<const TableDef> tables,
                        const std::string& password = {});

/// What repairing brought over.
struct RepairReport {
    std::filesystem::path original;                          ///< where the damaged file was kept
    std::vector<std::pair<std::string, std::int64_t>> rows;  ///< per table, rows saved
    std::int64_t dropped = 0;                                ///< readable rows left out: their key was there already
    std::int64_t shortened = 0;                              ///< rows that have lost the end of a text
    std::string firstShortened;                              ///< table and ID of the first of them
    std::int64_t strange = 0;                                ///< rows that fit none of the tables
    std::vector<std::string> leftOut;  ///< tables, views and triggers of other programs that could not be kept
    bool passwordLost = false;         ///< the file had one, and takes any now

    /// Whether something that could be read came over changed, or not at all.
    [[nodiscard]] bool incomplete() const {
        return dropped > 0 || shortened > 0 || strange > 0 || !leftOut.empty() || passwordLost;
    }
};

/// Whether all pages of a company file, and all its indexes, are what they should be. Throws what opening throws, but
/// false for damage; no password is asked for.
bool isSound(const std::filesystem::path& file, const OpenOptions& options);

/// Rebuilds a damaged file: every readable row of every table goes into a new file, then the indexes are made, and
/// the new file takes the old one's place in one step; the damaged original is kept beside it. What the file says of
/// its tables is checked and written anew, never carried out. The password goes along unasked. Throws PlatformError,
/// and the old file then stays where it was.
RepairReport repairFileDatabase(const std::filesystem::path& file, const OpenOptions& options);

}  // namespace kolmera
