#include "wholeruns/sqlite.h"

#include <stdexcept>

#include "platform/lettercase.h"

namespace kolmera::bench {

namespace {

int compareTexts(void* /*unused*/, int lengthA, const void* a, int lengthB, const void* b) {
    return compareSwedish({static_cast<const char*>(a), static_cast<std::size_t>(lengthA)},
                          {static_cast<const char*>(b), static_cast<std::size_t>(lengthB)});
}

void check(sqlite3* connection, int result) {
    if (result != SQLITE_OK && result != SQLITE_ROW && result != SQLITE_DONE) {
        throw std::runtime_error(sqlite3_errmsg(connection));
    }
}

}  // namespace

Connection::Connection(const std::filesystem::path& file) {
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    bench::check(handle_, sqlite3_open_v2(file.c_str(), &handle_, flags, nullptr));
    bench::check(handle_, sqlite3_create_collation_v2(handle_, "SVENSKA", SQLITE_UTF8, nullptr, compareTexts, nullptr));
}

Connection::~Connection() { sqlite3_close(handle_); }

void Connection::execute(const std::string& statements) {
    bench::check(handle_, sqlite3_exec(handle_, statements.c_str(), nullptr, nullptr, nullptr));
}

Statement::Statement(Connection& connection, const std::string& text) {
    bench::check(connection.handle(), sqlite3_prepare_v3(connection.handle(), text.c_str(), -1,
                                                         SQLITE_PREPARE_PERSISTENT, &handle_, nullptr));
}

void Statement::check(int result) const { bench::check(sqlite3_db_handle(handle_), result); }

void Statement::bind(int place, std::string_view text) {
    check(sqlite3_bind_text(handle_, place, text.data() ? text.data() : "", static_cast<int>(text.size()),
                            SQLITE_STATIC));
}

void Statement::bind(int place, double number) { check(sqlite3_bind_double(handle_, place, number)); }

void Statement::bind(int place, std::int64_t number) { check(sqlite3_bind_int64(handle_, place, number)); }

void Statement::bindNull(int place) { check(sqlite3_bind_null(handle_, place)); }

bool Statement::step() {
    const int result = sqlite3_step(handle_);
    check(result);
    return result == SQLITE_ROW;
}

void Statement::run() {
    step();
    reset();
}

std::string_view Statement::text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(handle_, column));
    return {text ? text : "", static_cast<std::size_t>(sqlite3_column_bytes(handle_, column))};
}

}  // namespace kolmera::bench
