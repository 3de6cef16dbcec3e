#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "platform/engine/schema.h"
#include "platform/engine/value.h"

namespace kolmera {

/// The kinds of recordsets, with the suite's numbers.
enum class RecordsetType { Table = 1, Dynaset = 2, Snapshot = 4 };

/// Option bits of opening, with the suite's numbers. ReadOnly on a dynaset or table refuses writing.
namespace options {
inline constexpr std::int32_t kReadOnly = 4;
inline constexpr std::int32_t kPassThrough = 64;
inline constexpr std::int32_t kSeeChanges = 512;
}  // namespace options

/// The records of a table or a statement, with one current record. Fields are addressed by ordinal (from 0, in the
/// order of the table or of the statement's columns) or by name without regard to letter case; resolve names once
/// (`ordinal`) and use ordinals in loops. Errors are PlatformError: kNoCurrentRecord, kUnknownField, kWrongType,
/// kTextTooLong, kDuplicateKey, kLocked ...
///
/// Writing: `addNew` or `edit`, then `set`, then `update`. A value that a field refuses leaves the field as it was; a
/// failed `update` leaves the record as it was and ends the edit. After `update` of a new record the current record is
/// the one before `addNew`; `moveToModified` goes to the record saved last.
class Recordset {
  public:
    virtual ~Recordset() = default;

    [[nodiscard]] virtual const std::string& name() const = 0;  ///< the table name or statement it was opened on
    [[nodiscard]] virtual RecordsetType type() const = 0;
    [[nodiscard]] virtual const std::vector<FieldDef>& fields() const = 0;
    /// Ordinal of a field by name; throws kUnknownField.
    [[nodiscard]] virtual int ordinal(std::string_view field) const = 0;

    // Position.
    [[nodiscard]] virtual bool bof() const = 0;
    [[nodiscard]] virtual bool eof() const = 0;
    virtual void moveFirst() = 0;
    virtual void moveLast() = 0;
    virtual void moveNext() = 0;
    virtual void movePrevious() = 0;
    virtual void moveToModified() = 0;
    /// Table: all records. Dynaset and snapshot: the records visited so far, never 0 when there is one (moveLast, then
    /// read, for the true count).
    [[nodiscard]] virtual std::int32_t recordCount() = 0;

    // Finding.
    virtual void setIndex(std::string_view index) = 0;  ///< table only; throws kUnknownField when there is none
    [[nodiscard]] virtual std::string index() const = 0;
    /// Table only: the first record in index order whose key compares ("=", "<", "<=", ">", ">=") with the keys
    /// (fewer keys than columns compare the leading columns). Without a match `noMatch` is set and there is no current
    /// record.
    virtual void seek(std::string_view comparison, std::span<const Value> keys) = 0;
    /// Dynaset and snapshot: the first record that meets a criteria text ("Nummer = 'A'", "[ID] = 7", terms joined by
    /// AND).
    virtual void findFirst(std::string_view criteria) = 0;
    [[nodiscard]] virtual bool noMatch() const = 0;
    /// Column names joined by ", ". Kept for re-opening; a dynaset shows it in `sort` only.
    virtual void setSort(std::string_view columns) = 0;
    [[nodiscard]] virtual const std::string& sort() const = 0;

    // Reading: of the current record, or of the record being edited or added.
    [[nodiscard]] virtual const Value& value(int ordinal) = 0;
    [[nodiscard]] const Value& value(std::string_view field) { return value(ordinal(field)); }

    // Writing.
    virtual void addNew() = 0;
    virtual void edit() = 0;
    /// Converts to the field's type; texts become numbers by the locale. Throws kTextTooLong, kWrongType; the old
    /// value then stays.
    virtual void set(int ordinal, Value value) = 0;
    void set(std::string_view field, Value value) { set(ordinal(field), std::move(value)); }
    virtual void update() = 0;
    virtual void cancelUpdate() = 0;
    /// Removes the current record; it stays the (unreadable) position from which moveNext goes on.
    virtual void remove() = 0;
};

}  // namespace kolmera
