#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/changelistener.h"
#include "platform/engine/columnset.h"
#include "platform/engine/schema.h"
#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/engine/sqlite/sqlitestatement.h"
#include "platform/engine/sqlite/transactions.h"
#include "platform/locale.h"

namespace kolmera {

class FileTable;
class TableRow;

/// What everything that works on one open file shares.
struct FileSession {
    FileSession(const std::filesystem::path& file, ConnectionOptions options, const Locale& userLocale)
        : connection(file, std::move(options)), transactions(connection), locale(userLocale) {}

    SqliteConnection connection;
    Transactions transactions;
    Locale locale;
    std::vector<FileTable*> tables = {};  ///< those that are open
    std::vector<ChangedCell> cells = {};  ///< of the row that is told
    std::vector<const Value*> known = {};
};

/// One column of an index.
struct KeyColumn {
    int ordinal;
    bool descending;
};

/// An index ready for work.
struct TableIndex {
    std::string name;
    std::vector<KeyColumn> columns;
    bool unique;
};

/// An open table: its definition, the statements that write it, and the update that is still held back. Column names
/// are quoted once here, so that nothing is looked up by name later.
class FileTable {
  public:
    FileTable(FileSession& session, TableDef definition);
    FileTable(const FileTable&) = delete;
    FileTable& operator=(const FileTable&) = delete;
    ~FileTable() = default;

    [[nodiscard]] FileSession& session() const { return session_; }
    [[nodiscard]] const TableDef& definition() const { return definition_; }
    [[nodiscard]] const std::string& quotedName() const { return quotedName_; }
    [[nodiscard]] const std::string& quotedColumn(int ordinal) const {
        return quotedColumns_[static_cast<std::size_t>(ordinal)];
    }
    [[nodiscard]] const FieldDef& field(int ordinal) const {
        return definition_.fields[static_cast<std::size_t>(ordinal)];
    }
    [[nodiscard]] int columns() const { return static_cast<int>(quotedColumns_.size()); }
    [[nodiscard]] const std::vector<Value>& defaults() const { return defaults_; }
    /// Columns whose change can break a unique index.
    [[nodiscard]] const ColumnSet& uniqueColumns() const { return uniqueColumns_; }
    /// The file may refuse other changes too: somebody has put a trigger or a constraint on the table.
    [[nodiscard]] bool hasRules() const { return hasRules_; }
    /// Throws kUnknownField when there is no such index.
    [[nodiscard]] const TableIndex& index(std::string_view name) const;

    /// Grows whenever a row may have changed through this session: copies of rows taken under another version are old.
    [[nodiscard]] std::uint64_t version() const { return writes_ + session_.connection.epoch(); }
    void noteWrite() { ++writes_; }

    /// UPDATE of these columns: their parameters in ascending order, then the row's ID.
    SqliteStatement& updateStatement(const ColumnSet& columns);
    /// INSERT of these columns, in ascending order.
    SqliteStatement& insertStatement(const ColumnSet& columns);
    SqliteStatement& deleteStatement();

    /// The row whose update is held back, and the ways to have one. At most one row of a table is held back.
    void holdBack(TableRow* row) { heldBack_ = row; }
    [[nodiscard]] TableRow* heldBack() const { return heldBack_; }
    /// Writes what is held back. A failure ends the run, because that update was reported as done.
    void flush() {
        if (heldBack_ != nullptr) writeHeldBack();
    }

  private:
    /// Statements by column set, the last ones used. A run uses a handful.
    struct KeptStatement {
        ColumnSet columns;
        SqliteStatement statement;
    };
    using KeptStatements = std::vector<KeptStatement>;

    void writeHeldBack();
    TableIndex makeIndex(const IndexDef& index) const;
    [[nodiscard]] std::string updateText(const ColumnSet& columns) const;
    [[nodiscard]] std::string insertText(const ColumnSet& columns) const;
    template <typename MakeText>
    SqliteStatement& keptStatement(KeptStatements& kept, const ColumnSet& columns, MakeText&& makeText);

    FileSession& session_;
    TableDef definition_;
    std::string quotedName_;
    std::vector<std::string> quotedColumns_;
    std::vector<Value> defaults_;
    std::vector<TableIndex> indexes_;
    ColumnSet uniqueColumns_;
    bool hasRules_ = false;
    std::uint64_t writes_ = 0;
    KeptStatements updates_;
    KeptStatements inserts_;
    SqliteStatement delete_;
    TableRow* heldBack_ = nullptr;
};

}  // namespace kolmera
