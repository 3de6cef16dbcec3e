#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "history/netrows.h"
#include "history/recordreader.h"
#include "history/rowchange.h"
#include "platform/engine/database.h"

namespace kolmera {

/// Why something that a run wrote stays.
enum class Stays {
    Changed,   ///< the value is no longer the one that the run left; a removed row's ID has another row now
    Removed,   ///< the row that the run changed is gone
    Named,     ///< another row, which stays, names the row by the number that the run gave it
    KeyTaken,  ///< another row has the number that this one had
    Refused,   ///< the database refuses the change
};

struct KeptCell {
    int column = 0;
    Value before, left, now;  ///< before the run, left by it, at present
};

/// A row that stays, or some columns of it.
struct KeptRow {
    Stays why{};
    ChangeKind kind{};  ///< what the run did
    std::string table;
    std::int64_t id = 0;
    std::int64_t record = 0;
    std::string label;
    std::string by;  ///< Named, KeyTaken: "Levprislista, ID 7"; Refused: the engine's words
    std::vector<KeptCell> cells;
};

/// What taking back does, or has done, in rows. Of the rows that stay some go back in other columns.
struct UndoCounts {
    std::int64_t rows = 0;         ///< that the run changed in all
    std::int64_t changedBack = 0;  ///< have their old values in one column at least
    std::int64_t removed = 0;      ///< that the run had added
    std::int64_t broughtBack = 0;  ///< that the run had removed
    std::int64_t asBefore = 0;     ///< were as before the run already
    std::int64_t kept = 0;         ///< stay, in one column at least
};

/// Takes a run back: every row gets what it had before it.
///
/// - A changed row is looked at column by column: a column that has the value that the run left gets the old one, any
///   other stays and is listed. A column that has the old value already is in order.
/// - An added row goes when all its columns are as the run left them and no row that stays has come to name it; else it
///   stays whole. Rows that the run added to it (alternative numbers, supplier prices, documents) go before it.
/// - A removed row comes back with its ID, unless a row with that ID or a unique number of it is there now.
/// - Where an emptied table gave a removed row's ID to a new one, the new one goes or stays whole as an added row does,
///   and the old one comes back only if it goes.
/// - To name is to have a row's number (or, a new row's, its ID in tables of other programs). Who names a number that
///   another row gets back, or named it before the run already, keeps nothing; nor does a row from before the run in a
///   column that the run did not write, because nothing tells since when it names what it does.
/// - Counters of IDs are not turned back.
///
/// First `plan`, which only reads and lists what would stay, then `carryOut`, which looks at every row once more as it
/// writes it, in batches as a run's. Both may be cancelled. Whatever stopped it, a new object for the same run goes on
/// where it ended, because what is in order is left alone. Memory does not grow with the run. Throws PlatformError;
/// whole batches are kept then.
class RunUndo {
  public:
    /// Told how much of the work is done; false cancels.
    using GoOn = std::function<bool(std::int64_t done, std::int64_t of)>;

    RunUndo(Database& database, const NetRows::Source& changes, LastIds lastIds = {});
    RunUndo(const RunUndo&) = delete;
    RunUndo& operator=(const RunUndo&) = delete;
    ~RunUndo();

    /// False when it was cancelled.
    bool plan(const GoOn& goOn);
    bool carryOut(const GoOn& goOn);

    [[nodiscard]] UndoCounts counts() const;
    /// What stays, by table and ID; false from `take` ends it.
    void forEachKept(const std::function<bool(const KeptRow&)>& take) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kolmera
