#include "platform/engine/odbc/odbcconnection.h"

#include <sqlext.h>

#include <algorithm>
#include <array>
#include <utility>

#include "platform/engine/odbc/driversettings.h"
#include "platform/engine/odbc/widetext.h"
#include "platform/error.h"

namespace kolmera {

namespace {

constexpr std::size_t kMostPrepared = 128;  // an UPDATE for each set of changed columns
constexpr auto kToClose = std::chrono::seconds(2);

SQLPOINTER number(SQLULEN value) { return reinterpret_cast<SQLPOINTER>(value); }  // NOLINT(performance-no-int-to-ptr)

SQLSMALLINT length(const std::u16string& text) { return static_cast<SQLSMALLINT>(text.size()); }

/// A text for a catalogue function; an empty one is left out.
SQLWCHAR* wideText(std::u16string& text) { return text.empty() ? nullptr : reinterpret_cast<SQLWCHAR*>(text.data()); }

}  // namespace

OdbcConnection::OdbcConnection(const ConnectString& connectString, DriverThread::Wait wait, std::uint64_t* roundTrips)
    : connectString_(connectString),
      wait_(std::move(wait)),
      thread_([this] { sockets_.shutDown(); }),
      roundTrips_(roundTrips) {
    auto end = DriverThread::End::Done;
    try {
        end = thread_.run([this] { open(); }, connectString_.login, wait_);
    } catch (...) {
        close();
        throw;
    }
    if (end == DriverThread::End::Done) return;
    close();
    throw PlatformError(errors::kServerSilent, silence(end, connectString_.login));
}

OdbcConnection::~OdbcConnection() { close(); }

void OdbcConnection::open() {
    connect();
    sockets_.take();
    findDialect();
    findCatalogue();
    prepareSession();
    checkLetters();
}

void OdbcConnection::close() noexcept {
    try {
        thread_.run([this] { closeHandles(); }, kToClose, {});
    } catch (const PlatformError&) {
        return;  // nobody is left to be told
    }
}

void OdbcConnection::closeHandles() {
    prepared_.clear();
    if (connected_) {
        if (!automaticCommit_) SQLEndTran(SQL_HANDLE_DBC, handle_, SQL_ROLLBACK);
        SQLDisconnect(handle_);
    }
    if (handle_ != SQL_NULL_HDBC) SQLFreeHandle(SQL_HANDLE_DBC, handle_);
    if (environment_ != SQL_NULL_HENV) SQLFreeHandle(SQL_HANDLE_ENV, environment_);
}

/// Calls the driver. After one that had to be cut off there is no connection any more, whatever it returned.
OdbcConnection::Error OdbcConnection::call(const std::function<Error()>& driver) {
    Error error;
    const auto end = thread_.run([&] { error = driver(); }, connectString_.answer, wait_);
    if (end == DriverThread::End::Done) return error;
    return ServerError{std::string(kSilentState), 0, silence(end, connectString_.answer)};
}

std::string OdbcConnection::silence(DriverThread::End end, std::chrono::seconds limit) const {
    if (end == DriverThread::End::GivenUp) return "cancelled while the server did not answer";
    return "no answer within " + std::to_string(limit.count()) + " seconds";
}

void OdbcConnection::refuse(const std::string& description) {
    throw PlatformError(errors::kServerGone, description).quoted();
}

void OdbcConnection::refuseBy(const ServerError& error) {
    if (failureOf(error) != Failure::NotAdmitted) refuse(error.description);
    throw PlatformError(errors::kWrongPassword, error.description).quoted();
}

void OdbcConnection::count() {
    if (roundTrips_ != nullptr) ++*roundTrips_;
}

void OdbcConnection::countStatement() {
    count();
    if (automaticCommit_ || begun_) return;
    begun_ = true;
    if (dialect_->sendsBegin) count();
}

/// The connect string goes through the wide function: after the narrow one, PostgreSQL's driver takes the program for
/// one that works in its locale's character set, and loses every other letter.
void OdbcConnection::connect() {
    const bool ready = SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_)) &&
                       SQL_SUCCEEDED(SQLSetEnvAttr(environment_, SQL_ATTR_CONNECTION_POOLING, number(SQL_CP_OFF), 0)) &&
                       SQL_SUCCEEDED(SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, number(SQL_OV_ODBC3), 0)) &&
                       SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_DBC, environment_, &handle_));
    if (!ready) refuse("the ODBC driver manager cannot be used");
    constexpr int kNoEncryption = 2026;  // MariaDB's
    const DriverSettings settings(connectString_.forDriver);
    Error error = connectBy(settings.connectString);
    if (error && error->native == kNoEncryption && !settings.unencrypted.empty())
        error = connectBy(settings.unencrypted);
    if (error) refuseBy(*error);
    connected_ = true;
    count();
}

OdbcConnection::Error OdbcConnection::connectBy(const std::string& connectString) {
    std::u16string text = toWide(connectString);
    const SQLRETURN code =
        SQLDriverConnectW(handle_, nullptr, wideText(text), length(text), nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT);
    if (SQL_SUCCEEDED(code)) return std::nullopt;
    return odbcError(SQL_HANDLE_DBC, handle_);
}

void OdbcConnection::findDialect() {
    std::array<char, 128> name{};
    SQLSMALLINT bytes = 0;
    SQLGetInfo(handle_, SQL_DBMS_NAME, name.data(), static_cast<SQLSMALLINT>(name.size()), &bytes);
    dialect_ = dialectNamed(name.data());
    if (dialect_ == nullptr) refuse("the database server is of a kind that is not known: " + std::string(name.data()));
}

