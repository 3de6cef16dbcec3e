#pragma once

#include <sqlite3.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace kolmera::bench {

/// A connection to a company file on bare SQLite, with the Swedish collation. Errors are std::runtime_error.
class Connection {
  public:
    /// Physical commits keep this apart.
    static constexpr std::chrono::milliseconds kCommitPause{250};

    explicit Connection(const std::filesystem::path& file);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    void execute(const std::string& statements);
    [[nodiscard]] sqlite3* handle() const { return handle_; }

  private:
    sqlite3* handle_ = nullptr;
};

/// A prepared statement. Texts are bound without copying: they must live until the statement is reset.
class Statement {
  public:
    Statement(Connection& connection, const std::string& text);
    Statement(Statement&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Statement& operator=(Statement&&) = delete;
    ~Statement() { sqlite3_finalize(handle_); }

    void bind(int place, std::string_view text);
    void bind(int place, double number);
    void bind(int place, std::int64_t number);
    void bind(int place, int number) { bind(place, std::int64_t{number}); }
    void bindNull(int place);

    /// Goes to the next row; false at the end.
    bool step();
    void reset() { sqlite3_reset(handle_); }
    /// Runs a statement without rows.
    void run();

    [[nodiscard]] int columns() const { return sqlite3_column_count(handle_); }
    [[nodiscard]] std::string_view name(int column) const { return sqlite3_column_name(handle_, column); }
    [[nodiscard]] int type(int column) const { return sqlite3_column_type(handle_, column); }
    [[nodiscard]] bool isNull(int column) const { return type(column) == SQLITE_NULL; }
    [[nodiscard]] bool isText(int column) const { return type(column) == SQLITE_TEXT; }
    [[nodiscard]] double real(int column) const { return sqlite3_column_double(handle_, column); }
    [[nodiscard]] std::int64_t integer(int column) const { return sqlite3_column_int64(handle_, column); }
    /// Valid until the next step or reset.
    [[nodiscard]] std::string_view text(int column) const;

  private:
    void check(int result) const;
    sqlite3_stmt* handle_ = nullptr;
};

}  // namespace kolmera::bench
