#pragma once

#include <cstdint>
#include <span>

#include "platform/engine/schema.h"
#include "platform/engine/value.h"

namespace kolmera {

/// A column of a row that was written. An added row has no values before, a removed one none after; of both all columns
/// are told that are not empty (Null).
struct ChangedCell {
    int column = 0;                 ///< ordinal in the table
    const Value* before = nullptr;  ///< valid during the call only
    const Value* after = nullptr;
};

/// A row that was written, while its table is at hand.
struct ChangedRow {
    const TableDef& table;
    std::int64_t id = 0;
    std::span<const ChangedCell> cells;
    /// A value of the row that did not change, as far as it was read: nullptr when it was not. By ordinal.
    std::span<const Value* const> known;
    std::int64_t place = 0;  ///< what `place` said when the row was edited
};

/// Hears what a session writes into its database: by recordsets, by statements (`DELETE FROM ... WHERE`, and without a
/// condition) and by copied rows. What others write is not heard. The calls come in the order of the writing; a row
/// that two edits in one transaction change in one statement comes once. The column that the engine counts (ID) is
/// never among the cells.
class ChangeListener {
  public:
    virtual ~ChangeListener() = default;
    /// Where the program is. It comes back with the row, which may be written later than it was edited.
    virtual std::int64_t place() { return 0; }
    virtual void added(const ChangedRow& row) = 0;
    virtual void changed(const ChangedRow& row) = 0;
    virtual void removed(const ChangedRow& row) = 0;
    /// What was heard since the last `kept` is going to be committed physically now: what has to be on the disk before
    /// the change itself is, is to be put there now.
    virtual void kept() = 0;
    /// That commit has succeeded.
    virtual void stands() {}
    /// What was heard since the last `stands` has been rolled back.
    virtual void undone() = 0;
    /// A statement begins that may write many rows; when it fails, what was heard since then has not happened.
    virtual void statementBegins() {}
    virtual void statementFailed() {}
};

}  // namespace kolmera
