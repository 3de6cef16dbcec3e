#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/engine/columnset.h"
#include "platform/engine/odbc/rowstext.h"
#include "platform/engine/odbc/serversession.h"
#include "platform/engine/schema.h"

namespace kolmera {

class ServerWindow;

/// What the server's catalogue says of a table, brought together with what the program knows of it.
struct ServerTableInfo {
    TableDef definition;
    ColumnSet missingDefaults;  ///< new rows are given the engine's 0 or false: the server has no default
    ColumnSet otherDefaults;    ///< what a new row has here only the server knows
};

/// A table on the server: its definition, its names quoted, and the columns that its rows are read with. Those are the
/// columns that were ever asked for, because a recordset is opened anew for every seek.
class ServerTable {
  public:
    /// Rows that were read: of each the ID and the values of `columns`.
    struct Rows {
        std::vector<int> columns;
        std::vector<std::int64_t> ids;
        std::vector<std::vector<Value>> values;
        std::uint64_t version = 0;
    };

    ServerTable(ServerSession& session, ServerWindow& window, ServerTableInfo info);
    ServerTable(const ServerTable&) = delete;
    ServerTable& operator=(const ServerTable&) = delete;
    ~ServerTable() = default;

    [[nodiscard]] ServerSession& session() const { return session_; }
    [[nodiscard]] const TableDef& definition() const { return info_.definition; }
    [[nodiscard]] const std::string& quotedName() const { return quotedName_; }
    [[nodiscard]] const std::string& quotedColumn(int ordinal) const {
        return quotedColumns_[static_cast<std::size_t>(ordinal)];
    }
    [[nodiscard]] const FieldDef& field(int ordinal) const {
        return info_.definition.fields[static_cast<std::size_t>(ordinal)];
    }
    [[nodiscard]] int columns() const { return static_cast<int>(quotedColumns_.size()); }
    [[nodiscard]] const std::vector<Value>& defaults() const { return defaults_; }
    [[nodiscard]] const ServerTableInfo& info() const { return info_; }
    /// Its rows have the key that they are read and written by.
    [[nodiscard]] bool hasKey() const { return key_ >= 0; }
    [[nodiscard]] const std::string& quotedKey() const { return quotedColumn(key_); }
    [[nodiscard]] int key() const { return key_; }
    [[nodiscard]] std::span<const int> all() const { return all_; }  ///< every ordinal
    [[nodiscard]] std::vector<std::string> quoted(std::span<const int> columns) const;
    [[nodiscard]] std::vector<FieldType> types(std::span<const int> columns) const;
    [[nodiscard]] ServerStatement select(std::span<const int> columns, const ServerStatement& where,
                                         std::string_view order, int limit) const;

    /// Grows whenever a row may have changed: copies of rows taken under another version are old.
    [[nodiscard]] std::uint64_t version() const { return writes_ + session_.epoch(); }
    void noteWrite() { ++writes_; }

    void learn(int ordinal);
    [[nodiscard]] std::span<const int> learned() const { return learned_; }
    /// A value for each column, whatever it holds. They are used again, because every seek makes a row.
    [[nodiscard]] std::vector<Value> takeValues();
    void giveBack(std::vector<Value> values) { spare_.push_back(std::move(values)); }
    /// How the server stores a column.
    [[nodiscard]] const ServerColumnType& stored(int ordinal);
    /// Whether rows read earlier have every column that they would be read with now.
    [[nodiscard]] bool hasAllLearned(const Rows& rows) const { return rows.columns.size() == learned_.size(); }

    /// The row of this ID, if it is there.
    Rows readRow(std::int64_t id);
    /// Rows with the learned columns that meet a condition, in an order; `limit` 0 reads all.
    Rows readRows(const ServerStatement& where, std::string_view order, int limit);
    /// The rows of these IDs, as far as they are there, in any order.
    Rows readRows(std::span<const std::int64_t> ids);
    /// The IDs of all rows that meet a condition, in an order.
    std::vector<std::int64_t> readIds(const ServerStatement& where, std::string_view order);
    /// All columns of one row; empty when the row is not there.
    std::vector<Value> readWhole(std::int64_t id);
    /// All rows with these columns, in the order that is asked for; with a `limit`, the first of them.
    std::vector<std::vector<Value>> readAll(std::span<const int> columns, const ServerStatement& where,
                                            std::string_view order, int limit = 0);

    /// Returns the new row's ID, in a window of records one below 0 that stands for it.
    std::int64_t insert(const ColumnSet& columns, const std::vector<Value>& values);
    /// False when the row is not there.
    bool update(std::int64_t id, const ColumnSet& columns, const std::vector<Value>& values,
                const ServerSession::Hearing& hearing);
    void remove(std::int64_t id);
    /// The ID that a row is known by now; `realId` is the server's.
    [[nodiscard]] std::int64_t knownId(std::int64_t id);
    [[nodiscard]] std::int64_t realId(std::int64_t id);
    void insertRows(std::span<const int> columns, std::span<const std::vector<Value>> rows);

  private:
    std::optional<std::vector<std::vector<Value>>> readKnown(std::span<const int> columns, const ServerStatement& where,
                                                             std::string_view order, int limit);
    Rows readFromServer(const ServerStatement& where, std::string_view order, int limit);
    [[nodiscard]] ServerStatement byId(std::int64_t id) const;
    [[nodiscard]] ServerStatement rowStatement(std::int64_t id) const;
    ServerSession::Hearing hearingOf(std::span<const int> columns, std::span<const Value> values);
    ServerStatement rowsStatement(std::span<const int> columns, std::span<const std::vector<Value>> rows) const;

    ServerSession& session_;
    ServerWindow& window_;
    ServerTableInfo info_;
    std::string quotedName_;
    std::vector<std::string> quotedColumns_;
    std::vector<Value> defaults_;
    std::vector<int> all_;  ///< every ordinal
    int key_ = -1;
    std::vector<ServerColumnType> stored_;
    std::vector<std::vector<Value>> spare_;
    ColumnSet learnedSet_;
    std::vector<int> learned_;  ///< in the order in which they were asked for
    std::uint64_t writes_ = 0;
};

/// The condition that both conditions state; one of them may be empty.
ServerStatement both(const ServerStatement& a, const ServerStatement& b);

}  // namespace kolmera
