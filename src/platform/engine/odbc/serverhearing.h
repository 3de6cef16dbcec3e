#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "platform/engine/changelistener.h"
#include "platform/engine/columnset.h"
#include "platform/engine/odbc/odbcconnection.h"
#include "platform/engine/odbc/servertext.h"
#include "platform/engine/sparserow.h"

namespace kolmera {

class ServerTable;

/// What one statement writes, for the listener of its session. In the order of the calls: what the rows hold before,
/// the statement itself, what they hold then, telling. When a transaction is written again, all of it is done again:
/// others may have changed the rows meanwhile.
class ServerHearing {
  public:
    using Error = std::optional<ServerError>;

    ServerHearing(const ServerTable& table, std::int64_t place) : table_(table), place_(place) {}
    ServerHearing(const ServerHearing&) = delete;
    ServerHearing& operator=(const ServerHearing&) = delete;
    virtual ~ServerHearing() = default;

    /// `again`: what was known of the rows may be old.
    virtual Error before(OdbcConnection& connection, ChangeListener& listener, bool again);
    virtual Error after(OdbcConnection& connection, const StatementResult& result);
    virtual void failed(ChangeListener& /*listener*/) {}
    virtual void tell(ChangeListener& listener) = 0;

  protected:
    /// Rows whose columns are all those of the table.
    using Rows = std::vector<std::vector<Value>>;

    Error readRows(OdbcConnection& connection, const ServerStatement& where, int limit, Rows& rows) const;
    /// The rows of the same IDs, as far as they are there.
    Error readAgain(OdbcConnection& connection, const Rows& rows, Rows& again) const;
    [[nodiscard]] std::int64_t idOf(const std::vector<Value>& row) const;
    void tellWhole(ChangeListener& listener, const std::vector<Value>& row, bool added) const;
    [[nodiscard]] const ServerTable& table() const { return table_; }
    [[nodiscard]] std::int64_t place() const { return place_; }

  private:
    const ServerTable& table_;
    std::int64_t place_;
};

/// Columns of one row, whose old values are known the first time.
class HeardUpdate final : public ServerHearing {
  public:
    /// `values` are the row's by ordinal: of `columns` the new ones are in `after`; `loaded` are those that are known.
    HeardUpdate(const ServerTable& table, std::int64_t place, std::int64_t id, const ColumnSet& columns,
                const ColumnSet& loaded, const std::vector<Value>& values, const std::vector<Value>& after);

    Error before(OdbcConnection& connection, ChangeListener& listener, bool again) override;
    void tell(ChangeListener& listener) override;

  private:
    std::int64_t id_;
    SparseRow values_, after_;
    bool there_ = true;
};

/// The rows that meet a condition, which go.
class HeardRemoval final : public ServerHearing {
  public:
    HeardRemoval(const ServerTable& table, std::int64_t place, ServerStatement where)
        : ServerHearing(table, place), where_(std::move(where)) {}

    Error before(OdbcConnection& connection, ChangeListener& listener, bool again) override;
    void failed(ChangeListener& listener) override { listener.statementFailed(); }
    void tell(ChangeListener& /*listener*/) override {}  // done before

  private:
    ServerStatement where_;
};

/// The rows that meet a condition, which a statement changes. They are all in memory, before and after: the one UPDATE
/// that a run sends as a statement is of one product's alternative number (import/masks/alternativenumbers.cpp), and
/// whatever else changes rows by a condition goes through a recordset, row by row.
class HeardChanges final : public ServerHearing {
  public:
    HeardChanges(const ServerTable& table, std::int64_t place, ServerStatement where)
        : ServerHearing(table, place), where_(std::move(where)) {}

    Error before(OdbcConnection& connection, ChangeListener& listener, bool again) override;
    Error after(OdbcConnection& connection, const StatementResult& result) override;
    void tell(ChangeListener& listener) override;

  private:
    ServerStatement where_;
    Rows before_, after_;
};

/// New rows: of these columns and the defaults; the ID of a single one may come with the answer. Where only the server
/// knows what they hold they are read.
class HeardAddition final : public ServerHearing {
  public:
    HeardAddition(const ServerTable& table, std::int64_t place, std::span<const int> columns, Rows rows);

    Error after(OdbcConnection& connection, const StatementResult& result) override;
    void tell(ChangeListener& listener) override;

  private:
    Rows rows_;
    bool read_ = false;
};

/// The rows that an INSERT answers with, all columns of the table.
class HeardInsert final : public ServerHearing {
  public:
    using ServerHearing::ServerHearing;

    Error after(OdbcConnection& connection, const StatementResult& result) override;
    void tell(ChangeListener& listener) override;

  private:
    Rows rows_;
};

}  // namespace kolmera
