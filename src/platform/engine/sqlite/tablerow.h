#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/engine/columnset.h"
#include "platform/engine/sqlite/filetable.h"
#include "platform/engine/value.h"

namespace kolmera {

/// The current row of a recordset on one table, and its editing. Of a row only the columns are read that were asked for
/// so far; a column that is asked for the first time is read then and belongs to the selection from then on.
///
/// Inside a transaction the update of an edited row is held back as long as nothing else looks at the table, so that a
/// second edit of the same row joins it: the two become one UPDATE. Changes of columns in a unique index are not held
/// back, because they may fail.
class TableRow {
  public:
    TableRow(FileTable& table, bool readOnly);
    TableRow(const TableRow&) = delete;
    TableRow& operator=(const TableRow&) = delete;
    /// Writes what is held back; an error is kept for the end of the transaction.
    ~TableRow();

    // Which row is current.
    [[nodiscard]] bool present() const { return present_; }
    [[nodiscard]] std::int64_t id() const { return id_; }
    void clear();
    /// Reads a row by its ID; false, and no current row, when there is none.
    bool read(std::int64_t id);
    /// Makes the row current on which a statement stands that begins "SELECT " + selection().
    void take(const SqliteStatement& statement);
    /// "rowid, " and the columns in the selection, quoted.
    [[nodiscard]] const std::string& selection() const { return selection_; }
    /// Changes when the selection has grown: statements made from it are then to be made again.
    [[nodiscard]] std::size_t selectionSize() const { return selected_.size(); }
    /// Lets the next reading see what other sessions have changed since.
    void refresh() { table_.session().connection.noticeOthers(); }

    // Reading and editing. Throws kNoCurrentRecord without a row.
    const Value& value(int ordinal);
    void addNew();
    void edit();
    void set(int ordinal, Value value);
    void update();
    void cancel();
    void remove();
    [[nodiscard]] bool adding() const { return mode_ == Mode::Add; }

    /// ID of the row saved last, 0 when there is none.
    [[nodiscard]] std::int64_t lastSaved() const { return lastSaved_; }
    /// Makes the row saved last current; false when it is gone.
    bool readLastSaved();

    /// For the table only.
    void writeHeldBack();

  private:
    enum class Mode { None, Edit, Add };

    [[nodiscard]] std::size_t at(int ordinal) const { return static_cast<std::size_t>(ordinal); }
    void requireWritable() const;
    void requirePresent() const;
    void load(int ordinal);
    void reload();
    void select(int ordinal);
    void startMode(Mode mode);
    void writeNew();
    void writeChanged();
    void keepChanges();
    void takeSaved();
    void noteWrite();
    [[nodiscard]] bool mayHoldBack() const;
    void writeColumns(const ColumnSet& columns, const std::vector<Value>& values);
    void writeAtOnce();
    void writeLater();
    [[nodiscard]] ChangeListener* listener() const { return table_.session().connection.listener(); }
    void tell(const ColumnSet& columns, const std::vector<Value>& before, const std::vector<Value>& after,
              std::int64_t place) const;

    FileTable& table_;
    bool readOnly_;

    bool present_ = false;
    std::int64_t id_ = 0;
    std::vector<Value> current_;
    ColumnSet loaded_;
    std::uint64_t version_ = 0;  ///< of the table, when the row was read

    std::vector<int> selected_;
    ColumnSet selectedSet_;
    std::string selection_ = "rowid";
    SqliteStatement readById_;
    std::size_t readByIdSize_ = 0;

    Mode mode_ = Mode::None;
    std::vector<Value> edited_;
    ColumnSet changed_;  ///< columns whose value in `edited_` counts
    ColumnSet heldBack_;
    std::uint64_t heldBackEpoch_ = 0;  ///< of the transaction that holds back
    std::vector<Value> before_;        ///< of the columns held back, when somebody listens
    std::int64_t heldBackPlace_ = 0;   ///< the listener's, when the row was first edited
    std::int64_t lastSaved_ = 0;
    bool savedAtHand_ = false;        ///< `edited_` and the defaults are the row added last ...
    std::uint64_t savedVersion_ = 0;  ///< ... as long as the table has this version
};

}  // namespace kolmera