/// Without its name, some drivers list the tables of all databases of the server.
void OdbcConnection::findCatalogue() {
    std::u16string name(256, u'\0');
    SQLINTEGER bytes = 0;
    const SQLRETURN code = SQLGetConnectAttrW(handle_, SQL_ATTR_CURRENT_CATALOG, name.data(),
                                              static_cast<SQLINTEGER>(name.size() * sizeof(SQLWCHAR)), &bytes);
    if (!SQL_SUCCEEDED(code)) return;
    catalogue_ = name.substr(0, name.find(u'\0'));
}

void OdbcConnection::prepareSession() {
    for (const std::string_view statement : dialect_->session) {
        StatementResult none;
        if (const Error error = runDirectly(statement, {}, none)) refuse(error->description);
    }
}

/// A driver in a wrong mode, or a database in another character set, turns letters into "?" without an error.
void OdbcConnection::checkLetters() {
    const Value letters = std::string("åäöÅÄÖ€\U0001F600");
    constexpr FieldType kText = FieldType::Text;
    StatementResult result;
    OdbcStatement statement(handle_, *dialect_);
    count();
    Error error = statement.prepare(dialect_->echo);
    if (!error) error = statement.run(std::span(&letters, 1), std::span(&kText, 1), result);
    if (error) refuse(error->description);
    if (result.rows.size() == 1 && result.rows.front().front() == letters) return;
    refuse(
        "the connection to the database server spoils letters (å, ä, ö, €): use the driver's Unicode version and a "
        "database in Unicode");
}

OdbcStatement* OdbcConnection::prepared(std::string_view text, Error& error) {
    const auto found =
        std::find_if(prepared_.begin(), prepared_.end(), [&](const Prepared& kept) { return kept.text == text; });
    if (found != prepared_.end()) {
        prepared_.splice(prepared_.begin(), prepared_, found);
        return &prepared_.front().statement;
    }
    if (prepared_.size() >= kMostPrepared) prepared_.pop_back();
    count();
    prepared_.emplace_front(text, handle_, *dialect_);
    error = prepared_.front().statement.prepare(text);
    return &prepared_.front().statement;
}

OdbcConnection::Error OdbcConnection::run(std::string_view text, std::span<const Value> parameters,
                                          std::span<const FieldType> types, StatementResult& result) {
    return call([&] { return runPrepared(text, parameters, types, result); });
}

OdbcConnection::Error OdbcConnection::runPrepared(std::string_view text, std::span<const Value> parameters,
                                                  std::span<const FieldType> types, StatementResult& result) {
    countStatement();
    Error error;
    OdbcStatement* const statement = prepared(text, error);
    if (!error) error = statement->run(parameters, types, result);
    // A statement that failed may have been compiled for what is not there any more.
    if (error) prepared_.pop_front();
    return error;
}

OdbcConnection::Error OdbcConnection::runOnce(std::string_view text, std::span<const Value> parameters,
                                              StatementResult& result) {
    return call([&] { return runDirectly(text, parameters, result); });
}

OdbcConnection::Error OdbcConnection::runDirectly(std::string_view text, std::span<const Value> parameters,
                                                  StatementResult& result) {
    countStatement();
    OdbcStatement statement(handle_, *dialect_);
    if (parameters.empty()) return statement.runDirect(text, result);
    Error error = statement.prepare(text);
    if (!error) error = statement.run(parameters, {}, result);
    return error;
}

OdbcConnection::Error OdbcConnection::setAutomaticCommit(bool on) {
    if (on == automaticCommit_) return std::nullopt;
    const SQLULEN mode = on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
    if (!dialect_->sendsBegin) count();
    Error error = call([&]() -> Error {
        if (SQL_SUCCEEDED(SQLSetConnectAttr(handle_, SQL_ATTR_AUTOCOMMIT, number(mode), 0))) return std::nullopt;
        return odbcError(SQL_HANDLE_DBC, handle_);
    });
    if (!error) automaticCommit_ = on;
    return error;
}

OdbcConnection::Error OdbcConnection::endTransaction(bool commit) {
    count();
    begun_ = false;
    return call([&]() -> Error {
        if (SQL_SUCCEEDED(SQLEndTran(SQL_HANDLE_DBC, handle_, commit ? SQL_COMMIT : SQL_ROLLBACK))) return std::nullopt;
        return odbcError(SQL_HANDLE_DBC, handle_);
    });
}

// The catalogue.

OdbcConnection::Error OdbcConnection::tables(StatementResult& result) {
    count();
    std::u16string kinds = u"TABLE";
    return call([&] {
        OdbcStatement statement(handle_, *dialect_);
        return statement.catalogue(
            [&](SQLHSTMT on) {
                return SQLTablesW(on, wideText(catalogue_), length(catalogue_), nullptr, 0, nullptr, 0, wideText(kinds),
                                  length(kinds));
            },
            result);
    });
}

OdbcConnection::Error OdbcConnection::columns(std::string_view table, StatementResult& result) {
    count();
    std::u16string name = toWide(table);
    return call([&] {
        OdbcStatement statement(handle_, *dialect_);
        return statement.catalogue(
            [&](SQLHSTMT on) {
                return SQLColumnsW(on, wideText(catalogue_), length(catalogue_), nullptr, 0, wideText(name),
                                   length(name), nullptr, 0);
            },
            result);
    });
}

OdbcConnection::Error OdbcConnection::indexes(std::string_view table, StatementResult& result) {
    count();
    std::u16string name = toWide(table);
    return call([&] {
        OdbcStatement statement(handle_, *dialect_);
        return statement.catalogue(
            [&](SQLHSTMT on) {
                return SQLStatisticsW(on, wideText(catalogue_), length(catalogue_), nullptr, 0, wideText(name),
                                      length(name), SQL_INDEX_ALL, SQL_QUICK);
            },
            result);
    });
}

}  // namespace kolmera
