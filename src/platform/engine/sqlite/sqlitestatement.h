#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/engine/pages/storedvalue.h"
#include "platform/engine/value.h"

struct sqlite3_stmt;

namespace kolmera {

class SqliteConnection;

/// A prepared statement that is kept and used again. Order of calls: bind, step until false, reset. Parameters count
/// from 1, columns from 0. Bound texts are not copied: they must stay until reset.
class SqliteStatement {
  public:
    SqliteStatement() = default;
    /// Compiles one statement; throws PlatformError when it does not compile or when more follows.
    SqliteStatement(SqliteConnection& connection, std::string_view statement);
    SqliteStatement(SqliteStatement&& other) noexcept;
    SqliteStatement& operator=(SqliteStatement&& other) noexcept;
    ~SqliteStatement();

    [[nodiscard]] bool prepared() const { return statement_ != nullptr; }
    [[nodiscard]] bool changesNothing() const;  ///< a SELECT, for instance
    [[nodiscard]] int parameters() const;

    void bind(int parameter, const Value& value);
    void bind(int parameter, std::int64_t value);
    void bind(int parameter, std::string_view text);
    void bind(int parameter, const StoredValue& value);
    void bindBytes(int parameter, std::string_view bytes);

    /// Goes to the next row; false at the end. An error resets the statement and throws.
    bool step();
    void reset() noexcept;
    /// Steps to the end and resets.
    void run();

    [[nodiscard]] int columns() const;
    [[nodiscard]] bool isNull(int column) const;
    [[nodiscard]] std::int64_t integer(int column) const;
    [[nodiscard]] std::string_view text(int column) const;   ///< valid until the next step or reset
    [[nodiscard]] std::string_view bytes(int column) const;  ///< the same for what is no text
    /// Reads a column as a value of a field type. What is stored in another form comes as it is stored. A text keeps
    /// the memory that `into` already has.
    void read(int column, FieldType type, Value& into) const;
    [[nodiscard]] sqlite3_stmt* handle() const { return statement_; }

  private:
    using DateText = std::array<char, 10>;

    int bindDate(int parameter, Date date);

    SqliteConnection* connection_ = nullptr;
    sqlite3_stmt* statement_ = nullptr;
    std::vector<DateText> dates_;  ///< the dates that are bound, by parameter
};

/// Resets a statement when it goes out of scope.
class StatementUse {
  public:
    explicit StatementUse(SqliteStatement& statement) : statement_(statement) {}
    StatementUse(const StatementUse&) = delete;
    StatementUse& operator=(const StatementUse&) = delete;
    ~StatementUse() { statement_.reset(); }

  private:
    SqliteStatement& statement_;
};

}  // namespace kolmera
