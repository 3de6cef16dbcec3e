#pragma once

#include <sql.h>
#include <sqlext.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

// Stands in for the header of this name in bench/wholeruns: the same hand-written loaders, built once more on bare
// ODBC.

namespace kolmera::bench {

/// A connection to a company on a server (PostgreSQL). Errors are std::runtime_error.
class Connection {
  public:
    /// Every transaction is committed as it ends.
    static constexpr std::chrono::milliseconds kCommitPause{0};

    explicit Connection(const std::string& connectString);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    void beginAll();
    void commit();
    [[nodiscard]] SQLHDBC handle() const { return handle_; }

  private:
    SQLHENV environment_ = SQL_NULL_HENV;
    SQLHDBC handle_ = SQL_NULL_HDBC;
};

/// A prepared statement, written for SQLite: names that are not quoted become so, "?1" becomes "?". All of a row is
/// read as texts by `step`.
class Statement {
  public:
    Statement(Connection& connection, const std::string& text);
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&&) = delete;
    ~Statement();

    void bind(int place, std::string_view text);
    void bind(int place, double number);
    void bind(int place, std::int64_t number);
    void bind(int place, int number) { bind(place, std::int64_t{number}); }

    bool step();
    void reset();
    void run();

    [[nodiscard]] bool isNull(int column) const { return cell(column).null; }
    [[nodiscard]] bool isText(int column) const;
    [[nodiscard]] double real(int column) const;
    [[nodiscard]] std::int64_t integer(int column) const { return static_cast<std::int64_t>(real(column)); }
    [[nodiscard]] std::string_view text(int column) const { return cell(column).text; }

  private:
    struct Parameter {
        std::string text;
        std::int64_t number = 0;
        SQLLEN length = 0;
    };
    struct Cell {
        std::string text;
        bool null = true;
    };
    enum class Kind { Begin, Commit, Prepared };

    Parameter& parameter(int place);
    [[nodiscard]] const Cell& cell(int column) const { return cells_[static_cast<std::size_t>(column)]; }
    void execute();
    void readRow();
    void check(SQLRETURN code) const;

    Connection* connection_;
    Kind kind_ = Kind::Prepared;
    SQLHSTMT handle_ = SQL_NULL_HSTMT;
    std::deque<Parameter> parameters_;
    std::vector<Cell> cells_;
    bool running_ = false;
};

}  // namespace kolmera::bench
