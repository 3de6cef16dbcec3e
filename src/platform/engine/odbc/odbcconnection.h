#pragma once

#include <sql.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/engine/odbc/connectstring.h"
#include "platform/engine/odbc/dialect.h"
#include "platform/engine/odbc/driversockets.h"
#include "platform/engine/odbc/driverthread.h"
#include "platform/engine/odbc/odbcstatement.h"
#include "platform/engine/schema.h"
#include "platform/engine/value.h"

namespace kolmera {

/// One connection to a server through the ODBC driver manager, in automatic commit. Its functions return the server's
/// error, or nothing when all went well. A server that does not answer in time is a connection that is gone.
class OdbcConnection {
  public:
    using Error = std::optional<ServerError>;

    /// Connects and checks that letters survive. Throws kServerGone, kServerSilent, kWrongPassword. `roundTrips` may be
    /// null.
    OdbcConnection(const ConnectString& connectString, DriverThread::Wait wait, std::uint64_t* roundTrips);
    OdbcConnection(const OdbcConnection&) = delete;
    OdbcConnection& operator=(const OdbcConnection&) = delete;
    ~OdbcConnection();

    [[nodiscard]] const Dialect& dialect() const { return *dialect_; }

    /// Runs a statement, which stays prepared for the next time.
    Error run(std::string_view text, std::span<const Value> parameters, std::span<const FieldType> types,
              StatementResult& result);
    /// Runs a statement that does not come again.
    Error runOnce(std::string_view text, std::span<const Value> parameters, StatementResult& result);

    /// Automatic commit is left at the first statement of a transaction and taken up again at the first one outside.
    Error setAutomaticCommit(bool on);
    Error endTransaction(bool commit);

    // The catalogue: rows of texts.
    Error tables(StatementResult& result);
    Error columns(std::string_view table, StatementResult& result);
    Error indexes(std::string_view table, StatementResult& result);

  private:
    struct Prepared {
        Prepared(std::string_view itsText, SQLHDBC connection, const Dialect& dialect)
            : text(itsText), statement(connection, dialect) {}

        std::string text;
        OdbcStatement statement;
    };

    Error call(const std::function<Error()>& driver);
    [[nodiscard]] std::string silence(DriverThread::End end, std::chrono::seconds limit) const;
    void open();
    void connect();
    Error connectBy(const std::string& connectString);
    void findDialect();
    void findCatalogue();
    void prepareSession();
    void checkLetters();
    [[noreturn]] void refuse(const std::string& description);
    void refuseBy(const ServerError& error);
    void close() noexcept;
    void closeHandles();
    Error runPrepared(std::string_view text, std::span<const Value> parameters, std::span<const FieldType> types,
                      StatementResult& result);
    Error runDirectly(std::string_view text, std::span<const Value> parameters, StatementResult& result);
    void count();
    void countStatement();
    OdbcStatement* prepared(std::string_view text, Error& error);

    ConnectString connectString_;
    DriverThread::Wait wait_;
    DriverSockets sockets_;
    DriverThread thread_;
    SQLHENV environment_ = SQL_NULL_HENV;
    SQLHDBC handle_ = SQL_NULL_HDBC;
    bool connected_ = false;
    bool automaticCommit_ = true;
    bool begun_ = false;  ///< a statement has been run since automatic commit was left or a transaction ended
    const Dialect* dialect_ = nullptr;
    std::u16string catalogue_;  ///< the database, as the catalogue functions name it; empty where there is but one
    std::uint64_t* roundTrips_;
    std::list<Prepared> prepared_;  ///< the last used first
};

}  // namespace kolmera
