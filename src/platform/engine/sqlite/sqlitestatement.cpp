#include "platform/engine/sqlite/sqlitestatement.h"

#include <sqlite3.h>

#include <string>
#include <type_traits>
#include <utility>

#include "platform/engine/sqlite/sqliteconnection.h"
#include "platform/engine/sqlite/storedfield.h"
#include "platform/error.h"

namespace kolmera {

namespace {

/// A column of the row at hand.
struct ResultColumn {
    sqlite3_stmt* statement;
    int column;

    [[nodiscard]] int storage() const { return sqlite3_column_type(statement, column); }
    [[nodiscard]] sqlite3_int64 integer() const { return sqlite3_column_int64(statement, column); }
    [[nodiscard]] double number() const { return sqlite3_column_double(statement, column); }
    [[nodiscard]] std::string_view text() const {
        const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
        return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
    }
};

}  // namespace

SqliteStatement::SqliteStatement(SqliteConnection& connection, std::string_view statement) : connection_(&connection) {
    const char* rest = nullptr;
    const int code = sqlite3_prepare_v3(connection.handle(), statement.data(), static_cast<int>(statement.size()),
                                        SQLITE_PREPARE_PERSISTENT, &statement_, &rest);
    if (code != SQLITE_OK) connection.raise(code);
    const std::string_view more = statement.substr(static_cast<std::size_t>(rest - statement.data()));
    if (statement_ == nullptr || more.find_first_not_of(" \t\r\n;") != std::string_view::npos) {
        sqlite3_finalize(std::exchange(statement_, nullptr));
        throw PlatformError(errors::kInternal, "not one statement: " + std::string(statement));
    }
}

SqliteStatement::SqliteStatement(SqliteStatement&& other) noexcept
    : connection_(other.connection_),
      statement_(std::exchange(other.statement_, nullptr)),
      dates_(std::move(other.dates_)) {}

SqliteStatement& SqliteStatement::operator=(SqliteStatement&& other) noexcept {
    std::swap(connection_, other.connection_);
    std::swap(statement_, other.statement_);
    std::swap(dates_, other.dates_);
    return *this;
}

SqliteStatement::~SqliteStatement() { sqlite3_finalize(statement_); }

bool SqliteStatement::changesNothing() const { return sqlite3_stmt_readonly(statement_) != 0; }

int SqliteStatement::parameters() const { return sqlite3_bind_parameter_count(statement_); }

void SqliteStatement::bind(int parameter, const Value& value) {
    const auto bindOne = [&](const auto& held) {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, Null>) {
            return sqlite3_bind_null(statement_, parameter);
        } else if constexpr (std::is_same_v<Held, double>) {
            return sqlite3_bind_double(statement_, parameter, held);
        } else if constexpr (std::is_same_v<Held, Date>) {
            return bindDate(parameter, held);
        } else if constexpr (std::is_same_v<Held, std::string>) {
            return sqlite3_bind_text(statement_, parameter, held.data(), static_cast<int>(held.size()), SQLITE_STATIC);
        } else {
            return sqlite3_bind_int64(statement_, parameter, static_cast<sqlite3_int64>(held));
        }
    };
    const int code = std::visit(bindOne, value);
    if (code != SQLITE_OK) connection_->raise(code);
}

/// The text has to stay until the statement is reset.
int SqliteStatement::bindDate(int parameter, Date date) {
    if (dates_.empty()) dates_.resize(static_cast<std::size_t>(parameters()));
    const auto place = static_cast<std::size_t>(parameter) - 1;
    if (place >= dates_.size()) return SQLITE_RANGE;
    DateText& text = dates_[place];
    date.iso().copy(text.data(), text.size());
    return sqlite3_bind_text(statement_, parameter, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
}

void SqliteStatement::bind(int parameter, std::int64_t value) {
    const int code = sqlite3_bind_int64(statement_, parameter, value);
    if (code != SQLITE_OK) connection_->raise(code);
}

void SqliteStatement::bind(int parameter, std::string_view text) {
    const int code =
        sqlite3_bind_text(statement_, parameter, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    if (code != SQLITE_OK) connection_->raise(code);
}

void SqliteStatement::bind(int parameter, const StoredValue& value) {
    if (const auto* text = std::get_if<std::string_view>(&value)) return bind(parameter, *text);
    if (const auto* whole = std::get_if<std::int64_t>(&value)) return bind(parameter, *whole);
    const auto* number = std::get_if<double>(&value);
    const int code = number != nullptr ? sqlite3_bind_double(statement_, parameter, *number)
                                       : sqlite3_bind_null(statement_, parameter);
    if (code != SQLITE_OK) connection_->raise(code);
}

void SqliteStatement::bindBytes(int parameter, std::string_view bytes) {
    const int code = sqlite3_bind_blob64(statement_, parameter, bytes.data(), bytes.size(), SQLITE_STATIC);
    if (code != SQLITE_OK) connection_->raise(code);
}

bool SqliteStatement::step() {
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;
    reset();
    connection_->raise(code);
}

void SqliteStatement::reset() noexcept { sqlite3_reset(statement_); }

void SqliteStatement::run() {
    while (step()) {
    }
    reset();
}

int SqliteStatement::columns() const { return sqlite3_column_count(statement_); }

bool SqliteStatement::isNull(int column) const { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }

std::int64_t SqliteStatement::integer(int column) const { return sqlite3_column_int64(statement_, column); }

std::string_view SqliteStatement::text(int column) const { return ResultColumn{statement_, column}.text(); }

std::string_view SqliteStatement::bytes(int column) const {
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

void SqliteStatement::read(int column, FieldType type, Value& into) const {
    readStored(ResultColumn{statement_, column}, type, into);
}

}  // namespace kolmera
